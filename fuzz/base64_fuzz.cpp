// Base64: pieces make no difference, and what is encoded comes back.
#include "codec/base64_decoder.h"
#include "codec/base64_encoder.h"
#include "fuzz/fed.h"

using namespace vel;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const Bytes bytes(data, size);
    const size_t piece = size > 0 ? data[0] % 80 + 1U : 1;
    fuzz::expect_same(fuzz::fed<Base64Decoder>(bytes, piece), fuzz::fed<Base64Decoder>(bytes, size + 1));
    const std::string text = fuzz::fed<Base64Encoder>(bytes, piece);
    fuzz::expect_same(text, fuzz::fed<Base64Encoder>(bytes, size + 1));
    fuzz::expect_same(fuzz::fed<Base64Decoder>(bytes_of(text), 999), std::string(bytes.begin(), bytes.end()));
    return 0;
}
