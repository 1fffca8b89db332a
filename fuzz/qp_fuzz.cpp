// Quoted-printable: pieces make no difference, and what is encoded comes back, but for a CR at the end
// of a text.
#include "codec/qp_decoder.h"
#include "codec/qp_encoder.h"
#include "fuzz/fed.h"

using namespace vel;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const Bytes bytes(data, size);
    const size_t piece = size > 0 ? data[0] % 80 + 1U : 1;
    fuzz::expect_same(fuzz::fed<QpDecoder>(bytes, piece), fuzz::fed<QpDecoder>(bytes, size + 1));
    const std::string text = fuzz::fed<QpEncoder<kQpTextFile>>(bytes, piece);
    fuzz::expect_same(text, fuzz::fed<QpEncoder<kQpTextFile>>(bytes, size + 1));
    fuzz::fed<QpEncoder<kQpText>>(bytes, piece);
    std::string whole(bytes.begin(), bytes.end());
    fuzz::expect_same(fuzz::fed<QpDecoder>(bytes_of(fuzz::fed<QpEncoder<kQpBinary>>(bytes, piece)), 999), whole);
    if (whole.ends_with('\r')) whole.pop_back();
    fuzz::expect_same(fuzz::fed<QpDecoder>(bytes_of(text), 999), whole);
    return 0;
}
