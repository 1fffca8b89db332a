// The phrases by which mailers tell people what became of a message, when there is no report for programs.
#ifndef VEL_TOOLS_REPORT_BOUNCE_PHRASES_H
#define VEL_TOOLS_REPORT_BOUNCE_PHRASES_H

#include <cstddef>
#include <string_view>

namespace vel::command {

struct BouncePhrase {
    std::string_view text;        // in lower case
    std::string_view action;      // of the recipients that follow, in the words of RFC 3464
    bool tells_why_next = false;  // what follows is the reason for all of them
};

struct FoundPhrase {
    const BouncePhrase* phrase = nullptr;
    std::size_t start = 0;
    std::size_t end = 0;  // behind it
};

// The phrase that ends last in a text in lower case, of those that end behind an offset; none: a null phrase.
// A phrase begins where a word does.
FoundPhrase last_phrase(std::string_view text, std::size_t behind);

// The end of a line that a phrase may begin in.
std::string_view tail_of(std::string_view line);

// Whether a line in lower case says that the returned message follows.
bool announces_return(std::string_view line);

// Whether a header field is one that mailers write when they report: what its value begins with or contains.
bool tells_of_mailer(std::string_view field, std::string_view value);

}  // namespace vel::command

#endif
