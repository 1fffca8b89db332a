#include "tools/report/report_text.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "tools/io/blocks.h"
#include "tools/io/scratch_file.h"
#include "tools/report/html_lines.h"
#include "tools/report/report_parts.h"

namespace vel::command {

ReportText read_text(LineReader& lines, uint32_t end) {
    ReportText text;
    std::optional<uint32_t> returned;  // the line that announces the message, or its first one
    bool begins_line = true;
    while (!returned && lines.position() < end) {
        const auto line = lines.next();
        if (!line) break;
        const bool is_beginning = std::exchange(begins_line, line->text.ends_with('\n'));
        text.fields.take(line->text, is_beginning);
        if (is_beginning && (!text.told.take(line->text) || begins_returned_part(line->text))) returned = line->start;
    }
    text.fields.finish();
    text.told.finish();
    if (returned) text.returned = read_returned(lines, *returned);
    return text;
}

ReportText read_html(const std::string& file, Scratch& scratch) {
    ScratchFile plain(scratch);
    HtmlLines html;
    std::string text;
    for_each_block(open_for_reading(file).get(), [&](std::string_view block) {
        html.more(block, text);
        plain.write(text);
        text.clear();
        return true;
    });
    html.finish(text);
    plain.write(text);
    const PrivateFile written = plain.finish();
    LineReader lines(written.path());
    return read_text(lines, lines.file_size());
}

bool lacks_reasons(const ReportedRecipients& recipients) {
    return std::any_of(recipients.kept().begin(), recipients.kept().end(),
                       [](const ReportedRecipient& recipient) { return recipient.reason.empty(); });
}

// Who names nobody tells of those that have not got the message.
bool has_arrived(Fate fate) { return fate == Fate::delivered || fate == Fate::relayed || fate == Fate::expanded; }

void take_reasons(ReportedRecipients& recipients, BounceReader& told) {
    for (ReportedRecipient& recipient : recipients.kept()) {
        if (!recipient.reason.empty()) continue;
        auto place = told.named().known(recipient.address);
        if (!place && !has_arrived(recipient.fate)) place = told.named().known("");
        if (!place) continue;
        const ReportedRecipient& named = told.named()[*place];
        recipient.reason = named.reason;
        recipient.fate = fate_of(recipient.action, recipient.status, recipient.reason);
        if (recipient.remote_mta.empty()) recipient.remote_mta = named.remote_mta;
    }
}

}  // namespace vel::command
