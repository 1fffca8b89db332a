// What a header field can be refused for. The texts are read by operators and kept as they stand.
#ifndef VEL_MIME_FIELD_ERROR_H
#define VEL_MIME_FIELD_ERROR_H

#include "frame/log.h"

namespace vel {

constexpr const char* kBadContinuation = "Invalid comment or continuation.";
constexpr const char* kOutOfMemory = "Out of memory.";

// Each logs its line and gives the parser's failure result.
inline int field_invalid(const char* field, int level = kLogError) {
    log_line(level, "\"%s\" field invalid.", field);
    return -1;
}

inline int field_invalid_because(const char* field, const char* reason, int level = kLogError) {
    log_line(level, "\"%s\" field invalid. %s", field, reason);
    return -1;
}

inline int bad_continuation(const char* field) { return field_invalid_because(field, kBadContinuation, kLogNotice); }

inline int invalid_parameter(const char* field, const char* parameter) {
    log_line(kLogError, "Invalid parm in \"%s\" header: %.20s", field, parameter);
    return -1;
}

inline int missing_quote(const char* field) {
    log_line(kLogError, "Missing quote in \"%s\" parms.", field);
    return -1;
}

}  // namespace vel

#endif
