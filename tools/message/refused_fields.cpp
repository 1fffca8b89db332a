#include "tools/message/refused_fields.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "tools/io/lines.h"
#include "tools/message/delimiters.h"
#include "tools/message/mime_fields.h"

namespace vel::command {
namespace {

class FieldSearch {
  public:
    FieldSearch(const std::string& path, bool nested, Journal& journal)
        : lines_(path), nested_(nested), journal_(journal) {}

    TroubledFields run() {
        journal_.take();
        while (const std::optional<Line> line = lines_.next()) take(*line);
        give_up_waiting();
        std::sort(found_.kept.begin(), found_.kept.end(),
                  [](const TroubledField& a, const TroubledField& b) { return a.range.start < b.range.start; });
        return std::move(found_);
    }

  private:
    void take(const Line& line) {
        if (const Delimiter found = delimiters_.find_innermost(line.text); found != Delimiter::none) {
            // The first one opens the multipart even if it is a closing one.
            const bool first = std::exchange(awaiting_, std::nullopt).has_value();
            begin_block();
            in_header_ = first || found == Delimiter::opening;
            if (!in_header_) delimiters_.close();
        } else if (const Delimiter outer = delimiters_.find(line.text); outer != Delimiter::none) {
            give_up_waiting();
            begin_block();
            in_header_ = outer == Delimiter::opening;
        } else if (in_header_) {
            take_header_line(line);
        }
    }

    void begin_block() {
        block_.clear();
        type_field_ = {};
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
            return keep(std::move(field));
        }
        field.range.end = lines_.position();
        if (std::any_of(field.said.begin(), field.said.end(), is_about_field)) report(field, Trouble::corrected);
        if (is_content_type(text)) type_field_ = std::move(field);
    }

    void report(TroubledField field, Trouble trouble) {
        field.trouble = trouble;
        keep(std::move(field));
    }

    void keep(TroubledField field) {
        if (found_.kept.size() < kMostTroubledFields) {
            found_.kept.push_back(std::move(field));
        } else {
            ++found_.not_kept;
        }
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
        if (!delimiter) return report(type_field_, Trouble::no_boundary);
        delimiters_.open(std::move(*delimiter));
        awaiting_ = type_field_;
    }

    void give_up_waiting() {
        if (!awaiting_) return;
        report(std::move(*awaiting_), Trouble::no_first_delimiter);
        awaiting_.reset();
        delimiters_.close();
    }

    LineReader lines_;
    const bool nested_;
    MimeFields block_;
    TroubledField type_field_{};  // the block's Content-Type
    bool in_header_ = true;
    OpenDelimiters delimiters_;
    std::optional<TroubledField> awaiting_;  // of the innermost multipart, until its first delimiter line comes
    Journal& journal_;
    TroubledFields found_;
};

}  // namespace

TroubledFields troubled_fields(const std::string& path, bool nested, Journal& journal) {
    return FieldSearch(path, nested, journal).run();
}

}  // namespace vel::command
