// What was said between two hosts, as mailers write it below what they tell.
#ifndef VEL_TOOLS_REPORT_TRANSCRIPT_H
#define VEL_TOOLS_REPORT_TRANSCRIPT_H

#include <optional>
#include <string>
#include <string_view>

#include "tools/report/named_recipients.h"

namespace vel::command {

// "... while talking to mx.example.com.:", ">>> RCPT To:<ann@example.com>", "<<< 550 5.1.1 no such user",
// "554 <ann@example.com>... Deferred".
class Transcript {
  public:
    // Takes a line in lower case that begins it; false: it does not.
    bool begin(std::string_view line);
    bool has_begun() const { return has_begun_; }

    void take(std::string_view line, NamedRecipients& recipients);

    const std::string& refusal() const { return refusal_; }  // the last one

  private:
    void take_question(std::string_view line);
    void take_answer(std::string_view line, NamedRecipients& recipients);

    bool has_begun_ = false;
    std::string host_;
    std::string asked_;  // the recipient that the host was asked for
    std::string refusal_;
};

}  // namespace vel::command

#endif
