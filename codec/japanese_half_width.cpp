// Kept: a NUL behind a half-width katakana is taken for the end, and is lost (full_width).
#include "codec/japanese_half_width.h"

namespace vel {
namespace {

constexpr uint8_t kVoicedMark = 0xDE;
constexpr uint8_t kSemiVoicedMark = 0xDF;
constexpr uint8_t kU = 0xB3;
constexpr DoubleByte kVu = {0x83, 0x94};  // stands behind the other katakana, not behind its U

constexpr bool is_ha_to_ho(uint8_t katakana) { return katakana >= 0xCA && katakana <= 0xCE; }
constexpr bool is_ka_to_to(uint8_t katakana) { return katakana >= 0xB6 && katakana <= 0xC4; }

// Behind a full-width katakana stands its voiced form, and behind that the semi-voiced one.
constexpr DoubleByte voiced(DoubleByte plain, uint8_t places) {
    return {plain.first, static_cast<uint8_t>(plain.second + places)};
}

}  // namespace

FullWidth full_width(uint8_t katakana, uint8_t next) {
    const DoubleByte plain = maptable[katakana - 0xA1U];
    if (next == kVoicedMark && katakana == kU) return {kVu, true};
    if (next == kVoicedMark && (is_ka_to_to(katakana) || is_ha_to_ho(katakana))) return {voiced(plain, 1), true};
    if (next == kSemiVoicedMark && is_ha_to_ho(katakana)) return {voiced(plain, 2), true};
    return {plain, next == 0};
}

}  // namespace vel
