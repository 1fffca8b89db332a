// Kept: blanks between two encoded words stay (decode_words).
// Kept: a charset is that of the text when it is a prefix of its name, the empty one too (wanted).
#include "codec/encoded_word_decoder.h"

#include "codec/encoded_word_reader.h"
#include "frame/ascii.h"

namespace vel {
namespace {

bool wanted(const EncodedWord& word, const WordDecoding& decoding) {
    return decoding.every_charset || ascii::starts_with_ignoring_case(decoding.charset, word.charset);
}

}  // namespace

COwned<char> decode_words(std::string_view text, const WordDecoding& decoding) {
    COwned<char> result = copy_text(text);  // no word decodes to more bytes than it has
    EncodedWordReader reader(text);
    Cursor out = reinterpret_cast<Cursor>(result.get());
    while (const auto word = reader.next()) {
        put_text(out, word->before);
        if (wanted(*word, decoding)) {
            put_decoded_text(word->text, word->method, out);
        } else {
            put_text(out, word->whole);
        }
    }
    put_text(out, reader.rest());
    put_byte(out, 0);
    return result;
}

}  // namespace vel
