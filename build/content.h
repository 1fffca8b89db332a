// What the body of an entity is, and the header lines that tell it (RFC 2045; RFC 2183).
#ifndef VEL_BUILD_CONTENT_H
#define VEL_BUILD_CONTENT_H

#include <string>
#include <string_view>

#include "frame/ascii.h"
#include "vel/types.h"

namespace vel {

// Texts of the caller, null only where it is said.
struct Content {
    const char* type;
    const char* subtype;
    const ms* parameters;  // "attribute=value"; or null
    const char* encoding;
    const char* id;           // or null
    const char* description;  // or null

    bool is(std::string_view a_type) const { return ascii::equals_ignoring_case(type, a_type); }
    bool is(std::string_view a_type, std::string_view a_subtype) const {
        return is(a_type) && ascii::equals_ignoring_case(subtype, a_subtype);
    }

    // The first parameter that begins so, in any case; or null.
    const char* parameter(std::string_view beginning) const;
};

// How the parameter that names a file begins.
constexpr std::string_view kNameParameter = "name=";

// Writes "; " and a parameter, for each.
void add_parameters(std::string& lines, const ms* parameters);

std::string lines_of(const Content& content);

}  // namespace vel

#endif
