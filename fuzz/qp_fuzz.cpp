// Quoted-printable: pieces make no difference, and what is encoded comes back, but for a CR at the end
// of a text.
#include "codec/qp_decoder.h"
#include "codec/qp_encoder.h"
#include "fuzz/expect.h"
#include "tests/codec/fed.h"

using vel::kQpBinary;
using vel::kQpText;
using vel::kQpTextFile;
using vel::QpDecoder;
using vel::QpEncoder;
using vel::test::fed_text;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string bytes(data, data + size);
    const size_t piece = size > 0 ? data[0] % 80 + 1U : 1;
    expect_same(fed_text<QpDecoder>(bytes, piece), fed_text<QpDecoder>(bytes, size + 1));
    expect_same(fed_text<QpEncoder<kQpText>>(bytes, piece), fed_text<QpEncoder<kQpText>>(bytes, size + 1));
    const std::string text = fed_text<QpEncoder<kQpTextFile>>(bytes, piece);
    const std::string binary = fed_text<QpEncoder<kQpBinary>>(bytes, piece);
    expect_same(fed_text<QpDecoder>(binary, 999), bytes);
    if (bytes.ends_with('\r')) bytes.pop_back();
    expect_same(fed_text<QpDecoder>(text, 999), bytes);
    return 0;
}
