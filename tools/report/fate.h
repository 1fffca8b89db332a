// What has become of a recipient.
#ifndef VEL_TOOLS_REPORT_FATE_H
#define VEL_TOOLS_REPORT_FATE_H

#include <string_view>

namespace vel::command {

enum class Fate {
    delivered,
    relayed,            // to a host that reports nothing
    expanded,           // to several addresses, of a list
    delayed,            // will be tried again
    temporary_failure,  // given up for a cause that passes
    permanent_failure,
    unknown,
};

// "delivered", "temporary failure"
const char* name_of(Fate fate);

// The action counts (RFC 3464 section 2.3.3), however it is spelt. Whether a failure is temporary, and everything
// where there is no action, the class of the first code tells: of the status, else of the reason.
Fate fate_of(std::string_view action, std::string_view status, std::string_view reason);

}  // namespace vel::command

#endif
