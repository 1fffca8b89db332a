// Uuencode: any lines are safe, pieces make no difference, and what is encoded comes back.
#include "codec/uu_decoder.h"
#include "codec/uu_encoder.h"
#include "fuzz/expect.h"
#include "tests/codec/fed.h"
#include "vel/codec.h"

using vel::Cursor;
using vel::UuDecoder;
using vel::UuEncoder;
using vel::test::append_written;
using vel::test::fed_text;

namespace {

// Decodes lines of at most so many bytes, each from a block of its size, until one is no data.
std::string decoded(std::string_view text, size_t longest) {
    UuDecoder decoder;
    std::string bytes;
    for (auto kind = UuDecoder::Line::data; kind == UuDecoder::Line::data && !text.empty();) {
        const size_t length = std::min({text.find('\n'), text.size() - 1, longest - 1}) + 1;
        const std::vector<char> line(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(length));
        const auto take = [&](Cursor& end) { kind = decoder.take({line.data(), line.size()}, end); };
        append_written(bytes, UuDecoder::kRoom, take);
        text.remove_prefix(line.size());
    }
    return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string input(data, data + size);
    const size_t piece = size > 0 ? data[0] % 80 + 1U : 1;
    const std::vector<char> line(input.c_str(), input.c_str() + size + 1);
    char name[256];
    IsuuencodeBegin(line.data(), name);
    decoded(input, piece);
    const std::string text = fed_text<UuEncoder>(input, piece);
    expect_same(text, fed_text<UuEncoder>(input, size + 1));
    expect_same(decoded(text, 1024), input);
    return 0;
}
