// Departures from RFC 822:
//  - a parenthesis inside an atom belongs to the atom: only a comment behind a blank is one;
//  - dots before the first ",", ">" or "@" of an address belong to the atom;
//  - "]", "=", "\", control characters and bytes above 127 are atom characters.
#include "rfc822/address_lexer.h"

#include <array>
#include <cstddef>
#include <cstdint>

#include "frame/ascii.h"

namespace vel {
namespace {

static_assert(kDomainLiteral == 266, "the codes of the grammar's terminals");

constexpr std::size_t kCommentMax = 255;

constexpr uint8_t kEndsAtom = 1;
constexpr uint8_t kIsDot = 2;

constexpr std::array<uint8_t, 256> kAtomEnds = [] {
    std::array<uint8_t, 256> ends{};
    ends[0] = kEndsAtom;
    for (const char c : std::string_view("\",:;<@>[ \t\n\v\f\r")) ends[static_cast<uint8_t>(c)] = kEndsAtom;
    ends['.'] = kIsDot;
    return ends;
}();

// Kept: an atom takes in "(" and, before the first "@", dots.
AddressToken atom(AddressLexer& lexer) {
    const int ends = lexer.dots_in_atoms ? kEndsAtom : kEndsAtom | kIsDot;
    const char* end = lexer.at;
    while ((kAtomEnds[static_cast<uint8_t>(*end)] & ends) == 0) ++end;
    lexer.token = {lexer.at, static_cast<std::size_t>(end - lexer.at)};
    lexer.at = end;
    return kAtom;
}

AddressToken quoted_string(AddressLexer& lexer) {
    _CollectStr(lexer, '"');
    return kQuotedString;
}

// Kept: a "[" that begins no literal is stepped over.
AddressToken domain_literal(AddressLexer& lexer) {
    if (_CollectStr(lexer, ']')) return kDomainLiteral;
    ++lexer.at;
    return kBroken;
}

AddressToken punctuation(AddressLexer& lexer, AddressToken token) {
    ++lexer.at;
    return token;
}

AddressToken punctuation_before_dots(AddressLexer& lexer, AddressToken token) {
    lexer.dots_in_atoms = false;
    return punctuation(lexer, token);
}

// Behind a backslash and the character that it escapes; the text's end is never escaped.
const char* behind_escape(const char* backslash) { return backslash[1] == '\0' ? backslash + 1 : backslash + 2; }

// Behind a quoted string inside a comment.
const char* behind_quotes(const char* quote) {
    const char* at = quote + 1;
    while (*at != '"' && *at != '\0') at = *at == '\\' ? behind_escape(at) : at + 1;
    return *at == '"' ? at + 1 : at;
}

}  // namespace
}  // namespace vel

vel::AddressToken adrlex(vel::AddressLexer& lexer) {
    using enum vel::AddressToken;
    for (;;) {
        while (vel::ascii::is_space(*lexer.at)) ++lexer.at;
        switch (*lexer.at) {
            case '\0': return kEnd;
            case '(':
                if (!_SkipComment(lexer)) return kBroken;
                continue;
            case '"': return vel::quoted_string(lexer);
            case '[': return vel::domain_literal(lexer);
            case ':': return vel::punctuation(lexer, kColon);
            case ';': return vel::punctuation(lexer, kSemicolon);
            case '<': return vel::punctuation(lexer, kLess);
            case ',': return vel::punctuation_before_dots(lexer, kComma);
            case '>': return vel::punctuation_before_dots(lexer, kGreater);
            case '@': return vel::punctuation_before_dots(lexer, kAt);
            case '.':
                if (!lexer.dots_in_atoms) return vel::punctuation(lexer, kDot);
                [[fallthrough]];
            default: return vel::atom(lexer);
        }
    }
}

bool _SkipComment(vel::AddressLexer& lexer) {
    const char* const inner = lexer.at + 1;
    const char* at = inner;
    for (std::size_t depth = 1; depth > 0;) {
        switch (*at) {
            case '\0': lexer.at = at; return false;
            case '"': at = vel::behind_quotes(at); continue;
            case '\\': at = vel::behind_escape(at); continue;
            case '(': ++depth; break;
            case ')': --depth; break;
            default: break;
        }
        ++at;
    }
    lexer.comment = std::string_view(inner, static_cast<std::size_t>(at - 1 - inner)).substr(0, vel::kCommentMax);
    lexer.at = at;
    return true;
}

bool _CollectStr(vel::AddressLexer& lexer, char closing) {
    if (closing == ']' && lexer.literals_exhausted) return false;
    const char* end = lexer.at + 1;
    while (*end != '\0' && (*end != closing || end[-1] == '\\')) ++end;
    if (*end == closing) {
        ++end;
    } else if (closing == ']') {
        lexer.literals_exhausted = true;
        return false;
    }
    lexer.token = _clean_str({lexer.at, static_cast<std::size_t>(end - lexer.at)});
    lexer.at = end;
    return true;
}

std::string_view _clean_str(std::string_view token) {
    if (token.ends_with(' ')) token.remove_suffix(1);
    return token;
}
