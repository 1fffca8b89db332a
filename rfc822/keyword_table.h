// Keyword tables and their searches. A row with a null keyword ends a table; its code is the answer
// for a keyword that the table does not hold.
#ifndef VEL_RFC822_KEYWORD_TABLE_H
#define VEL_RFC822_KEYWORD_TABLE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "frame/ascii.h"

struct cmd_table {
    const char* keyword;
    int32_t code;
    uint32_t flags;
};

// Every byte folded to lower case; only the letters of ASCII have a case.
inline constexpr std::array<unsigned char, 256> CharConv = [] {
    std::array<unsigned char, 256> folded{};
    for (std::size_t i = 0; i < folded.size(); ++i) {
        folded[i] = static_cast<unsigned char>(vel::ascii::to_lower(static_cast<char>(i)));
    }
    return folded;
}();

namespace vel {

constexpr int folded(char c) { return CharConv[static_cast<unsigned char>(c)]; }
constexpr int folded_first(std::string_view keyword) { return keyword.empty() ? 0 : folded(keyword.front()); }

// Orders by the folded first characters, then by the whole texts as they stand: letter case decides
// nothing between words that differ in their first letter, and everything between those that do not.
constexpr int compare_keywords(std::string_view keyword, const char* row) {
    const int by_first = folded_first(keyword) - folded(*row);
    return by_first != 0 ? by_first : keyword.compare(row);
}

// The first row with that keyword, or the row that ends the table.
constexpr const cmd_table* find_row(std::string_view keyword, const cmd_table* table) {
    while (table->keyword && compare_keywords(keyword, table->keyword) != 0) ++table;
    return table;
}

}  // namespace vel

// Linear search.
constexpr int32_t cmd_srch(std::string_view keyword, const cmd_table* table) {
    return vel::find_row(keyword, table)->code;
}

// The keyword of the first row with that code, or null.
constexpr const char* rcmd_srch(int32_t code, const cmd_table* table) {
    while (table->keyword && table->code != code) ++table;
    return table->keyword;
}

// Binary search over the first rows of a table that is sorted by keyword; the row behind them gives
// the answer for an absent keyword.
constexpr int32_t cmdbsrch(std::string_view keyword, const cmd_table* table, int rows) {
    int low = 0;
    int high = rows - 1;
    while (low <= high) {
        const int middle = (low + high) / 2;
        const int order = vel::compare_keywords(keyword, table[middle].keyword);
        if (order == 0) return table[middle].code;
        if (order < 0) {
            high = middle - 1;
        } else {
            low = middle + 1;
        }
    }
    return table[rows].code;
}

#endif
