// The codes of replies and reports, as they stand in texts.
#ifndef VEL_TOOLS_REPORT_STATUS_CODE_H
#define VEL_TOOLS_REPORT_STATUS_CODE_H

#include <string_view>

namespace vel::command {

// The first enhanced status code of a text, "5.1.1" (RFC 3463 section 2); empty when there is none. Parts of longer
// numbers, such as those of hosts, are none.
std::string_view enhanced_code_in(std::string_view text);

// The first reply code of a text, "550" (RFC 5321 section 4.2); empty when there is none.
std::string_view reply_code_in(std::string_view text);

bool has_code(std::string_view text);

}  // namespace vel::command

#endif
