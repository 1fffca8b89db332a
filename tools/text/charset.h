// From other charsets to UTF-8, by the C library's converters.
#ifndef VEL_TOOLS_TEXT_CHARSET_H
#define VEL_TOOLS_TEXT_CHARSET_H

#include <iconv.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

namespace vel::command {

// The bytes in UTF-8; nothing when the charset is not known or they are no text of it.
std::optional<std::string> to_utf8(std::string_view bytes, std::string_view charset);

// A text that comes in pieces, of any size. Bytes that are no text of the charset pass as they stand; so does
// all of a charset that is not known.
class Utf8Converter {
  public:
    explicit Utf8Converter(std::string_view charset);

    // What these convert they append.
    void more(std::string_view bytes, std::string& converted);
    void finish(std::string& converted);

  private:
    friend std::optional<std::string> to_utf8(std::string_view, std::string_view);

    // Where a conversion ended: with the bytes, within a character, or before bytes that are no character.
    enum class Stop { end, within, before_other };
    Stop convert(std::string_view& bytes, std::string& converted);
    void end_text(std::string& converted);

    struct Closed {
        void operator()(iconv_t converter) const { ::iconv_close(converter); }
    };
    std::unique_ptr<std::remove_pointer_t<iconv_t>, Closed> converter_;  // none: nothing is to be converted
    std::string begun_;                                                  // a character that goes on in the next piece
};

}  // namespace vel::command

#endif
