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
#include "rfc822/address_list.h"
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

// False without memory: the record stays empty.
bool store(const AddressParts& parts, std::string_view comment, recipient& record) {
    const bool stored = copy_to(record.local, parts.local.text()) && copy_to(record.domain, parts.domain.text()) &&
                        copy_to(record.phrase, parts.phrase.text()) && copy_to(record.comment, comment) &&
                        copy_to(record.canon, parts.canon.text());
    if (!stored) Clear_RP(&record);
    return stored;
}

// Reads one address; the position is behind it, or at the comma that ends what is none. False without memory.
bool read_address(AddressLexer& lexer, recipient& record) {
    AddressParts parts;
    lexer.begin_address();
    if (adrparse(lexer, parts) == 0) return parts.canon.empty() || store(parts, lexer.comment, record);
    lexer.at += std::strcspn(lexer.at, ",");
    return true;
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

// Without memory for its texts an address is left out; without memory for its record the list ends there.
enum class Listed { whole, in_part, cut_short };

Listed read_list(const char* text, RecipTbl& table) {
    AddressLexer lexer{text};
    Listed result = Listed::whole;
    COwned<recipient> record;
    while (*lexer.at != '\0') {
        if (!record) record.reset(AllocateRecipient());
        if (!record) return Listed::cut_short;
        if (*lexer.at == ',') ++lexer.at;
        const char* const start = lexer.at;
        if (!read_address(lexer, *record)) result = Listed::in_part;
        if (!record->canon) continue;
        if (copy_to(record->orig, trimmed(start, lexer.at))) {
            append(table, record.release());
        } else {
            Clear_RP(record.get());
            result = Listed::in_part;
        }
    }
    return result;
}

// Steps to the list and makes it readable; false when the text holds none.
bool prepare(char*& text) {
    while (ascii::is_space(*text)) ++text;
    if (*text == '\0' || !quotes_pair_up(text)) return false;
    blank_escaped_quotes(text);
    return true;
}

}  // namespace

void parse_addresses(char* text, RecipTbl& table) {
    const CriticalSectionHeld lock(csRecipParse);
    if (!prepare(text) || read_list(text, table) == Listed::whole) return;
    Clear_RT(&table);
    throw std::bad_alloc();
}

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
    if (!text || !vel::prepare(text)) return 0;
    return vel::read_list(text, *table) != vel::Listed::cut_short ? table->count : 0;
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
