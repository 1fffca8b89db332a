#include "tools/report/status_code.h"

#include "tools/text/ascii.h"

namespace vel::command {
namespace {

constexpr bool is_digit(char c) { return c >= '0' && c <= '9'; }
constexpr bool is_class(char c) { return c == '2' || c == '4' || c == '5'; }

constexpr std::size_t kMostDigits = 3;  // of subject and detail

// The length of one to three digits.
std::size_t digits(std::string_view text) {
    std::size_t size = 0;
    while (size < text.size() && size <= kMostDigits && is_digit(text[size])) ++size;
    return size <= kMostDigits ? size : 0;
}

// class "." subject "." detail
std::size_t enhanced_code_at(std::string_view text) {
    if (!is_class(text.front())) return 0;
    std::size_t size = 1;
    for (int part = 0; part < 2; ++part) {
        if (size >= text.size() || text[size] != '.') return 0;
        const std::size_t more = digits(text.substr(size + 1));
        if (more == 0) return 0;
        size += 1 + more;
    }
    const bool goes_on = size + 1 < text.size() && text[size] == '.' && is_digit(text[size + 1]);
    return goes_on ? 0 : size;
}

// Three digits, of which the second is 0 to 5; a blank, "-" or ")" behind them.
std::size_t reply_code_at(std::string_view text) {
    constexpr std::size_t length = 3;
    if (text.size() < length || !is_class(text[0]) || text[1] < '0' || text[1] > '5' || !is_digit(text[2])) return 0;
    return text.size() == length || std::string_view(" \t-)").find(text[length]) != std::string_view::npos ? length : 0;
}

// The first code that begins a number.
template <class CodeAt>
std::string_view first_code(std::string_view text, CodeAt code_at) {
    bool within = false;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const std::size_t size = within ? 0 : code_at(text.substr(at));
        if (size > 0) return text.substr(at, size);
        const char c = text[at];
        within = is_digit(c) || c == '.' || c == '-' || (lower(c) >= 'a' && lower(c) <= 'z');
    }
    return {};
}

}  // namespace

std::string_view enhanced_code_in(std::string_view text) { return first_code(text, enhanced_code_at); }
std::string_view reply_code_in(std::string_view text) { return first_code(text, reply_code_at); }
bool has_code(std::string_view text) { return !enhanced_code_in(text).empty() || !reply_code_in(text).empty(); }

}  // namespace vel::command
