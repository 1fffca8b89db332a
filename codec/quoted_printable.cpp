// Quoted-printable from handle to handle.
#include <sys/stat.h>
#include <unistd.h>

#include <optional>

#include "codec/handle_io.h"
#include "codec/qp_decoder.h"
#include "codec/qp_encoder.h"
#include "frame/at_boundary.h"
#include "vel/codec.h"

namespace vel {
namespace {

// The bytes between a descriptor's offset and its file's end.
std::optional<int64_t> bytes_ahead(int fd) {
    struct stat status {};
    const off_t offset = ::lseek(fd, 0, SEEK_CUR);
    if (offset == -1 || ::fstat(fd, &status) != 0) return std::nullopt;
    return status.st_size - offset;
}

template <QpPolicy kPolicy>
int encode_file(int in, int out) {
    return at_boundary(-1, [=] {
        const auto count = bytes_ahead(in);
        QpEncoder<kPolicy> encoder;
        return count && Stretch(encoder, in, *count, out).run() ? 1 : -1;
    });
}

// The bytes in a file's buffer, filled when it is used up; none at the end of the file or on failure.
Bytes bytes_at_hand(VEL_FILE& file) {
    LineFile reader(&file);
    if (reader.in() == -1) return {};
    reader.step_back();
    return {file.cur, file.buf + file.cnt};
}

// Tells failure from the end of the file: a read that fails leaves the record as it was.
bool last_read_failed(const VEL_FILE& file) { return !file.cur || file.cur == file.buf + kBlock; }

void advance(VEL_FILE& file, std::size_t bytes) {
    file.cur += bytes;
    file.pos += static_cast<int32_t>(bytes);
}

bool encode_lines(VEL_FILE& in, LineFile output) {
    QpEncoder<kQpTextFile> encoder;
    std::array<uint8_t, encoder.room(kBlock)> text;
    const auto put = [&](Cursor end) {
        const auto length = static_cast<std::size_t>(end - text.data());
        return output.put({reinterpret_cast<const char*>(text.data()), length}) == 1;
    };
    for (Bytes bytes = bytes_at_hand(in); !bytes.empty(); bytes = bytes_at_hand(in)) {
        Cursor end = text.data();
        encoder.more(bytes, end);
        advance(in, bytes.size());
        if (!put(end)) return false;
    }
    Cursor end = text.data();
    return encoder.finish(last_read_failed(in), end) && put(end);
}

}  // namespace
}  // namespace vel

extern "C" {

int textToQp(int in, int out) { return vel::encode_file<vel::kQpText>(in, out); }

int binaryToQp(int in, int out) { return vel::encode_file<vel::kQpBinary>(in, out); }

int textToQp_v2(VEL_FILE* in, VEL_FILE* out) {
    if (!in || !out) return -1;
    return vel::encode_lines(*in, vel::LineFile(out)) ? 1 : -1;
}

// A failure inside an escape is 0, any other -1.
int fromqp(int in, int32_t count, int out) {
    if (count < 0) return 1;
    return vel::at_boundary(-1, [=] {
        vel::QpDecoder decoder;
        if (vel::Stretch(decoder, in, count, out).run()) return 1;
        return decoder.in_escape() ? 0 : -1;
    });
}

}  // extern "C"
