// The fields of a delivery report for programs (RFC 3464 section 2).
#ifndef VEL_TOOLS_REPORT_STATUS_READER_H
#define VEL_TOOLS_REPORT_STATUS_READER_H

#include <string>
#include <string_view>

#include "tools/report/reported_recipient.h"

namespace vel::command {

// Those of the message.
struct ReportedMessage {
    std::string reporting_mta;
    std::string arrival_date;
    std::string envelope_id;
};

// Takes fields as they come, since mailers leave out and add blank lines: a field tells by its name whether it is
// the message's or a recipient's. A recipient ends at a blank line, and where one of its fields comes once more.
class StatusReader {
  public:
    // What a recipient needs to count as one: among fields a code or an address does, in a text that may be about
    // anything both must be there.
    enum class Found { among_fields, in_text };

    explicit StatusReader(Found found) : found_(found) {}

    // A line, or a piece of one that is longer than the reader's.
    void take(std::string_view line, bool begins_line);
    void finish();

    const ReportedMessage& message() const { return message_; }
    ReportedRecipients& recipients() { return recipients_; }

    // What the fields of one recipient hold, as they stand.
    struct Fields {
        std::string final_recipient, original_recipient, action, status, remote_mta, diagnostic, last_attempt,
            retry_until;
    };

  private:
    std::string* place_of(std::string_view name);
    void begin_field(std::string_view line);
    void end_recipient();
    bool counts() const;

    const Found found_;
    Fields fields_;
    ReportedMessage message_;
    ReportedRecipients recipients_;
    std::string* field_ = nullptr;  // that the line belongs to
};

}  // namespace vel::command

#endif
