// Recipients that a text names, some of them more than once.
#ifndef VEL_TOOLS_REPORT_NAMED_RECIPIENTS_H
#define VEL_TOOLS_REPORT_NAMED_RECIPIENTS_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "tools/report/reported_recipient.h"

namespace vel::command {

class NamedRecipients {
  public:
    // The recipient with this address, a new one with this action if need be; nothing when there is no room.
    std::optional<std::size_t> place_of(std::string_view address, std::string_view action);

    // The recipient with this address; nothing when it was not named.
    std::optional<std::size_t> known(std::string_view address) const;

    ReportedRecipient& operator[](std::size_t place) { return all_.kept()[place]; }
    ReportedRecipients& all() { return all_; }
    bool empty() const { return all_.empty(); }

  private:
    ReportedRecipients all_;
    std::unordered_map<std::string, std::size_t> places_;  // of the kept ones, by the address in lower case
};

// Adds to a reason, behind a blank.
void add_reason(std::string& reason, std::string_view more);

}  // namespace vel::command

#endif
