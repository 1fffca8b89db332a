// Reads the words and numbers of a date text, up to its NUL.
#ifndef VEL_RFC822_DATE_READER_H
#define VEL_RFC822_DATE_READER_H

#include <algorithm>
#include <string_view>

#include "frame/ascii.h"

namespace vel {

class DateReader {
  public:
    explicit DateReader(const char* text) : at_(text) {}

    const char* rest() const { return at_; }
    bool at_letter() const { return ascii::is_alpha(*at_); }
    bool at_digit() const { return ascii::is_digit(*at_); }

    void skip_blanks() {
        while (ascii::is_space(*at_)) ++at_;
    }
    void skip_blanks_and_punctuation() {
        while (ascii::is_space(*at_) || is_punctuation(*at_)) ++at_;
    }

    // Steps over the character when it is the next one.
    bool skip(char c) {
        if (*at_ != c) return false;
        ++at_;
        return true;
    }

    std::string_view letters() {
        const char* start = at_;
        while (at_letter()) ++at_;
        return {start, static_cast<std::size_t>(at_ - start)};
    }

    // All consecutive digits; 0 when there are none. A number that no date has stays one.
    int number() {
        int value = 0;
        for (; at_digit(); ++at_) value = std::min(value * 10 + (*at_ - '0'), kNumberMax);
        return value;
    }

  private:
    // Beyond every range that is checked, and ten times as much is still an int.
    static constexpr int kNumberMax = 100'000'000;

    static constexpr bool is_punctuation(char c) {
        return c > ' ' && c <= '~' && !ascii::is_alpha(c) && !ascii::is_digit(c);
    }

    const char* at_;
};

}  // namespace vel

#endif
