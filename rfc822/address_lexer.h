// The tokens of an address list (RFC 822 section 3.3), found in a NUL-terminated text. Tokens and
// comments are views into that text: nothing is copied.
#ifndef VEL_RFC822_ADDRESS_LEXER_H
#define VEL_RFC822_ADDRESS_LEXER_H

#include <string_view>

namespace vel {

enum AddressToken : int {
    kBroken = -1,  // a comment or a domain literal that does not end
    kEnd = 0,
    kColon = 257,
    kComma,
    kSemicolon,
    kLess,
    kGreater,
    kAt,
    kDot,
    kAtom,
    kQuotedString,
    kDomainLiteral,
};

struct AddressLexer {
    const char* at;                   // the next character
    std::string_view token{};         // the last atom, quoted string (with its quotes) or literal (with its brackets)
    std::string_view comment{};       // the last comment, without its parentheses
    bool dots_in_atoms = true;        // until the first ",", ">" or "@" of an address
    bool literals_exhausted = false;  // no "]" ends a literal from here on

    void begin_address() {
        token = comment = {};
        dots_in_atoms = true;
    }
};

}  // namespace vel

// Steps over blanks, comments and one token; says which it was.
vel::AddressToken adrlex(vel::AddressLexer& lexer);

// Steps over the comment that begins here and keeps it. False when it does not end: the position is
// the text's end then.
bool _SkipComment(vel::AddressLexer& lexer);

// Makes a token of the span from the opening character here to the first closing one without a
// backslash before it. A quoted string may end with the text; a literal may not: false, nothing done.
bool _CollectStr(vel::AddressLexer& lexer, char closing);

// A collected token without the blank that it may end in.
std::string_view _clean_str(std::string_view token);

#endif
