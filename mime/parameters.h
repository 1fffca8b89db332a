// Parameters of Content-Type and Content-Disposition (RFC 2045 section 5.1, RFC 2183 section 2).
#ifndef VEL_MIME_PARAMETERS_H
#define VEL_MIME_PARAMETERS_H

#include "vel/frame.h"

namespace vel {

// How a field's parameter values are read under the strict grammar, and its name in the log.
struct ParameterRules {
    const char* field;
    bool content_type;  // blanks may stand around "=" before a quoted value; a blank value is a setting
};

// Reads parameters from a position behind a field's value up to the field's end and appends each as
// "name=value". Returns 0; -1 with a log line for what it refuses.
int parse_parameters(VEL_FILE* file, char* position, const ParameterRules& rules, ms*& parameters);

}  // namespace vel

#endif
