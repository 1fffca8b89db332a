#include "tools/findings.h"

#include <sys/stat.h>

#include <algorithm>
#include <utility>

#include "tools/body_file.h"
#include "tools/complaints.h"
#include "tools/entity.h"
#include "tools/header_block.h"
#include "tools/line_numbers.h"

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
        if (const std::size_t lines = block.no_fields.size(); lines > 0) {
            const std::string what =
                lines == 1 ? "a line of the header block is"
                           : std::to_string(lines) + " lines of the header block, this one the first, are";
            add({remark, at(block.no_fields.front().start), what + " no field, and not stored"});
        }
        if (block.unreadable_date) {
            const std::string& text = block.unreadable_date->text;
            add({remark,
                 at(block.unreadable_date->start),
                 "is no date; the current time is taken",
                 {},
                 text.substr(0, text.find(':'))});
        }
    }

    // A message that is not MIME has none that count.
    void look_at_fields() {
        if (!message_.mime && message_.fallback == Fallback::none) return;
        bool refused = false;
        for (const TroubledField& field : troubled_fields(message_.file, options_.nested, session_.journal)) {
            if (field.refuses_message() && !std::exchange(refused, true)) refusal_ = field.range.start;
            const LogLine* complaint = complaint_among(field.said);
            add({fault, field.range, std::string(meaning_of(field)), complaint ? complaint->text : "", field.name});
        }
    }

    void add_uncovered(Range range) {
        const bool last = range.end == size_of_parsed();
        add({fault, in_file(range),
             last ? "what stands here to the end of the file belongs to no entity: no delimiter line ends it"
                  : "what stands here belongs to no entity",
             last ? last_error(message_.messages, kUnfinished) : std::string()});
    }

    uint32_t size_of_parsed() const {
        struct stat status {};
        return ::stat(message_.input.path.c_str(), &status) == 0 ? static_cast<uint32_t>(status.st_size) : 0;
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
