// The values of fields for programs (RFC 3464 section 2.1).
#ifndef VEL_TOOLS_REPORT_FIELD_VALUE_H
#define VEL_TOOLS_REPORT_FIELD_VALUE_H

#include <string>
#include <string_view>

namespace vel::command {

// A value with its type before it: "smtp; 550 no". One without a type has none.
struct Typed {
    std::string_view type, value;
};
Typed typed(std::string_view field);

// Comments may stand between all words (RFC 5322 section 3.2.2), but not in quoted ones. One that does not end stays.
std::string without_comments(std::string_view field);

// What stands in the comment behind a code: "5.0.0 (permanent failure)". Empty when there is none.
std::string_view comment_of(std::string_view field);

// An address without type, angle brackets and comments; one in UTF-8 as such (RFC 6533 section 3). The escapes of
// ESMTP, which do not belong into a report (RFC 3461 section 4.2), become characters where they hide the "@".
std::string address_in(std::string_view field);

// A host without type and comments.
std::string host_in(std::string_view field);

}  // namespace vel::command

#endif
