// What a delivery report is to say of a recipient, as the command line has it (RFC 3464 section 2.3).
#ifndef VEL_TOOLS_VERBS_RECIPIENT_STATUS_H
#define VEL_TOOLS_VERBS_RECIPIENT_STATUS_H

#include <cstdint>
#include <string>
#include <vector>

#include "vel/notify.h"

namespace vel::command {

// Texts are empty, times (seconds since 1970) 0 where nothing is said.
struct RecipientStatus {
    std::string original;  // TYPE;ADDRESS
    std::string final_address;
    std::string action;
    std::string status;
    std::string remote;
    std::string diagnostic;
    int32_t last_attempt = 0;
    int32_t will_retry = 0;
};

// Reads "final=ADDRESS;action=WORD;status=CODE;...": each NAME= behind a ";" begins a member, any other ";" belongs to
// its value. Throws Failure, usage; bad_data for what is no address.
RecipientStatus parse_recipient_status(const std::string& text);

// The same as the library's chain, which keeps no copy of a text.
class StatusChain {
  public:
    explicit StatusChain(std::vector<RecipientStatus> recipients);
    StatusChain(const StatusChain&) = delete;
    StatusChain& operator=(const StatusChain&) = delete;

    const PerRecipChain* get() const { return nodes_.data(); }  // there is one at least

  private:
    std::vector<RecipientStatus> recipients_;
    std::vector<PerRecipField> records_;
    std::vector<PerRecipChain> nodes_;
};

}  // namespace vel::command

#endif
