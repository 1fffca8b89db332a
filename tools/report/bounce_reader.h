// What mailers write for people about recipients, line by line.
#ifndef VEL_TOOLS_REPORT_BOUNCE_READER_H
#define VEL_TOOLS_REPORT_BOUNCE_READER_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "tools/report/reported_recipient.h"

namespace vel::command {

// All mailers write alike: a phrase that says what happened, then each recipient at the beginning of a line with the
// reason behind or below it; old ones also what was said between two hosts, where replies name recipients.
class BounceReader {
  public:
    // A line, or the beginning of one that is longer than the reader's. False: the returned message begins, with this
    // line or behind it.
    bool take(std::string_view line);
    void finish();

    ReportedRecipients& recipients() { return recipients_; }

  private:
    bool take_phrase(std::string_view line, std::string_view lowered);
    bool take_recipients(std::string_view line);
    void take_reason(std::string_view line);
    void take_transcript(std::string_view line);
    ReportedRecipient* recipient(std::string_view address, std::string_view action);

    ReportedRecipients recipients_;
    std::unordered_map<std::string, std::size_t> places_;  // of the kept ones, by the address in lower case
    std::string previous_;                                 // line, in lower case
    std::string_view action_;                              // of the phrase that came last; empty: none has come
    std::optional<std::size_t> current_;                   // that the lines tell the reason of
    bool is_parted_ = false;                               // a blank line stands between it and its reason
    bool in_transcript_ = false;
    std::string host_;   // that the transcript is about
    std::string reply_;  // its last one
};

}  // namespace vel::command

#endif
