#include "tools/settings/zone_rule.h"

#include <algorithm>

namespace vel::command {
namespace {

constexpr bool is_digit(char c) { return c >= '0' && c <= '9'; }
constexpr bool is_letter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
constexpr bool is_in_brackets(char c) { return is_letter(c) || is_digit(c) || c == '+' || c == '-'; }

constexpr int kMostHours = 167;  // of a time of change (RFC 8536 section 3.3.1)
constexpr int kMostDays = 365;
constexpr std::size_t kShortestName = 3;

// Takes a rule apart from the left; each function answers whether what it is named for stood there.
class Reader {
  public:
    explicit Reader(std::string_view text) : rest_(text) {}

    // tz = name offset [name [offset] ["," change "," change]]
    bool zone() {
        if (!name() || !offset()) return false;
        if (rest_.empty()) return true;
        if (!name()) return false;
        if (!rest_.empty() && rest_.front() != ',' && !offset()) return false;
        return rest_.empty() || (sign(',') && change() && sign(',') && change() && rest_.empty());
    }

  private:
    bool sign(char c) {
        const bool there = rest_.starts_with(c);
        rest_.remove_prefix(there ? 1 : 0);
        return there;
    }

    bool number(int most) {
        int value = 0;
        std::size_t digits = 0;
        for (; digits < rest_.size() && is_digit(rest_[digits]) && value <= most; ++digits) {
            value = value * 10 + (rest_[digits] - '0');
        }
        rest_.remove_prefix(digits);
        return digits > 0 && value <= most;
    }

    // name = 3*letter / "<" 3*(letter / digit / "+" / "-") ">"
    bool name() {
        const bool brackets = sign('<');
        const auto end = std::find_if_not(rest_.begin(), rest_.end(), brackets ? is_in_brackets : is_letter);
        const auto length = static_cast<std::size_t>(end - rest_.begin());
        rest_.remove_prefix(length);
        return length >= kShortestName && (!brackets || sign('>'));
    }

    // offset = ["+" / "-"] hours [":" minutes [":" seconds]]
    bool offset() {
        if (!sign('+')) sign('-');
        if (!number(kMostHours)) return false;
        return !sign(':') || (number(59) && (!sign(':') || number(59)));
    }

    // change = ("J" day / day / "M" month "." week "." day) ["/" time]
    bool change() {
        if (sign('M')) {
            if (!number(12) || !sign('.') || !number(5) || !sign('.') || !number(6)) return false;
        } else if (sign('J'); !number(kMostDays)) {
            return false;
        }
        return !sign('/') || offset();
    }

    std::string_view rest_;
};

}  // namespace

bool is_zone_rule(std::string_view text) { return Reader(text).zone(); }

}  // namespace vel::command
