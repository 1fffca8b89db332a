// Kept: the banner counts in its exact letters and with any version; parsers that look for it in a message ignore
//       case and want the version (match_banner).
#include "codec/binhex_start.h"

namespace vel {
namespace {

// Takes everything up to and including a character off a block. Returns whether it is there.
bool pass(Bytes& block, uint8_t character) {
    const void* found = block.empty() ? nullptr : std::memchr(block.data(), character, block.size());
    const auto passed = found ? static_cast<const uint8_t*>(found) + 1 - block.data() : std::ptrdiff_t{0};
    block = block.subspan(found ? static_cast<std::size_t>(passed) : block.size());
    return found != nullptr;
}

}  // namespace

// No character but the first one begins the banner, so a mismatch leaves one character of it matched, or none.
void BinhexStart::match_banner(Bytes& block) {
    static_assert(kBinhexBannerStart.find(kBinhexBannerStart[0], 1) == std::string_view::npos);
    const auto first = static_cast<uint8_t>(kBinhexBannerStart[0]);
    while (!block.empty() && matched_ < kBinhexBannerStart.size()) {
        if (matched_ == 0) {
            matched_ = pass(block, first) ? 1 : 0;
        } else {
            const bool goes_on = block.front() == static_cast<uint8_t>(kBinhexBannerStart[matched_]);
            matched_ = goes_on ? matched_ + 1 : block.front() == first ? 1 : 0;
            block = block.subspan(1);
        }
    }
}

bool BinhexStart::find(Bytes& block) {
    match_banner(block);
    return matched_ == kBinhexBannerStart.size() && pass(block, kBinhexColon);
}

}  // namespace vel
