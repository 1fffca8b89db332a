// What the builders share about texts: empty ones, chains of them, and line ends.
#ifndef VEL_BUILD_TEXTS_H
#define VEL_BUILD_TEXTS_H

#include <string_view>

#include "vel/types.h"

namespace vel {

constexpr std::string_view kLineEnd = "\r\n";

inline bool is_empty(const char* text) { return !text || !*text; }
inline const char* or_empty(const char* text) { return text ? text : ""; }

// Visits the texts of a chain; empty ones, and nodes without a text, are passed over.
template <class Visit>
void for_each_text(const ms* chain, Visit visit) {
    for (; chain; chain = chain->next) {
        if (!is_empty(chain->text)) visit(chain->text);
    }
}

}  // namespace vel

#endif
