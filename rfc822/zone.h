// Time zones (RFC 822 section 5): names and numeric offsets.
#ifndef VEL_RFC822_ZONE_H
#define VEL_RFC822_ZONE_H

#include "rfc822/keyword_table.h"

// Names with their offsets as hhmm numbers, east positive, in search order.
extern const cmd_table zone_tbl[];

namespace vel {

constexpr int kZones = 64;
constexpr int32_t kNoZone = -99;

}  // namespace vel

#endif
