// Points in time and lengths of time, as people and programs write them.
#ifndef VEL_TOOLS_TEXT_INSTANT_H
#define VEL_TOOLS_TEXT_INSTANT_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vel::command {

// "1999-02-01T15:20:30Z" (RFC 3339), of seconds since 1970.
std::string instant_text(int64_t seconds);

// The seconds of a number with a unit: "45s", "30m", "2h", "5d". Nothing for any other text, and for more than 100
// years.
std::optional<int64_t> read_duration(std::string_view text);

// The two largest units of it: "45s", "12m", "3h12m", "5d4h".
std::string duration_text(int64_t seconds);

}  // namespace vel::command

#endif
