// The header fields that the library refuses or corrects.
#ifndef VEL_TOOLS_REFUSED_FIELDS_H
#define VEL_TOOLS_REFUSED_FIELDS_H

#include <cstddef>
#include <string>
#include <vector>

#include "tools/journal.h"
#include "tools/library_owned.h"

namespace vel::command {

enum class Trouble {
    corrected,           // the library says that the field is invalid, and goes on
    refused,             // by the field parser: so is the whole message
    no_boundary,         // a multipart's Content-Type without the parameter: the message is refused
    no_first_delimiter,  // a multipart whose first delimiter line never comes: the message is refused
};

// "corrected", "refused", "no_boundary", "no_first_delimiter"
const char* name_of(Trouble trouble);

struct TroubledField {
    Range range;       // continuation lines included
    std::string name;  // as written
    Trouble trouble;
    std::vector<LogLine> said;  // what the library has logged about it

    bool refuses_message() const { return trouble != Trouble::corrected; }
};

// The library says at the level of notices too why it refuses or corrects a field.
bool is_about_field(const LogLine& line);

// So many fields are found in one message at the most: a file of nothing else must not take memory without
// bound.
constexpr std::size_t kMostTroubledFields = 10000;

// Walks through a message's header blocks as the parser does and hands every MIME field to the library's
// field parser.
//   nested  look into enclosed messages
// Returns the fields in order. The settings in force decide about the grammar; the lines that the library
// logs meanwhile are taken from the journal.
std::vector<TroubledField> troubled_fields(const std::string& path, bool nested, Journal& journal);

// The ranges of the fields for which the parser refuses the message.
std::vector<Range> refused_ranges(const std::vector<TroubledField>& fields);

}  // namespace vel::command

#endif
