#include "tools/compose/delivery_wishes.h"

#include <algorithm>
#include <array>

#include "tools/io/exit_code.h"
#include "tools/text/ascii.h"
#include "vel/envelope.h"

namespace vel::command {
namespace {

constexpr std::size_t kLongestEnvelopeId = 100;  // RFC 3461 section 4.4
constexpr std::size_t kLongestOriginal = 500;    // section 4.2

struct Wish {
    std::string_view name;
    int32_t bit;
};

constexpr std::array kNotify{Wish{"never", VEL_NOTIFY_NEVER}, Wish{"success", VEL_NOTIFY_SUCCESS},
                             Wish{"failure", VEL_NOTIFY_FAILURE}, Wish{"delay", VEL_NOTIFY_DELAY}};
constexpr std::array kReturn{Wish{"full", VEL_RET_FULL}, Wish{"hdrs", VEL_RET_HDRS}};

[[noreturn]] void refuse(const std::string& option, const std::string& value, const char* why) {
    throw Failure(Exit::usage, option + ": \"" + value + "\" " + why);
}

template <class Wishes>
int32_t bit_of(const Wishes& wishes, std::string_view name) {
    const auto row =
        std::find_if(wishes.begin(), wishes.end(), [&](const Wish& wish) { return same(wish.name, name); });
    return row == wishes.end() ? 0 : row->bit;
}

constexpr bool is_visible(char c) { return c > ' ' && c <= '~'; }

constexpr bool is_upper_hex(char c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F'); }

// xtext = *( xchar / "+" 2HEXDIG ), in capitals (RFC 3461 section 4)
bool is_xtext(std::string_view text) {
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (!is_visible(text[at]) || text[at] == '=') return false;
        if (text[at] != '+') continue;
        if (text.size() - at < 3 || !is_upper_hex(text[at + 1]) || !is_upper_hex(text[at + 2])) return false;
        at += 2;
    }
    return true;
}

// original-recipient-address = addr-type ";" xtext (RFC 3461 section 4.2)
std::string original_recipient(const std::string& given) {
    const bool has_type = given.find(';') != given.npos;
    std::string original = std::string(has_type ? "" : "rfc822;").append(given);
    const std::size_t semicolon = original.find(';');
    const std::string_view type = std::string_view(original).substr(0, semicolon);
    const std::string_view address = std::string_view(original).substr(semicolon + 1);
    const bool is_type = !type.empty() && std::all_of(type.begin(), type.end(), [](char c) {
        return is_visible(c) && std::string_view("()<>@,:\\\"/[]?.=").find(c) == std::string_view::npos;
    });
    if (!is_type || address.empty() || !is_xtext(address)) refuse("--orcpt", given, "is no TYPE;ADDRESS in xtext");
    if (original.size() > kLongestOriginal) refuse("--orcpt", given, "is longer than 500 characters");
    return original;
}

}  // namespace

int32_t notify_bits(const std::string& list) {
    int32_t bits = 0;
    for (std::string_view rest = list; !rest.empty();) {
        const std::size_t comma = rest.find(',');
        const int32_t bit = bit_of(kNotify, rest.substr(0, comma));
        if (bit == 0 || comma == rest.size() - 1) refuse("--notify", list, "is not success,failure,delay or never");
        bits |= bit;
        rest.remove_prefix(comma == rest.npos ? rest.size() : comma + 1);
    }
    if ((bits & VEL_NOTIFY_NEVER) && bits != VEL_NOTIFY_NEVER) refuse("--notify", list, "has never beside others");
    return bits;
}

int32_t return_type(const std::string& word) {
    const int32_t type = bit_of(kReturn, word);
    if (type == 0 && !word.empty()) refuse("--ret", word, "is not full or hdrs");
    return type;
}

void expect_envelope_id(const std::string& id) {
    if (!is_xtext(id)) refuse("--envid", id, "is no xtext");
    if (id.size() > kLongestEnvelopeId) refuse("--envid", id, "is longer than 100 characters");
}

std::vector<std::string> original_recipients(const std::vector<std::string>& given,
                                             const std::vector<std::string>& recipients) {
    std::vector<std::string> originals(recipients.size());
    std::size_t next = 0;
    for (const std::string& text : given) {
        const std::size_t equals = text.rfind('=');
        std::size_t place = next;
        if (equals == text.npos) {
            ++next;
        } else {
            const auto found = std::find(recipients.begin(), recipients.end(), text.substr(0, equals));
            place = static_cast<std::size_t>(found - recipients.begin());
        }
        if (place >= recipients.size()) refuse("--orcpt", text, "belongs to no recipient");
        if (!originals[place].empty()) refuse("--orcpt", text, "is the second one of its recipient");
        originals[place] = original_recipient(equals == text.npos ? text : text.substr(equals + 1));
    }
    return originals;
}

}  // namespace vel::command
