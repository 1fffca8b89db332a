#include "tools/message/findings.h"

#include <sys/stat.h>

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "tools/io/complaints.h"
#include "tools/io/line_numbers.h"
#include "tools/message/body_file.h"
#include "tools/message/entity.h"
#include "tools/message/header_block.h"
#include "tools/message/refused_fields.h"

namespace vel::command {
namespace {

using enum Severity;

// What the library says of a last part that no delimiter ends.
constexpr std::string_view kUnfinished = "getline failed.";

constexpr Range at(uint32_t offset) { return {offset, offset}; }

// The last line at the level of errors that ends so; empty when there is none.
std::string last_error(const std::vector<LogLine>& lines, std::string_view ending = {}) {
    const auto last = std::find_if(lines.rbegin(), lines.rend(), [&](const LogLine& line) {
        return line.level == kErrorLevel && line.text.ends_with(ending);
    });
    return last == lines.rend() ? std::string() : last->text;
}

uint32_t size_of(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 ? static_cast<uint32_t>(status.st_size) : 0;
}

std::string name_in(const std::string& field) { return field.substr(0, field.find(':')); }

class Examination {
  public:
    Examination(const ParsedMessage& message, const ParseOptions& options, Session& session)
        : message_(message), options_(options), session_(session) {}

    std::vector<Finding> run() {
        if (message_.input.normalized) {
            add({remark, at(0), "lines end in bare LF; offsets are those of a copy with CR LF, line numbers hold"});
        }
        look_at_header();
        look_at_fields();
        if (message_.fallback != Fallback::none) {
            add({fault, at(refusal_), remedy_of(message_), last_error(message_.refusal)});
        }
        for (const Range& range : message_.uncovered) add_uncovered(range);
        for (int i = 0; i < message_.tree.count(); ++i) {
            if (has_content(message_.record(i))) look_at_body(i);
        }
        look_at_the_rest_of_what_was_said();
        return in_order();
    }

  private:
    void add(Finding finding) { findings_.push_back(std::move(finding)); }

    Range in_file(Range range) const { return message_.removed_ranges.in_file(range); }

    void look_at_header() {
        const HeaderBlock block = read_header_block(message_.file, session_.journal);
        for (const LogLine& line : block.said) {
            add({fault, at(block.end), std::string(meaning_of(line.text)), line.text});
        }
        add_left_out(block.no_fields, "a line of the header block is no field, and not stored",
                     " lines of the header block, this one the first, are no fields, and not stored");
        add_left_out(block.cut_off, "the rest of a line longer than 1024 bytes is cut off, and not stored",
                     " pieces of lines longer than 1024 bytes, this one the first, are cut off, and not stored");
        for (const HeaderLine& field : block.no_addresses.kept) {
            add({remark, at(field.start), "holds what is no address; that is left out", {}, name_in(field.text)});
        }
        if (const uint64_t more = block.no_addresses.count - block.no_addresses.kept.size(); more > 0) {
            add({remark, at(block.no_addresses.kept.back().start),
                 std::to_string(more).append(" more fields behind this one hold what is no address")});
        }
        if (block.unreadable_date) {
            add({remark,
                 at(block.unreadable_date->start),
                 "is no date; the current time is taken",
                 {},
                 name_in(block.unreadable_date->text)});
        }
    }

    void add_left_out(const LeftOut& left_out, const char* one, const char* many) {
        if (left_out.count == 0) return;
        add({remark, at(left_out.kept.front().start),
             left_out.count == 1 ? one : std::to_string(left_out.count).append(many)});
    }

    // A message that is not MIME has none that count.
    void look_at_fields() {
        if (!message_.mime && message_.fallback == Fallback::none) return;
        bool refused = false;
        std::unordered_set<uint32_t> starts;
        const TroubledFields found = troubled_fields(message_.file, options_.nested, session_.journal);
        for (const TroubledField& field : found.kept) {
            if (field.refuses_message() && !std::exchange(refused, true)) refusal_ = field.range.start;
            starts.insert(field.range.start);
            add_field(field);
        }
        // Some came to light only in a copy that lacked others.
        for (const RemovedField& removed : message_.removed) {
            if (!starts.contains(removed.field.range.start)) add_field(removed.field);
        }
        if (found.not_kept > 0) {
            add({fault, at(found.kept.back().range.end),
                 std::to_string(found.not_kept).append(" more fields are refused or corrected; they are not shown")});
        }
    }

    void add_field(const TroubledField& field) {
        const LogLine* complaint = complaint_among(field.said);
        add({fault, field.range, std::string(meaning_of(field)), complaint ? complaint->text : "", field.name});
    }

    void add_uncovered(Range range) {
        const bool last = range.end == size_of(message_.input.path);
        add({fault, in_file(range),
             last ? "what stands here to the end of the file belongs to no entity: no delimiter line ends it"
                  : "what stands here belongs to no entity",
             last ? last_error(message_.messages, kUnfinished) : std::string()});
    }

    void look_at_body(int index) {
        MimeMsg& record = message_.record(index);
        if (hides_content_in_header(record)) {
            add({fault,
                 in_file({record.headerStart, record.bodyStart}),
                 "the part has no blank line, so all of it counts as header lines",
                 {},
                 {},
                 index});
        } else if (is_encoded(record)) {
            look_at_encoding(record, index);
        }
    }

    // A body that there is no room for does not hold up what is known of the message.
    void look_at_encoding(MimeMsg& record, int index) {
        const Range body = in_file({record.bodyStart, end_of_body(record)});
        try {
            if (write_body(record, Form::decoded, session_.scratch).decoded) return;
            add({fault,
                 body,
                 "the body does not decode as its encoding says; it is delivered as it stands",
                 {},
                 {},
                 index});
        } catch (const Failure& failure) {
            add({fault,
                 body,
                 std::string("the body cannot be decoded here: ") + failure.what(),
                 {},
                 {},
                 index,
                 0,
                 failure.exit()});
        }
    }

    // Complaints that no finding carries: those of the first attempt where it failed, those of the last one
    // where the file ends.
    void look_at_the_rest_of_what_was_said() {
        std::unordered_set<std::string> carried;
        for (const Finding& finding : findings_) carried.insert(finding.said);
        for (const LogLine& line : message_.refusal) {
            if (is_complaint(line) && carried.insert(line.text).second) {
                add({fault, at(refusal_), std::string(meaning_of(line.text)), line.text});
            }
        }
        for (const LogLine& line : message_.messages) {
            if (is_complaint(line) && carried.insert(line.text).second) add_at_end(line.text);
        }
    }

    void add_at_end(const std::string& said) {
        const bool unfinished = said.ends_with(kUnfinished);
        add({fault,
             at(size_of(message_.file)),
             unfinished ? "the file ends here: no delimiter line ends the part before" : std::string(meaning_of(said)),
             said,
             {},
             open_container()});
    }

    // The innermost one that the end of the file ends.
    std::optional<int> open_container() const {
        const uint32_t end = size_of(message_.input.path);
        for (int i = message_.tree.count() - 1; i >= 0; --i) {
            if (is_opened(message_.record(i)) && message_.record(i).bodyEnd >= end) return i;
        }
        return std::nullopt;
    }

    std::vector<Finding> in_order() {
        std::stable_sort(findings_.begin(), findings_.end(),
                         [](const Finding& a, const Finding& b) { return a.range.start < b.range.start; });
        std::vector<uint32_t> starts;
        for (const Finding& finding : findings_) starts.push_back(finding.range.start);
        const std::vector<uint64_t> lines = line_numbers(message_.file, starts);
        for (std::size_t i = 0; i < lines.size(); ++i) findings_[i].line = lines[i];
        return std::move(findings_);
    }

    const ParsedMessage& message_;
    const ParseOptions& options_;
    Session& session_;
    std::vector<Finding> findings_;
    uint32_t refusal_ = 0;  // where the message is refused
};

}  // namespace

std::vector<Finding> findings_of(const ParsedMessage& message, const ParseOptions& options, Session& session) {
    return Examination(message, options, session).run();
}

}  // namespace vel::command
