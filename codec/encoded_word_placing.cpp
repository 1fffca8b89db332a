// Kept: columns are those of the value; the field's name and its colon are not counted.
// Kept: behind a line break the column counts as 3, not 1.
// Kept: a "Q" text may be cut behind the "=" of an escape, and an escape that would just fit is left for the
//       next word (q_room).
// Kept: where the prefix fits and nothing of the text does, a word without text ends the line (room_for).
// Kept: a text that fills its line is followed by a line break (place_words).
#include "codec/encoded_word_placing.h"

#include <algorithm>

#include "frame/at_boundary.h"
#include "frame/owned.h"

namespace vel {
namespace {

constexpr std::int64_t kLastColumn = 74;  // where a line may end; beyond it a word begins a new line
constexpr std::int64_t kLineBudget = 75;  // of a word that is cut, without its "?="
constexpr std::int64_t kBehindFold = 3;   // the column there
constexpr std::string_view kFold = "\r\n ";
constexpr std::string_view kEnd = "?= ";
constexpr std::string_view kCut = "?=\r\n ";

constexpr std::int64_t kQuantum = 4;  // characters of base64 that belong together
constexpr std::int64_t kEscape = 3;   // "=" and two digits

std::int64_t size_of(std::string_view text) { return static_cast<std::int64_t>(text.size()); }

std::int64_t q_room(std::string_view text, std::int64_t room) {
    const auto begins_escape = [text](std::int64_t place) {
        return place >= 0 && place < size_of(text) && text[static_cast<std::size_t>(place)] == '=';
    };
    if (begins_escape(room - 2)) return room - 2;
    return begins_escape(room - 3) ? room - 3 : room;
}

// What is cut off at least where no more room can be had, so that a text always ends.
std::int64_t least_piece(std::string_view text, WordMethod method) {
    if (method == WordMethod::b) return kQuantum;
    return text.starts_with('=') ? kEscape : 1;
}

// How much of a text goes on the line; below 0 when the prefix alone is too long for it. Division cuts towards
// 0, so that -3 is no room rather than less than none.
std::int64_t room_for(std::string_view text, std::int64_t column, std::string_view prefix, WordMethod method) {
    const std::int64_t left = kLineBudget - size_of(prefix) - column;
    const std::int64_t room = method == WordMethod::b ? left / kQuantum * kQuantum : q_room(text, left);
    return column == kBehindFold ? std::max(room, least_piece(text, method)) : room;
}

}  // namespace

void place_words(std::string& lines, std::int64_t& column, std::string_view prefix, std::string_view text,
                 WordMethod method) {
    const auto fold = [&](std::string_view with) {
        lines += with;
        column = kBehindFold;
    };
    if (column > kLastColumn) fold(kFold);
    for (;;) {
        const std::int64_t end = column + size_of(prefix) + size_of(text) + size_of(kEnd);
        if (end <= kLastColumn) {
            lines.append(prefix).append(text).append(kEnd);
            column = end;
            return;
        }
        const std::int64_t room = room_for(text, column, prefix, method);
        if (room < 0) {
            fold(kFold);
            continue;
        }
        const std::string_view piece = text.substr(0, static_cast<std::size_t>(room));
        lines.append(prefix).append(piece);
        fold(kCut);
        text.remove_prefix(piece.size());
        if (text.empty()) return;
    }
}

}  // namespace vel

char* prcoessEncodedWord(int* column, const char* prefix, const char* text, int method) {
    if (!column || !prefix || !text) return nullptr;
    return vel::at_boundary<char*>(nullptr, [=] {
        std::string lines;
        std::int64_t running = *column;
        vel::place_words(lines, running, prefix, text, method == 0 ? vel::WordMethod::b : vel::WordMethod::q);
        vel::COwned<char> result = vel::copy_text(lines);
        *column = static_cast<int>(running);
        return result.release();
    });
}
