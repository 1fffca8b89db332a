// Whether a file may go as it is.
//
// Kept: a file that cannot be opened may, and so may what stands in front of an error.
#include "notify/ascii_file.h"

#include <algorithm>

#include "build/texts.h"
#include "frame/access.h"
#include "frame/log.h"
#include "frame/open_handle.h"
#include "vel/notify.h"

namespace vel {
namespace {

// Nothing when the file cannot be opened.
std::optional<bool> is_ascii(const char* path) {
    constexpr uint32_t kPiece = 1024;
    const OpenHandle file(CreateFile(path, kForReading));
    if (!file) return std::nullopt;
    char piece[kPiece];
    uint32_t got = 0;
    while (ReadFile(file.get(), piece, kPiece, &got, nullptr) && got > 0) {
        if (std::any_of(piece, piece + got, [](char c) { return (c & 0x80) != 0; })) return false;
    }
    return true;
}

}  // namespace

std::optional<bool> tell_whether_ascii(const char* path) {
    const std::optional<bool> found = is_ascii(path);
    if (found) {
        log_text(kLogNotice, *found ? "file is ASCII" : "IsFileAscii: file contains binary data - using base64");
    } else {
        log_line(kLogError, "IsFileAscii: failed to open file %.256s", or_empty(path));
    }
    return found;
}

}  // namespace vel

extern "C" int IsFileAscii(const char* path) { return vel::tell_whether_ascii(path).value_or(true); }
