// Address lists: one address after the other, until the text ends.
//
// Departures from RFC 822:
//  - a list with an odd number of double quotes is refused as a whole;
//  - an escaped quote, and its backslash, count as two blanks;
//  - what does not parse is skipped up to the next comma.
#include <cstring>
#include <string_view>

#include "frame/ascii.h"
#include "frame/at_boundary.h"
#include "frame/critical_section.h"
#include "frame/owned.h"
#include "rfc822/address_parser.h"
#include "rfc822/parser_locks.h"
#include "vel/rfc822.h"

namespace vel {
namespace {

constexpr bool stands_between(char c) { return c == ',' || ascii::is_space(c); }

// Kept: one quote too many refuses the list.
bool quotes_pair_up(const char* text) {
    bool even = true;
    while ((text = std::strpbrk(text, "\"\\"))) {
        if (*text == '"') {
            even = !even;
        } else if (text[1] != '\0') {
            ++text;
        }
        ++text;
    }
    return even;
}

// Kept: escaped quotes never reach the parser.
void blank_escaped_quotes(char* text) {
    for (; (text = std::strchr(text, '\\')); ++text) {
        if (text[1] == '"') text[0] = text[1] = ' ';
    }
}

bool copy_to(char*& field, std::string_view text) {
    return at_boundary(false, [&] {
        assign_text(field, copy_text(text));
        return true;
    });
}

// Without memory the record stays empty.
void store(const AddressParts& parts, std::string_view comment, recipient& record) {
    const bool stored = copy_to(record.local, parts.local.text()) && copy_to(record.domain, parts.domain.text()) &&
                        copy_to(record.phrase, parts.phrase.text()) && copy_to(record.comment, comment) &&
                        copy_to(record.canon, parts.canon.text());
    if (!stored) Clear_RP(&record);
}

// Reads one address; the position is behind it, or at the comma that ends what is none.
void read_address(AddressLexer& lexer, recipient& record) {
    AddressParts parts;
    lexer.begin_address();
    if (adrparse(lexer, parts) != 0) {
        lexer.at += std::strcspn(lexer.at, ",");
    } else if (!parts.canon.empty()) {
        store(parts, lexer.comment, record);
    }
}

// The text as written, without what stands between addresses.
std::string_view trimmed(const char* begin, const char* end) {
    while (begin < end && stands_between(*begin)) ++begin;
    while (begin < end && stands_between(end[-1])) --end;
    return {begin, static_cast<std::size_t>(end - begin)};
}

void append(RecipTbl& table, recipient* record) {
    (table.last ? table.last->next : table.first) = record;
    table.last = record;
    ++table.count;
}

// False without memory: the list ends there.
bool read_list(const char* text, RecipTbl& table) {
    AddressLexer lexer{text};
    COwned<recipient> record;
    while (*lexer.at != '\0') {
        if (!record) record.reset(AllocateRecipient());
        if (!record) return false;
        if (*lexer.at == ',') ++lexer.at;
        const char* const start = lexer.at;
        read_address(lexer, *record);
        if (!record->canon) continue;
        if (copy_to(record->orig, trimmed(start, lexer.at))) {
            append(table, record.release());
        } else {
            Clear_RP(record.get());
        }
    }
    return true;
}

}  // namespace
}  // namespace vel

extern "C" {

char* ParseAddr(char* text, recipient* record) {
    if (!text || !record) return text;
    vel::blank_escaped_quotes(text);
    vel::AddressLexer lexer{text};
    vel::read_address(lexer, *record);
    return text + (lexer.at - text);
}

uint32_t ST_RecipParse(char* text, RecipTbl* table, int reset) {
    if (!table) return 0;
    if (reset) *table = {};
    if (!text) return 0;
    while (vel::ascii::is_space(*text)) ++text;
    if (*text == '\0' || !vel::quotes_pair_up(text)) return 0;
    vel::blank_escaped_quotes(text);
    return vel::read_list(text, *table) ? table->count : 0;
}

uint32_t VEL_RecipParse(char* text, RecipTbl* table, int reset) {
    const vel::CriticalSectionHeld lock(csRecipParse);
    return ST_RecipParse(text, table, reset);
}

uint32_t RecipParse(char* text, RecipTbl* table, int reset) { return VEL_RecipParse(text, table, reset); }

uint32_t AddParse(char* text, RecipTbl** table) {
    if (!table) return 0;
    if (!*table) *table = vel::at_boundary<RecipTbl*>(nullptr, [] { return vel::make_zeroed<RecipTbl>().release(); });
    return RecipParse(text, *table, 0);
}

}  // extern "C"
