// The exported calls: one family works by the settings, the other by its argument.
//
// Kept: with a charset from the caller the encoding is always "B", and no blank is put before a comment.
#include "codec/encoded_word_decoder.h"
#include "codec/encoded_word_encoder.h"
#include "codec/encoded_word_reader.h"
#include "frame/at_boundary.h"
#include "frame/settings.h"
#include "vel/words.h"

namespace vel {
namespace {

constexpr Setting<32> kEncodes{"Options", "EnableRFC1522Encoding", "YES"};
constexpr Setting<64> kMethod{"Options", "RFC1522codingMethod", "Quoted-printable"};
constexpr Setting<64> kLocalCharset{"Gateway", "LocalCharSet", "US-ASCII"};
constexpr Setting<32> kDecodesAll{"Options", "Force1522Decoding", "NO"};

WordEncoding by_settings() {
    return {.method = is(read(kMethod), kMethod.fallback) ? WordMethod::q : WordMethod::b,
            .charset = read(kLocalCharset).data(),
            .before_comment = " (",
            .enabled = !is(read(kEncodes), "NO")};
}

using Encode = std::string (*)(std::string_view text, const WordEncoding& encoding);

char* encoded(const char* text, Encode encode) {
    if (!text) return nullptr;
    return at_boundary<char*>(nullptr, [=] { return copy_text(encode(text, by_settings())).release(); });
}

char* encoded(const char* text, Encode encode, const char* charset) {
    if (!text || !charset) return nullptr;
    return at_boundary<char*>(nullptr, [=] {
        const WordEncoding encoding{.method = WordMethod::b, .charset = charset, .before_comment = "("};
        return copy_text(encode(text, encoding)).release();
    });
}

constexpr WordDecoding kEveryCharset{.charset = {}, .every_charset = true};

COwned<char> decoded_by_settings(std::string_view value) {
    const bool may_hold_word = value.find("=?") != value.npos;
    if (!may_hold_word || is(read(kDecodesAll), "YES")) return decode_words(value, kEveryCharset);
    const SettingText<64> charset = read(kLocalCharset);
    return decode_words(value, {.charset = charset.data(), .every_charset = false});
}

}  // namespace
}  // namespace vel

extern "C" {

int IsStringAllAscii(const char* text) { return !text || vel::is_ascii(text); }

char* rfc1522encoding(const char* value) { return vel::encoded(value, vel::encode_value); }
char* rfc1522encoding2(const char* text) { return vel::encoded(text, vel::encode_text); }
char* rfc1522encode(const char* text) { return vel::encoded(text, vel::encode_words); }

char* rfc1522encoding_wmc(const char* value, const char* charset) {
    return vel::encoded(value, vel::encode_value, charset);
}
char* rfc1522encoding2_wmc(const char* text, const char* charset) {
    return vel::encoded(text, vel::encode_text, charset);
}
char* rfc1522encode_wmc(const char* text, const char* charset) {
    return vel::encoded(text, vel::encode_words, charset);
}

char* rfc1522decoding(const char* value) {
    if (!value || !*value) return nullptr;
    return vel::at_boundary<char*>(nullptr, [=] { return vel::decoded_by_settings(value).release(); });
}

char* rfc1522decoding_wmc(const char* value) {
    if (!value || !*value) return nullptr;
    return vel::at_boundary<char*>(nullptr, [=] { return vel::decode_words(value, vel::kEveryCharset).release(); });
}

char* Get1522Charset(const char* text) {
    if (!text) return nullptr;
    return vel::at_boundary<char*>(nullptr, [=]() -> char* {
        const auto charset = vel::first_charset(text);
        return charset ? vel::copy_text(*charset).release() : nullptr;
    });
}

}  // extern "C"
