// Encoded words: any value is decoded and encoded safely from a block of its size, with any charset and from any
// column, and what is encoded comes back.
#include <algorithm>

#include "codec/encoded_word_placing.h"
#include "frame/owned.h"
#include "fuzz/expect.h"
#include "vel/words.h"

namespace {

using Text = vel::COwned<char>;

// Blanks and line ends are moved by encoding.
std::string without_blanks(std::string text) {
    std::erase_if(text, [](char c) { return c == ' ' || c == '\r' || c == '\n'; });
    return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string input(data, data + size);
    const Text value = vel::copy_text(input);
    const Text charset = vel::copy_text(input.substr(0, size > 0 ? data[0] % 100U : 0));
    for (const auto decode : {rfc1522decoding, rfc1522decoding_wmc, Get1522Charset}) Text(decode(value.get()));
    for (const auto encode : {rfc1522encoding, rfc1522encoding2, rfc1522encode}) Text(encode(value.get()));
    for (const auto encode : {rfc1522encoding_wmc, rfc1522encoding2_wmc, rfc1522encode_wmc}) {
        Text(encode(value.get(), charset.get()));
    }
    int column = size > 1 ? data[1] - 128 : 0;
    for (const int method : {0, 1}) Text(prcoessEncodedWord(&column, charset.get(), value.get(), method));

    const std::string text = value.get();
    if (text.empty() || text.find('?') != text.npos) return 0;  // it may hold what looks like a word
    const Text encoded(rfc1522encode_wmc(text.c_str(), "utf-8"));
    const Text decoded(rfc1522decoding_wmc(encoded.get()));
    expect_same(without_blanks(decoded.get()), without_blanks(text));
    return 0;
}
