#include "tools/report/returned_message.h"

#include "tools/message/header_texts.h"
#include "tools/report/reported_recipient.h"
#include "tools/text/ascii.h"

namespace vel::command {
namespace {

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

ReturnedMessage read_block(LineReader& lines, Range block) {
    ReturnedMessage returned;
    for (const HeaderText& field : header_texts(lines, block, {"Message-ID", "Subject", "To", "Cc"})) {
        if (field.name == "Message-ID") {
            if (returned.message_id.empty()) returned.message_id = field.text;
        } else if (field.name == "Subject") {
            if (!returned.subject) returned.subject = readable(field.text);
        } else {
            if (!returned.addressees.empty()) append_report_text(returned.addressees, ", ");
            append_report_text(returned.addressees, field.text);
        }
    }
    return returned;
}

}  // namespace

ReturnedMessage read_returned(LineReader& lines, uint32_t start) {
    lines.go_to(start);
    const Range first = next_header_block(lines);
    ReturnedMessage returned = read_block(lines, first);
    if (returned.is_told()) return returned;
    lines.go_to(first.end);
    return read_block(lines, next_header_block(lines));
}

}  // namespace vel::command
