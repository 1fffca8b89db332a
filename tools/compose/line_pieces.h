// The lines of a file, in pieces that memory can hold.
#ifndef VEL_TOOLS_COMPOSE_LINE_PIECES_H
#define VEL_TOOLS_COMPOSE_LINE_PIECES_H

#include <string>
#include <string_view>

#include "tools/io/blocks.h"

namespace vel::command {

// A line without its LF, whole unless it is very long. A CR that LF follows stands at the end of its last piece;
// the file's last line may lack its LF, and ends nothing then.
struct LinePiece {
    std::string_view text;
    bool begins;
    bool ends;

    bool ends_in_crlf() const { return ends && text.ends_with('\r'); }
    std::string_view without_cr() const { return ends_in_crlf() ? text.substr(0, text.size() - 1) : text; }
};

// How much of a text may be the beginning of something that goes on behind it: CR LF, or a character of UTF-8.
constexpr std::size_t begun_at_end(std::string_view text) {
    if (text.ends_with('\r')) return 1;
    for (std::size_t length = 1; length <= 3 && length <= text.size(); ++length) {
        const auto byte = static_cast<unsigned char>(text[text.size() - length]);
        if (byte >= 0xC0) return length;
        if (byte < 0x80) break;
    }
    return 0;
}

// Calls on_piece(piece) for each until that answers false. Throws Failure.
template <class OnPiece>
void for_each_piece(const std::string& path, OnPiece&& on_piece) {
    std::string waiting;
    bool begins = true, goes_on = true;
    const auto hand_out = [&](std::string_view text, bool ends) {
        goes_on = on_piece(LinePiece{text, begins, ends});
        begins = ends;
    };
    for_each_block(open_for_reading(path).get(), [&](std::string_view block) {
        const std::string joined = waiting.append(block);
        std::string_view rest = joined;
        for (std::size_t end; goes_on && (end = rest.find('\n')) != rest.npos; rest.remove_prefix(end + 1)) {
            hand_out(rest.substr(0, end), true);
        }
        if (goes_on && rest.size() >= kBlock) {
            const std::size_t whole = rest.size() - begun_at_end(rest);
            hand_out(rest.substr(0, whole), false);
            rest.remove_prefix(whole);
        }
        waiting = rest;
        return goes_on;
    });
    if (goes_on && !waiting.empty()) hand_out(waiting, false);
}

}  // namespace vel::command

#endif
