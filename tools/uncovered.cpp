#include "tools/uncovered.h"

#include <optional>
#include <string_view>
#include <utility>

#include "tools/delimiters.h"
#include "tools/entity.h"
#include "tools/lines.h"

namespace vel::command {
namespace {

// The end that the parser computes for a body is that of a bare delimiter line with CR LF: the delimiter
// line itself begins at most this far behind it.
constexpr uint32_t kLineEnd = 2;

// The delimiters of the multiparts that are open where the last entity ends.
class OpenDelimiters {
  public:
    OpenDelimiters(const mime_msg_pool& pool, const Tree& tree, int last) {
        for (int i = last; i != kNoParent; i = tree.parent(i)) {
            const char* boundary = pool.items[i]->boundary;
            if (!boundary) continue;
            if (all_.empty()) innermost_ = boundary;
            all_.add(boundary);
        }
    }

    bool none() const { return all_.empty(); }

    // The line that ended the last entity, which the parser knows by its beginning.
    Delimiter ending(std::string_view line) const {
        return line.starts_with(innermost_) ? kind_behind(line, innermost_.size()) : Delimiter::none;
    }

    // Any later line.
    Delimiter later(std::string_view line) const { return all_.find(line); }

  private:
    std::string_view innermost_;
    DelimiterSet all_;
};

// Goes through the lines behind the last entity.
class Tail {
  public:
    Tail(const OpenDelimiters& delimiters, uint32_t end_of_last) : delimiters_(delimiters), end_(end_of_last) {}

    void take(const Line& line) {
        if (line.end <= end_) return;
        Delimiter found = Delimiter::none;
        if (line.is_whole) found = ended_ ? delimiters_.later(line.text) : delimiters_.ending(line.text);
        if (found != Delimiter::none) {
            close(line.start);
            ended_ = true;
            if (found == Delimiter::opening) open(line.end);
        } else if (!ended_ && line.end > end_ + kLineEnd) {
            ended_ = true;  // no delimiter line stands where one should: nothing is known of what follows
            open(end_);
        }
    }

    std::vector<Range> finish(uint32_t size) {
        if (!ended_) open(end_);
        close(size);
        return std::move(ranges_);
    }

  private:
    void open(uint32_t start) {
        start_ = start;
        is_open_ = true;
    }

    void close(uint32_t end) {
        if (is_open_ && start_ < end) ranges_.push_back({start_, end});
        is_open_ = false;
    }

    const OpenDelimiters& delimiters_;
    const uint32_t end_;    // of the last entity
    bool ended_ = false;    // its delimiter line has been met
    bool is_open_ = false;  // an uncovered range began at start_
    uint32_t start_ = 0;
    std::vector<Range> ranges_;
};

struct LastEntity {
    int index;
    uint32_t end;
};

// The entity that reaches furthest; a container reaches to its first delimiter line.
LastEntity last_entity(const mime_msg_pool& pool) {
    LastEntity last{0, 0};
    for (int i = 0; i < pool.count; ++i) {
        const MimeMsg& record = *pool.items[i];
        const uint32_t end = has_content(record) ? end_of_body(record) : record.bodyStart;
        if (end >= last.end) last = {i, end};
    }
    return last;
}

}  // namespace

std::vector<Range> uncovered_ranges(const mime_msg_pool& pool, const Tree& tree, const std::string& path) {
    if (pool.count == 0) return {};
    LineReader lines(path);
    const LastEntity last = last_entity(pool);
    if (last.end >= lines.file_size()) return {};
    const OpenDelimiters delimiters(pool, tree, last.index);
    if (delimiters.none()) return {{last.end, lines.file_size()}};
    Tail tail(delimiters, last.end);
    lines.go_near(last.end);
    while (const std::optional<Line> line = lines.next()) tail.take(*line);
    return tail.finish(lines.file_size());
}

}  // namespace vel::command
