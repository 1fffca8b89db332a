// A text that may be a delivery report, or stand beside one.
#ifndef VEL_TOOLS_REPORT_REPORT_TEXT_H
#define VEL_TOOLS_REPORT_REPORT_TEXT_H

#include <cstdint>
#include <string>

#include "tools/io/lines.h"
#include "tools/io/scratch.h"
#include "tools/report/bounce_reader.h"
#include "tools/report/returned_message.h"
#include "tools/report/status_reader.h"

namespace vel::command {

struct ReportText {
    StatusReader fields{StatusReader::Found::in_text};  // that stand in it
    BounceReader told;
    ReturnedMessage returned;  // where it stands below the text
};

// Reads the next lines, up to an offset or to the returned message. Throws Failure.
ReportText read_text(LineReader& lines, uint32_t end);

// Reads a file of HTML. Throws Failure.
ReportText read_html(const std::string& file, Scratch& scratch);

bool lacks_reasons(const ReportedRecipients& recipients);

// Gives those without a reason the one that a text tells of their address, and its host; or what it tells of all.
void take_reasons(ReportedRecipients& recipients, BounceReader& told);

}  // namespace vel::command

#endif
