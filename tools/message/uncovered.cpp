#include "tools/message/uncovered.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

#include "tools/io/lines.h"
#include "tools/message/delimiters.h"
#include "tools/message/entity.h"

namespace vel::command {
namespace {

// The end that the parser computes for a body is that of a bare delimiter line with CR LF: the delimiter
// line itself begins at most this far behind it.
constexpr uint32_t kLineEnd = 2;
constexpr std::string_view kBlankLine = "\r\n";

// Goes through the lines between two entities, or behind the last one.
class Gap {
  public:
    // The delimiters are those of the multiparts that are open where the first entity ends.
    Gap(uint32_t start, const OpenDelimiters& open) : start_(start), open_(open) {}

    void take(const Line& line) {
        if (line.end <= start_) return;
        const Delimiter found = line.is_whole ? kind_of(line.text) : Delimiter::none;
        if (found != Delimiter::none) {
            end_part(line.start);
            ended_ = true;
            if (found == Delimiter::opening) begin_part(line.end);
        } else if (!ended_ && line.end > start_ + kLineEnd) {
            ended_ = true;  // no delimiter line stands where one should: nothing is known of what follows
            begin_part(start_);
        }
    }

    std::vector<Range> finish(uint32_t end) {
        if (!ended_) begin_part(start_);
        end_part(end);
        return std::move(parts_);
    }

  private:
    // The parser knows the line that ended the entity by its beginning. Any later one is a delimiter line
    // only as a whole.
    Delimiter kind_of(std::string_view line) const { return ended_ ? open_.find(line) : open_.find_innermost(line); }

    void begin_part(uint32_t start) {
        part_ = start;
        in_part_ = true;
    }

    void end_part(uint32_t end) {
        if (in_part_ && part_ < end) parts_.push_back({part_, end});
        in_part_ = false;
    }

    const uint32_t start_;
    const OpenDelimiters& open_;
    bool ended_ = false;    // the entity's delimiter line has been met
    bool in_part_ = false;  // a part that is no entity began at part_
    uint32_t part_ = 0;
    std::vector<Range> parts_;
};

// Goes through the entities in their order and looks at what stands between them.
class Coverage {
  public:
    Coverage(const mime_msg_pool& pool, const Tree& tree, const std::string& path)
        : pool_(pool), tree_(tree), lines_(path) {}

    std::vector<Range> run() {
        for (int i = 0; i < tree_.count(); ++i) {
            if (!is_embedded(i)) take(i);
        }
        look_up_to(lines_.file_size());
        return std::move(ranges_);
    }

  private:
    const MimeMsg& record(int index) const { return *pool_.items[index]; }

    // In a text, which covers it.
    bool is_embedded(int index) const {
        const int parent = tree_.parent(index);
        return parent != kNoParent && !is_opened(record(parent));
    }

    // A container reaches to its first delimiter line.
    void take(int index) {
        const MimeMsg& entity = record(index);
        look_up_to(entity.headerStart);
        if (is_opened(entity) && is_multipart(entity) && entity.numChildren == 0) look_at_only_text(entity);
        while (!path_.empty() && path_.back() != tree_.parent(index)) leave();
        if (is_opened(entity)) enter(index);
        reached_ = std::max(reached_, has_content(entity) ? end_of_body(entity) : entity.bodyStart);
    }

    void enter(int index) {
        path_.push_back(index);
        open_.open(record(index).boundary);
    }

    void leave() {
        open_.close();
        path_.pop_back();
    }

    // A multipart whose first delimiter line closes it has no part to which its text would be the preamble.
    void look_at_only_text(const MimeMsg& multipart) {
        lines_.go_to(multipart.headerStart);
        bool in_body = false;
        std::optional<uint32_t> start;  // behind the blank line, when a line with text follows
        uint32_t body = 0;
        while (const std::optional<Line> line = lines_.next()) {
            if (!in_body) {
                in_body = line->is_whole && line->text == kBlankLine;
                body = line->end;
            } else if (line->text.starts_with(multipart.boundary)) {
                const bool closes =
                    kind_behind(line->text, std::string_view(multipart.boundary).size()) == Delimiter::closing;
                if (closes && start) ranges_.push_back({*start, line->start});
                return;
            } else if (!trimmed(line->text).empty()) {
                start = body;
            }
        }
    }

    void look_up_to(uint32_t end) {
        if (reached_ >= end) return;
        if (path_.empty()) return ranges_.push_back({reached_, end});
        // What is left before a delimiter line that does not close has just the length of a bare one.
        if (end - reached_ == open_.innermost().size() + kLineEnd) return;
        Gap gap(reached_, open_);
        lines_.go_near(reached_);
        while (lines_.position() < end) {
            const std::optional<Line> line = lines_.next();
            if (!line) break;
            gap.take(*line);
        }
        const std::vector<Range> parts = gap.finish(end);
        ranges_.insert(ranges_.end(), parts.begin(), parts.end());
    }

    const mime_msg_pool& pool_;
    const Tree& tree_;
    LineReader lines_;
    std::vector<int> path_;  // the containers that are open
    OpenDelimiters open_;    // their delimiters
    uint32_t reached_ = 0;   // the end of the entities so far
    std::vector<Range> ranges_;
};

}  // namespace

std::vector<Range> uncovered_ranges(const mime_msg_pool& pool, const Tree& tree, const std::string& path) {
    return Coverage(pool, tree, path).run();
}

}  // namespace vel::command
