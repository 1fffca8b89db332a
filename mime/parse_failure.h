// How a parse gives up: a failure carries its log text to the one place that logs it.
#ifndef VEL_MIME_PARSE_FAILURE_H
#define VEL_MIME_PARSE_FAILURE_H

#include <unistd.h>

#include "frame/at_boundary.h"
#include "frame/log.h"

namespace vel {

struct ParseFailure {
    const char* text;
};

inline int parse_failed(const char* text) {
    log_text(kLogError, text);
    return -1;
}

inline bool is_readable(const char* path) { return ::access(path, R_OK) == 0; }

// Runs a parse and turns its failure into -1 with a log line.
template <class Parse>
int run_parse(const char* out_of_memory, Parse&& parse) noexcept {
    return at_boundary(
        -1, [=] { log_text(kLogError, out_of_memory); },
        [&] {
            try {
                return parse();
            } catch (const ParseFailure& failure) {
                return parse_failed(failure.text);
            }
        });
}

}  // namespace vel

#endif
