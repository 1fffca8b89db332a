#include "tools/report/delivery_report.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "tools/message/body_file.h"
#include "tools/message/enclosure.h"
#include "tools/message/entity.h"
#include "tools/message/header_texts.h"
#include "tools/report/bounce_phrases.h"
#include "tools/report/report_parts.h"
#include "tools/report/report_text.h"
#include "tools/text/ascii.h"

namespace vel::command {
namespace {

constexpr int kMostTexts = 16;  // beside the fields: each is held against all recipients

class Reading {
  public:
    Reading(const ParsedMessage& message, Session& session) : message_(message), session_(session) {}

    DeliveryReport read() {
        for (const Enclosure& enclosure : enclosures_of(message_)) {
            if (read_status(enclosure) || read_mailers_texts(enclosure) || read_failed_field(enclosure)) {
                read_returned_part(enclosure);
                return std::move(report_);
            }
            refuse_others(enclosure);
        }
        throw Failure(Exit::bad_data, claims_ ? "is a delivery report that names no recipient"
                                              : "is no delivery report: no mailer tells of a recipient in it");
    }

  private:
    BodyFile body_of(int index) {
        MimeMsg& record = message_.record(index);
        return write_body(record, hides_content_in_header(record) ? Form::raw : Form::whole_text, session_.scratch);
    }

    bool read_status(const Enclosure& enclosure) {
        StatusReader reader(StatusReader::Found::among_fields);
        for (const int index : enclosure.parts) {
            if (!is_status(message_.record(index))) continue;
            claims_ = true;
            if (reader.recipients().empty()) report_.part = index;
            const BodyFile body = body_of(index);
            LineReader lines(body.file.get());
            bool begins_line = true;
            while (const auto line = lines.next()) {
                reader.take(line->text, std::exchange(begins_line, line->text.ends_with('\n')));
            }
            reader.finish();
        }
        report_.message = reader.message();
        if (!take_recipients(reader.recipients(), true)) return false;
        add_reasons(enclosure);
        return true;
    }

    bool take_recipients(ReportedRecipients& recipients, bool for_programs) {
        if (recipients.empty()) return false;
        report_.recipients = std::move(recipients);
        report_.for_programs = for_programs;
        return true;
    }

    // Those that the fields leave out, from the texts beside them.
    void add_reasons(const Enclosure& enclosure) {
        int texts = 0;
        for (const int index : enclosure.parts) {
            if (texts == kMostTexts || !lacks_reasons(report_.recipients)) return;
            if (index == report_.part) continue;
            std::optional<ReportText> text = read_part(index);
            if (!text) continue;
            ++texts;
            take_reasons(report_.recipients, text->told);
        }
    }

    // The fields of the enclosure's header by which mailers are known, and those that they address recipients in.
    std::vector<HeaderText> fields_of(const Enclosure& enclosure) {
        const MimeMsg& first = message_.record(enclosure.parts.front());
        LineReader lines(message_.input.path);
        return header_texts(
            lines, {first.headerStart, first.bodyStart},
            {"From", "Return-Path", "Auto-Submitted", "X-Failed-Recipients", "Content-Type", "Subject"});
    }

    bool read_mailers_texts(const Enclosure& enclosure) {
        const std::vector<HeaderText> fields = fields_of(enclosure);
        if (!std::any_of(fields.begin(), fields.end(),
                         [](const HeaderText& field) { return tells_of_mailer(field.name, field.text); })) {
            return false;
        }
        for (const int index : enclosure.parts) {
            std::optional<ReportText> text = read_part(index);
            if (!text || !take_text(*text)) continue;
            report_.part = index;
            return true;
        }
        return enclosure.depth == 0 && read_uncovered();
    }

    // What a part tells people; nothing when it is none that does.
    std::optional<ReportText> read_part(int index) {
        const MimeMsg& record = message_.record(index);
        if (!has_content(record) || !(is_plain_text(record) || is_html(record) || is_status(record)))
            return std::nullopt;
        const BodyFile body = body_of(index);
        if (is_html(record)) return read_html(body.file.get(), session_.scratch);
        LineReader lines(body.file.get());
        return read_text(lines, lines.file_size());
    }

    bool read_uncovered() {
        LineReader lines(message_.input.path);
        return std::any_of(message_.uncovered.begin(), message_.uncovered.end(), [&](const Range& range) {
            lines.go_to(range.start);
            ReportText text = read_text(lines, range.end);
            return take_text(text);
        });
    }

    // Fields for programs may stand in a text.
    bool take_text(ReportText& text) {
        if (take_recipients(text.fields.recipients(), true)) {
            take_reasons(report_.recipients, text.told);
        } else if (!take_recipients(text.told.recipients(), false)) {
            return false;
        }
        if (report_.message.reporting_mta.empty()) report_.message = text.fields.message();
        report_.returned = std::move(text.returned);
        return true;
    }

    // Some mailers name the recipients in a field.
    bool read_failed_field(const Enclosure& enclosure) {
        ReportedRecipients recipients;
        for (const HeaderText& field : fields_of(enclosure)) {
            if (field.name != "X-Failed-Recipients") continue;
            for (std::string_view rest = field.text; !rest.empty();) {
                const std::size_t end = rest.find(',');
                ReportedRecipient failed;
                failed.address = trimmed(rest.substr(0, end));
                failed.action = "failed";
                failed.fate = Fate::permanent_failure;
                if (!failed.address.empty()) recipients.add(std::move(failed));
                rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
            }
        }
        return take_recipients(recipients, false);
    }

    void refuse_others(const Enclosure& enclosure) {
        for (const int index : enclosure.parts) {
            const char* const other = other_report(message_.record(index));
            if (other) throw Failure(Exit::bad_data, std::string("is no delivery report, but ").append(other));
        }
    }

    void read_returned_part(const Enclosure& enclosure) {
        if (report_.returned.is_told()) return;
        const auto part = std::find_if(enclosure.parts.begin(), enclosure.parts.end(),
                                       [&](int index) { return is_returned(message_.record(index)); });
        if (part == enclosure.parts.end()) return;
        const MimeMsg& record = message_.record(*part);
        if (is_message(record)) {
            LineReader lines(message_.input.path);
            report_.returned = read_returned(lines, record.bodyStart);
        } else {
            const BodyFile body = body_of(*part);
            LineReader lines(body.file.get());
            report_.returned = read_returned(lines, 0);
        }
    }

    const ParsedMessage& message_;
    Session& session_;
    DeliveryReport report_;
    bool claims_ = false;  // to be a report
};

}  // namespace

DeliveryReport read_delivery_report(const ParsedMessage& message, Session& session) {
    return Reading(message, session).read();
}

}  // namespace vel::command
