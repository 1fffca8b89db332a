#include "tools/report/delivery_report.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "tools/io/lines.h"
#include "tools/message/body_file.h"
#include "tools/message/enclosure.h"
#include "tools/message/entity.h"
#include "tools/message/header_texts.h"
#include "tools/report/bounce_phrases.h"
#include "tools/report/bounce_reader.h"

namespace vel::command {
namespace {

bool has_subtype(const MimeMsg& record, std::initializer_list<std::string_view> subtypes) {
    return std::any_of(subtypes.begin(), subtypes.end(),
                       [&](std::string_view subtype) { return same(text_of(record.contentSubtype), subtype); });
}

bool is_status(const MimeMsg& record) { return has_subtype(record, {"delivery-status", "global-delivery-status"}); }

bool is_disposition(const MimeMsg& record) {
    return has_subtype(record, {"disposition-notification", "global-disposition-notification"});
}

bool is_returned(const MimeMsg& record) {
    return has_subtype(record, {"rfc822", "rfc822-headers", "global", "global-headers"});
}

bool is_text(const MimeMsg& record) {
    const std::string_view type = text_of(record.contentType), subtype = text_of(record.contentSubtype);
    return type.empty() || (same(type, "text") && (subtype.empty() || same(subtype, "plain")));
}

// A header line of a part, in a multipart that could not be read as one.
bool begins_returned_part(std::string_view line) {
    constexpr std::string_view field = "Content-Type:";
    if (!begins(line, field)) return false;
    const std::string_view type = trimmed(line.substr(field.size()));
    return begins(type, "message/rfc822") || begins(type, "message/global") || begins(type, "text/rfc822-headers");
}

// The header block that begins at the next line which is not blank.
Range next_header_block(LineReader& lines) {
    std::optional<Line> line = lines.next();
    while (line && trimmed(line->text).empty()) line = lines.next();
    Range block{line ? line->start : lines.position(), lines.position()};
    for (bool whole = true; (line = lines.next()); whole = line->text.ends_with('\n')) {
        if (whole && trimmed(line->text).empty()) break;
        block.end = line->end;
    }
    return block;
}

class Reading {
  public:
    Reading(const ParsedMessage& message, Session& session) : message_(message), session_(session) {}

    DeliveryReport read() {
        for (const Enclosure& enclosure : enclosures_of(message_)) {
            if (read_status(enclosure) || read_texts(enclosure) || read_failed_field(enclosure)) {
                read_returned(enclosure);
                return std::move(report_);
            }
            refuse_disposition(enclosure);
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
        return take_recipients(reader.recipients(), true);
    }

    bool take_recipients(ReportedRecipients& recipients, bool for_programs) {
        if (recipients.empty()) return false;
        report_.recipients = std::move(recipients);
        report_.for_programs = for_programs;
        return true;
    }

    // The fields of the enclosure's header by which mailers are known, and those that they address recipients in.
    std::vector<HeaderText> fields_of(const Enclosure& enclosure) {
        const MimeMsg& first = message_.record(enclosure.parts.front());
        LineReader lines(message_.input.path);
        return header_texts(
            lines, {first.headerStart, first.bodyStart},
            {"From", "Return-Path", "Auto-Submitted", "X-Failed-Recipients", "Content-Type", "Subject"});
    }

    bool read_texts(const Enclosure& enclosure) {
        const std::vector<HeaderText> fields = fields_of(enclosure);
        if (!std::any_of(fields.begin(), fields.end(),
                         [](const HeaderText& field) { return tells_of_mailer(field.name, field.text); })) {
            return false;
        }
        for (const int index : enclosure.parts) {
            const MimeMsg& record = message_.record(index);
            if (!has_content(record) || !(is_text(record) || is_status(record))) continue;
            const BodyFile body = body_of(index);
            LineReader lines(body.file.get());
            report_.part = index;
            if (read_text(lines, lines.file_size())) return true;
        }
        report_.part.reset();
        return enclosure.depth == 0 && read_uncovered();
    }

    bool read_uncovered() {
        LineReader lines(message_.input.path);
        return std::any_of(message_.uncovered.begin(), message_.uncovered.end(), [&](const Range& range) {
            lines.go_to(range.start);
            return read_text(lines, range.end);
        });
    }

    // The lines up to an offset, or to the returned message. Fields for programs may stand among them.
    bool read_text(LineReader& lines, uint32_t end) {
        StatusReader fields(StatusReader::Found::in_text);
        BounceReader text;
        std::optional<uint32_t> returned;  // the line that announces it, or its first one
        bool begins_line = true;
        while (!returned && lines.position() < end) {
            const auto line = lines.next();
            if (!line) break;
            const bool is_beginning = std::exchange(begins_line, line->text.ends_with('\n'));
            fields.take(line->text, is_beginning);
            if (is_beginning && (!text.take(line->text) || begins_returned_part(line->text))) returned = line->start;
        }
        fields.finish();
        text.finish();
        if (!take_recipients(fields.recipients(), true) && !take_recipients(text.recipients(), false)) return false;
        if (report_.message.reporting_mta.empty()) report_.message = fields.message();
        if (returned) take_announced(lines, *returned);
        return true;
    }

    // A paragraph may stand before the header: the announcement, or the fields of a part.
    void take_announced(LineReader& lines, uint32_t start) {
        lines.go_to(start);
        const Range first = next_header_block(lines);
        take_original(lines, first);
        if (!report_.message_id.empty() || report_.subject) return;
        lines.go_to(first.end);
        take_original(lines, next_header_block(lines));
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

    // A disposition notification (RFC 8098) tells what a reader has done: the message had been delivered.
    void refuse_disposition(const Enclosure& enclosure) {
        for (const int index : enclosure.parts) {
            if (!is_disposition(message_.record(index))) continue;
            throw Failure(Exit::bad_data, "is no delivery report, but a disposition notification: what a reader did");
        }
    }

    void read_returned(const Enclosure& enclosure) {
        if (!report_.message_id.empty() || report_.subject) return;
        for (const int index : enclosure.parts) {
            const MimeMsg& record = message_.record(index);
            if (!is_returned(record)) continue;
            if (is_message(record)) {
                LineReader lines(message_.input.path);
                lines.go_to(record.bodyStart);
                return take_original(lines, next_header_block(lines));
            }
            const BodyFile body = body_of(index);
            LineReader lines(body.file.get());
            return take_original(lines, next_header_block(lines));
        }
    }

    void take_original(LineReader& lines, Range block) {
        for (const HeaderText& field : header_texts(lines, block, {"Message-ID", "Subject"})) {
            if (field.name == "Message-ID" && report_.message_id.empty()) report_.message_id = field.text;
            if (field.name == "Subject" && !report_.subject) report_.subject = readable(field.text);
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
