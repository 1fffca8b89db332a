// The fields of a type, between the caller's record and the database's.
#ifndef VEL_MAGIC_RECORD_H
#define VEL_MAGIC_RECORD_H

#include <cstddef>
#include <cstring>
#include <string_view>

#include "vel/magic.h"
#include "vel/platform/diamond.h"

namespace vel {

// A field's text: what stands before its first NUL, or its end.
template <std::size_t Size>
std::string_view text_of(const char (&field)[Size]) {
    return {field, ::strnlen(field, Size)};
}

void copy_record(const MagicRecord& from, magicdbFields& to);
void copy_record(const magicdbFields& from, MagicRecord& to);

// Copies an extension, or a type and creator, into a caller's buffer of ten bytes.
void copy_out(std::string_view text, char* buffer);

}  // namespace vel

#endif
