// Short identifiers: which moment, and enough chance that no two are alike, whatever a clock does.
#ifndef VEL_PLATFORM_QUEUE_IDENTIFIER_H
#define VEL_PLATFORM_QUEUE_IDENTIFIER_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace vel {

// Microseconds since 1970.
int64_t now();
// Microseconds since the machine was started, which nobody can set.
int64_t uptime();

inline constexpr std::size_t kIdentifierSize = 24;

// 24 characters of 0-9 and a-v: the time of the call, so that identifiers sort by age, and 64 random bits.
std::string new_identifier();

bool is_identifier(std::string_view text);

// Which of so many directories an identifier belongs to.
unsigned shard_of(std::string_view identifier, unsigned shards);

}  // namespace vel

#endif
