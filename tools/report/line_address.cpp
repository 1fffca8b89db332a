#include "tools/report/line_address.h"

#include <algorithm>
#include <array>

#include "tools/text/ascii.h"

namespace vel::command {
namespace {

constexpr std::string_view kBeforeAddress = " \t*'\"[";
constexpr std::string_view kBehindAddress = "*'\"] \t";
constexpr std::string_view kEndsAddress = " \t<>(),;:'\"*]";
constexpr std::string_view kDots = "...";

constexpr std::array<std::string_view, 3> kSchemes{"mailto:", "smtp:", "rfc822;"};

constexpr std::array<std::string_view, 7> kAfterAddress{":", "(", ",", ";", "-", "...", "on "};

void skip(std::string_view& text, std::string_view characters) {
    text.remove_prefix(std::min(text.size(), text.find_first_not_of(characters)));
}

void skip_scheme(std::string_view& text) {
    for (const std::string_view scheme : kSchemes) {
        if (begins(text, scheme)) return text.remove_prefix(scheme.size());
    }
}

// The same address once more: "ann@x<mailto:ann@x>".
void skip_link(std::string_view& rest) {
    constexpr std::string_view opening = "<mailto:";
    if (begins(rest, opening)) rest.remove_prefix(std::min(rest.size(), rest.find('>')));
    if (rest.starts_with('>')) rest.remove_prefix(1);
}

constexpr bool has_local_part_and_domain(std::string_view address) {
    const std::size_t at = address.rfind('@');
    return at != address.npos && at > 0 && at + 1 < address.size();
}

std::optional<LineAddress> in_brackets(std::string_view text) {
    text.remove_prefix(1);
    skip_scheme(text);
    const std::size_t end = std::min(text.size(), text.find_first_of("> \t"));
    const std::string_view address = text.substr(0, end);
    if (end == text.size() || text[end] != '>' || address.empty()) return std::nullopt;
    if (address.starts_with('/') && address.find('=') == address.npos) return std::nullopt;  // a tag, no X.400 address
    if (address.find('@') != address.npos && !has_local_part_and_domain(address)) return std::nullopt;
    std::string_view rest = text.substr(end + 1);
    skip(rest, kBehindAddress);
    return LineAddress{address, rest};
}

// Up to three words, each of which begins as names do, without what reasons are made of.
bool is_name(std::string_view text) {
    constexpr int most_words = 3;
    text = trimmed(text);
    if (text.empty() || text.find_first_of("0123456789:;#/=") != text.npos) return false;
    for (int words = 1; !text.empty(); ++words) {
        const char c = text.front();
        if (words > most_words || (c >= 'a' && c <= 'z') || c == '>') return false;
        text.remove_prefix(std::min(text.size(), text.find(' ')));
        text = trimmed(text);
    }
    return true;
}

bool is_time(std::string_view text) {
    const std::size_t digit = text.find_first_of("0123456789");
    constexpr std::size_t weekday = 5;  // "Mon, "
    return (digit == 0 || digit == weekday) && text.find(':') != text.npos &&
           text.find_first_not_of("0123456789/.:,+- AMPabcdefghijlmnoprstuvyDFJNOSTW") == text.npos;
}

}  // namespace

std::optional<LineAddress> address_at(std::string_view line) {
    skip(line, kBeforeAddress);
    if (line.starts_with('<')) return in_brackets(line);
    skip_scheme(line);
    const std::size_t end = std::min({line.size(), line.find_first_of(kEndsAddress), line.find(kDots)});
    std::string_view address = line.substr(0, end);
    address = address.substr(0, address.find_last_not_of('.') + 1);  // that of a sentence
    if (!has_local_part_and_domain(address)) return std::nullopt;
    std::string_view rest = line.substr(end);
    skip_link(rest);
    skip(rest, kBehindAddress);
    return LineAddress{address, rest};
}

std::optional<LineAddress> mailbox_at(std::string_view line) {
    const std::size_t opening = line.find('<');
    if (opening == line.npos || !is_name(line.substr(0, opening))) return std::nullopt;
    const auto found = in_brackets(line.substr(opening));
    if (!found || !has_local_part_and_domain(found->address) || !stands_alone(found->rest)) return std::nullopt;
    return found;
}

std::optional<LineAddress> name_at(std::string_view line) {
    constexpr std::string_view on = " on ";
    const std::size_t end = line.rfind(on);
    if (end == line.npos || !is_name(line.substr(0, end)) || !is_time(line.substr(end + on.size())))
        return std::nullopt;
    return LineAddress{trimmed(line.substr(0, end)), {}};
}

bool stands_alone(std::string_view rest) {
    return rest.empty() || std::any_of(kAfterAddress.begin(), kAfterAddress.end(),
                                       [&](std::string_view text) { return rest.starts_with(text); });
}

}  // namespace vel::command
