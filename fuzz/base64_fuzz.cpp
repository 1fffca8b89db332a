// Base64: pieces make no difference, and what is encoded comes back.
#include "codec/base64_decoder.h"
#include "codec/base64_encoder.h"
#include "fuzz/expect.h"
#include "tests/codec/fed.h"

using vel::Base64Decoder;
using vel::Base64Encoder;
using vel::test::fed_text;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string bytes(data, data + size);
    const size_t piece = size > 0 ? data[0] % 80 + 1U : 1;
    expect_same(fed_text<Base64Decoder>(bytes, piece), fed_text<Base64Decoder>(bytes, size + 1));
    const std::string text = fed_text<Base64Encoder>(bytes, piece);
    expect_same(text, fed_text<Base64Encoder>(bytes, size + 1));
    expect_same(fed_text<Base64Decoder>(text, 999), bytes);
    return 0;
}
