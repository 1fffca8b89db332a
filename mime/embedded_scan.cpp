#include "mime/embedded_scan.h"

#include "frame/ascii.h"

namespace vel {

std::optional<EmbeddedFile> EmbeddedScan::line(std::string_view text, uint32_t start, uint32_t end) {
    switch (state_) {
        case ScanState::text:
            if (ascii::starts_with_ignoring_case(text, "begin ")) {
                state_ = ScanState::in_uuencode;
            } else if (ascii::starts_with_ignoring_case(text, kBinhexBanner)) {
                state_ = ScanState::before_binhex_data;
            }
            start_ = start;
            return std::nullopt;
        case ScanState::in_uuencode:
            if (!ascii::starts_with_ignoring_case(text, "end\r\n")) return std::nullopt;
            state_ = ScanState::text;
            return EmbeddedFile{EmbeddedKind::uuencode, start_, end};
        case ScanState::before_binhex_data:
            if (text.starts_with(':')) state_ = ScanState::in_binhex_data;
            return std::nullopt;
        case ScanState::in_binhex_data:
            if (text.find(':') == std::string_view::npos) return std::nullopt;
            state_ = ScanState::text;
            return EmbeddedFile{EmbeddedKind::binhex, start_, end};
    }
    return std::nullopt;
}

}  // namespace vel
