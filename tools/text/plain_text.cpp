#include "tools/text/plain_text.h"

#include "tools/text/text_forms.h"
#include "tools/text/utf8.h"

namespace vel::command {
namespace {

constexpr std::size_t kLongestCharacter = 4;  // in bytes; CR LF is shorter

constexpr bool is_plain(char c) { return (c >= ' ' && c <= '~') || c == '\n' || c == '\t'; }

}  // namespace

void PlainText::more(std::string_view bytes, std::string& plain) {
    waiting_ += bytes;
    take(kLongestCharacter, plain);
}

void PlainText::finish(std::string& plain) {
    take(1, plain);
    if (last_ != '\n') plain += '\n';
    last_ = '\n';
}

// Takes characters as long as so many bytes are there to tell where they end.
void PlainText::take(std::size_t lookahead, std::string& plain) {
    std::string_view left = waiting_;
    const std::size_t size = plain.size();
    while (left.size() >= lookahead) {
        std::size_t run = 0;
        while (run < left.size() && is_plain(left[run])) ++run;
        plain += left.substr(0, run);
        left.remove_prefix(run);
        if (run > 0) continue;
        const Character character = first_character(left);
        const std::string_view bytes = left.substr(0, character.length);
        const bool steers = character.code == kNotUtf8 || steers_a_terminal(character.code);
        if (left.front() == '\r') {
            plain += left.substr(1).starts_with('\n') ? "" : "\n";
        } else {
            plain += steers ? visible(bytes) : std::string(bytes);
        }
        left.remove_prefix(bytes.size());
    }
    if (plain.size() > size) last_ = plain.back();
    waiting_.erase(0, waiting_.size() - left.size());
}

}  // namespace vel::command
