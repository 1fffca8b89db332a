// Fields of a header block by their names, as they stand.
#ifndef VEL_TOOLS_MESSAGE_HEADER_TEXTS_H
#define VEL_TOOLS_MESSAGE_HEADER_TEXTS_H

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "tools/io/library_owned.h"
#include "tools/io/lines.h"

namespace vel::command {

struct HeaderText {
    std::string_view name;  // one of those that were asked for
    std::string text;       // unfolded, with one blank for each fold
};

// Of all fields of a name so much text is kept, and "..." put for the rest: more than a person reads.
constexpr std::size_t kMostHeaderText = 65536;

// The fields of these names between two offsets of a file, in their order. Throws Failure.
std::vector<HeaderText> header_texts(LineReader& lines, Range block, std::initializer_list<std::string_view> names);

}  // namespace vel::command

#endif
