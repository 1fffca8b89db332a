// A quoted parameter value (RFC 822 section 3.3, quoted-string), read over folds.
#ifndef VEL_MIME_QUOTED_VALUE_H
#define VEL_MIME_QUOTED_VALUE_H

#include <string>

#include "vel/frame.h"

namespace vel {

class QuotedValue {
  public:
    // prefix: the parameter's text up to and including the opening quote.
    QuotedValue(VEL_FILE* file, const char* field, std::string prefix);

    // Reads from behind the opening quote through the closing one. Returns the position behind it, or
    // null with a log line for what is refused.
    char* read(char* position);

    // The parameter's whole text, both quotes kept and escapes resolved.
    const std::string& text() const { return text_; }

  private:
    bool next_line(char*& position);
    bool append(std::string_view characters, std::size_t claim);

    VEL_FILE* file_;
    const char* field_;
    std::string text_;
    std::size_t claimed_;
};

}  // namespace vel

#endif
