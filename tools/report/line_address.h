// Recipients as mailers write them into lines for people.
#ifndef VEL_TOOLS_REPORT_LINE_ADDRESS_H
#define VEL_TOOLS_REPORT_LINE_ADDRESS_H

#include <optional>
#include <string_view>

namespace vel::command {

struct LineAddress {
    std::string_view address;
    std::string_view rest;  // of the line
};

// An address at the beginning of a line, in brackets or quotes perhaps: "<ann@x>: no", "[SMTP:ann@x]". Without an "@"
// only one in angle brackets is.
std::optional<LineAddress> address_at(std::string_view line);

// A line of a name and an address: "Ann Lee (ann@x)<mailto:ann@x>".
std::optional<LineAddress> mailbox_at(std::string_view line);

// A line of a name and a time: "Lee, Ann on 1/2/2003 4:05 PM".
std::optional<LineAddress> name_at(std::string_view line);

// Behind an address: it does not belong to a sentence.
bool stands_alone(std::string_view rest);

}  // namespace vel::command

#endif
