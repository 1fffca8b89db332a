// Japanese text: pieces make no difference, and what was made JIS comes back as what makes the same JIS.
#include "fuzz/expect.h"
#include "tests/codec/fed.h"
#include "tests/codec/japanese_codecs.h"

using vel::JisDecoder;
using vel::JisEncoder;
using vel::test::fed_text;
using vel::test::MarkingEncoder;
using vel::test::RepairingDecoder;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string text(data, data + size);
    const size_t piece = size > 0 ? data[0] % 8 + 1U : 1;
    expect_same(fed_text<JisDecoder>(text, piece), fed_text<JisDecoder>(text, size + 1));
    expect_same(fed_text<RepairingDecoder>(text, piece), fed_text<RepairingDecoder>(text, size + 1));
    expect_same(fed_text<MarkingEncoder>(text, piece), fed_text<MarkingEncoder>(text, size + 1));
    std::erase_if(text, [](char c) { return c == '\x1B' || c == '\r'; });
    text.insert(text.begin(), 'a');
    const std::string jis = fed_text<JisEncoder>(text, piece);
    expect_same(fed_text<JisEncoder>(fed_text<JisDecoder>(jis, piece), size + 1), jis);
    return 0;
}
