// The header fields that the library refuses or corrects.
#ifndef VEL_TOOLS_MESSAGE_REFUSED_FIELDS_H
#define VEL_TOOLS_MESSAGE_REFUSED_FIELDS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tools/io/journal.h"
#include "tools/io/trouble.h"

namespace vel::command {

// So many fields of one message are kept at the most, the others are only counted: a file of nothing else
// must not take memory without bound.
constexpr std::size_t kMostTroubledFields = 10000;

struct TroubledFields {
    std::vector<TroubledField> kept;  // in order
    uint64_t not_kept = 0;
};

// Walks through a message's header blocks as the parser does and hands every MIME field to the library's
// field parser.
//   nested  look into enclosed messages
// The settings in force decide about the grammar; the lines that the library logs meanwhile are taken from
// the journal.
TroubledFields troubled_fields(const std::string& path, bool nested, Journal& journal);

}  // namespace vel::command

#endif
