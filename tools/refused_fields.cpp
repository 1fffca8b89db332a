#include "tools/refused_fields.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <utility>

#include "tools/delimiters.h"
#include "tools/entity.h"
#include "tools/lines.h"

namespace vel::command {
namespace {

constexpr std::string_view kContentType = "content-type:";
constexpr std::string_view kEncoding = "content-transfer-encoding:";

void forget(char*& text) {
    std::free(text);
    text = nullptr;
}

void forget_type(MimeMsg& record) {
    forget(record.contentType);
    forget(record.contentSubtype);
    freeStringChain(record.contentTypeParams);
    record.contentTypeParams = nullptr;
}

// Those of one header block.
class MimeFields {
  public:
    MimeFields() = default;
    MimeFields(const MimeFields&) = delete;
    MimeFields& operator=(const MimeFields&) = delete;
    ~MimeFields() { clear(); }

    MimeMsg* record() { return &record_; }

    void clear() {
        forget_type(record_);
        freeStringChain(record_.contentDispositionParams);
        for (char* text : {record_.contentID, record_.contentDescription, record_.contentTransferEncoding,
                           record_.contentDisposition}) {
            std::free(text);
        }
        record_ = {};
        type_field_ = {};
    }

    // Drops what a refused field has left in the record.
    void refuse(std::string_view line) {
        if (begins(line, kContentType)) forget_type(record_);
        if (begins(line, kEncoding)) forget(record_.contentTransferEncoding);
    }

    void accept_type(TroubledField field) { type_field_ = std::move(field); }
    const TroubledField& type_field() const { return type_field_; }

    bool is_multipart() const { return command::is_multipart(record_); }

    bool is_open_message() const {
        const std::string encoding = lower(text_of(record_.contentTransferEncoding));
        return is_message(record_) &&
               (encoding.empty() || encoding == "7bit" || encoding == "8bit" || encoding == "binary");
    }

    // "--" and the boundary parameter's value.
    std::optional<std::string> delimiter() const {
        for (const ms* node = record_.contentTypeParams; node; node = node->next) {
            const std::string_view text = node->text;
            const std::size_t equals = text.find('=');
            if (!begins(text, "boundary") || equals == std::string_view::npos) continue;
            std::string_view value = trimmed(text.substr(equals + 1));
            if (value.starts_with('"')) value.remove_prefix(1);
            if (value.ends_with('"')) value.remove_suffix(1);
            return std::string(kClosingMark).append(value);
        }
        return std::nullopt;
    }

  private:
    MimeMsg record_{};
    TroubledField type_field_{};
};

class FieldSearch {
  public:
    FieldSearch(const std::string& path, bool nested, Journal& journal)
        : lines_(path), nested_(nested), journal_(journal) {}

    std::vector<TroubledField> run() {
        journal_.take();
        std::optional<Line> line;
        while (found_.size() < kMostTroubledFields && (line = lines_.next())) take(*line);
        if (!line) give_up_waiting();
        std::sort(found_.begin(), found_.end(),
                  [](const TroubledField& a, const TroubledField& b) { return a.range.start < b.range.start; });
        return std::move(found_);
    }

  private:
    // A multipart whose first delimiter line has not come yet.
    struct Awaited {
        std::string delimiter;
        TroubledField type_field;
    };

    void take(const Line& line) {
        if (awaited_ && line.text.starts_with(awaited_->delimiter)) {
            awaited_.reset();
            return begin_block();
        }
        const Delimiter found = delimiters_.find(line.text);
        if (found != Delimiter::none) {
            give_up_waiting();
            begin_block();
            in_header_ = found == Delimiter::opening;
        } else if (in_header_) {
            take_header_line(line);
        }
    }

    void begin_block() {
        block_.clear();
        in_header_ = true;
    }

    void take_header_line(const Line& line) {
        if (line.text == "\r\n") return end_block();
        if (line.text.starts_with("#F") || line.text.starts_with("#R")) return;  // lines of the queue's envelope
        const Range range{line.start, line.end};
        const std::string text(line.text);  // the field parser reads on, into the same buffer
        const bool refused = ParseMimeHeaders(lines_.file(), block_.record(), lines_.file()->line) != 0;
        TroubledField field{range, text.substr(0, text.find(':')), Trouble::refused, journal_.take()};
        if (refused) {
            block_.refuse(text);
            field.range = with_continuation(range, text.ends_with('\n'));
            found_.push_back(std::move(field));
            return;
        }
        field.range.end = lines_.position();
        if (std::any_of(field.said.begin(), field.said.end(), is_about_field)) report(field, Trouble::corrected);
        if (begins(text, kContentType)) block_.accept_type(std::move(field));
    }

    void report(TroubledField field, Trouble trouble) {
        field.trouble = trouble;
        found_.push_back(std::move(field));
    }

    // Adds the rest of a line that came in pieces, and the lines that continue the field.
    Range with_continuation(Range field, bool line_ended) {
        lines_.go_to(field.end);
        while (const std::optional<Line> line = lines_.next()) {
            if (line_ended && !line->text.starts_with(' ') && !line->text.starts_with('\t')) break;
            field.end = line->end;
            line_ended = line->text.ends_with('\n');
        }
        lines_.go_to(field.end);
        return field;
    }

    void end_block() {
        if (block_.is_multipart()) {
            open_multipart();
        } else if (nested_ && block_.is_open_message()) {
            return begin_block();
        }
        in_header_ = false;
    }

    void open_multipart() {
        std::optional<std::string> delimiter = block_.delimiter();
        if (!delimiter) return report(block_.type_field(), Trouble::no_boundary);
        delimiters_.add(*delimiter);
        awaited_ = Awaited{std::move(*delimiter), block_.type_field()};
    }

    void give_up_waiting() {
        if (awaited_) report(awaited_->type_field, Trouble::no_first_delimiter);
        awaited_.reset();
    }

    LineReader lines_;
    const bool nested_;
    MimeFields block_;
    bool in_header_ = true;
    std::optional<Awaited> awaited_;
    DelimiterSet delimiters_;
    Journal& journal_;
    std::vector<TroubledField> found_;
};

}  // namespace

bool is_about_field(const LogLine& line) { return line.text.find("\" field invalid") != std::string::npos; }

const char* name_of(Trouble trouble) {
    constexpr std::array kNames{"corrected", "refused", "no_boundary", "no_first_delimiter"};
    return kNames[static_cast<std::size_t>(trouble)];
}

std::vector<TroubledField> troubled_fields(const std::string& path, bool nested, Journal& journal) {
    return FieldSearch(path, nested, journal).run();
}

std::vector<Range> refused_ranges(const std::vector<TroubledField>& fields) {
    std::vector<Range> ranges;
    for (const TroubledField& field : fields) {
        if (field.refuses_message()) ranges.push_back(field.range);
    }
    return ranges;
}

}  // namespace vel::command
