// Bodies as files, decoded (RFC 2045 section 6).
//
// Kept: a body that does not decode is delivered as it stands.
#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <string_view>

#include "frame/access.h"
#include "frame/ascii.h"
#include "frame/at_boundary.h"
#include "frame/line_file.h"
#include "frame/new_file.h"
#include "frame/open_handle.h"
#include "mime/binhex_body.h"
#include "mime/record.h"
#include "vel/codec.h"

namespace vel {
namespace {

constexpr const char* kPrefix = "MIME";
constexpr std::size_t kPiece = 65536;  // bytes copied at once

// Kept: only the first "U" counts, or the first "u" where there is no "U".
bool names_uuencode(const char* encoding) {
    if (!encoding) return false;
    const char* first = std::strchr(encoding, 'U');
    if (!first) first = std::strchr(encoding, 'u');
    return first && ascii::starts_with_ignoring_case(first, "uue");
}

// The body of one entity on its way into a file.
class BodyExtraction {
  public:
    BodyExtraction(MimeMsg& record, bool raw, int input) : record_(record), raw_(raw), input_(input) {}

    char* run() {
        if (!raw_) {
            if (char* path = decoded()) return path;
        }
        return copied();
    }

  private:
    using Decoder = int (*)(int in, int32_t count, int out);

    char* decoded() {
        const char* encoding = record_.contentTransferEncoding;
        if (same_token(encoding, "base64")) return decoded_by(from64);
        if (same_token(encoding, "quoted-printable")) return decoded_by(fromqp);
        if (names_uuencode(encoding)) return uudecoded();
        if (same_token(record_.contentSubtype, "mac-binhex40")) return decode_binhex_body(record_, input_).release();
        return nullptr;
    }

    char* decoded_by(Decoder decode) {
        std::optional<NewFile> output = NewFile::create(kPrefix, NewFile::Writes::direct);
        if (!output || !go_to(record_.bodyStart)) return nullptr;
        return decode(input_, length(), output->handle()) == 1 ? output->keep() : nullptr;
    }

    // The decoder reads lines, so it has an open file of its own.
    char* uudecoded() {
        std::optional<NewFile> output = NewFile::create(kPrefix, NewFile::Writes::direct);
        if (!output) return nullptr;
        if (length() == 0) return output->keep();
        clear_text(record_.trueName);
        const OpenHandle input(fileopen(record_.fileName, kForReading, kUnbuffered));
        if (!input || setfpos(input.get(), static_cast<int32_t>(record_.bodyStart)) == -1) return nullptr;
        const int result = uudecode(input.get(), length(), output->handle(), &record_.trueName);
        char* path = result == 1 ? output->keep() : nullptr;
        if (!path) clear_text(record_.trueName);
        return path;
    }

    char* copied() {
        const uint32_t start = raw_ ? record_.headerStart : record_.bodyStart;
        std::optional<NewFile> output = NewFile::create(kPrefix, NewFile::Writes::direct);
        if (!output || !go_to(start)) return nullptr;
        return copy(record_.bodyEnd > start ? record_.bodyEnd - start : 0, output->handle()) ? output->keep() : nullptr;
    }

    // Copies from the input's offset; the end of the file ends the copy.
    bool copy(uint32_t left, int output) {
        std::array<char, kPiece> piece;
        while (left > 0) {
            const ssize_t got = read_again(input_, piece.data(), std::min<std::size_t>(left, piece.size()));
            if (got <= 0) return got == 0;
            if (!write_all(output, piece.data(), static_cast<std::size_t>(got))) return false;
            left -= static_cast<uint32_t>(got);
        }
        return true;
    }

    bool go_to(uint32_t offset) {
        return SetFilePointer(input_, static_cast<int32_t>(offset), nullptr, SEEK_SET) != -1;
    }

    int32_t length() const { return static_cast<int32_t>(record_.bodyEnd - record_.bodyStart); }

    MimeMsg& record_;
    const bool raw_;
    const int input_;
};

}  // namespace
}  // namespace vel

extern "C" char* MimeGetBody(MimeMsg* record, int raw, int fd) {
    if (!record || record->bodyEnd < record->bodyStart) return nullptr;
    return vel::at_boundary<char*>(nullptr, [=]() -> char* {
        const vel::OpenHandle own(fd == -1 ? CreateFile(record->fileName, vel::kForReading) : -1);
        const int input = fd == -1 ? own.get() : fd;
        if (input == -1) return nullptr;
        return vel::BodyExtraction(*record, raw != 0, input).run();
    });
}
