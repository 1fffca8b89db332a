// Finds uuencoded and BinHex files inside the lines of a text body.
#ifndef VEL_MIME_EMBEDDED_SCAN_H
#define VEL_MIME_EMBEDDED_SCAN_H

#include <cstdint>
#include <optional>
#include <string_view>

#include "frame/ascii.h"

namespace vel {

constexpr std::string_view kBinhexBanner = "(This file must be converted with binhex 4.0)";

enum class EmbeddedKind { uuencode, binhex };

// One embedded file, from its first line to behind its last.
struct EmbeddedFile {
    EmbeddedKind kind;
    uint32_t start;
    uint32_t end;
};

enum class ScanState { text, in_uuencode, before_binhex_data, in_binhex_data };

// Whether a line can mean anything in a state, by its first character; any other may be left out. For both
// sets of rules: a line that begins a uuencoded file begins with "b", with nothing before it.
inline bool may_matter(ScanState state, std::string_view line) {
    const char first = line.empty() ? '\0' : ascii::to_lower(line.front());
    switch (state) {
        case ScanState::text: return first == 'b' || first == kBinhexBanner.front();
        case ScanState::in_uuencode: return first == 'e';
        case ScanState::before_binhex_data: return first == ':';
        case ScanState::in_binhex_data: break;
    }
    return true;
}

// The rules for the bodies of MIME messages. Those for flat messages differ and stand with the flat
// parser.
class EmbeddedScan {
  public:
    bool wants(std::string_view text) const { return may_matter(state_, text); }

    // Takes the next line, which stands at [start, end) in the file; answers the file that it ends.
    std::optional<EmbeddedFile> line(std::string_view text, uint32_t start, uint32_t end);

  private:
    ScanState state_ = ScanState::text;
    uint32_t start_ = 0;
};

}  // namespace vel

#endif
