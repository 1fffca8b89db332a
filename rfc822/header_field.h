// One field of a header block: its keyword, its value, and how the value is kept.
#ifndef VEL_RFC822_HEADER_FIELD_H
#define VEL_RFC822_HEADER_FIELD_H

#include <string_view>

#include "rfc822/header_record.h"

namespace vel {

// Stores a field, whose lines may still be folded. Returns its code, or -1 for a line that is no
// field, and without memory, which is logged.
int store_field(std::string_view field, HeaderRecord& record) noexcept;

}  // namespace vel

#endif
