// What may be wrong with a header field, and the library's words about it.
#ifndef VEL_TOOLS_IO_TROUBLE_H
#define VEL_TOOLS_IO_TROUBLE_H

#include <string>
#include <vector>

#include "tools/io/journal.h"
#include "tools/io/library_owned.h"

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

// The ranges of the fields for which the parser refuses the message.
std::vector<Range> refused_ranges(const std::vector<TroubledField>& fields);

}  // namespace vel::command

#endif
