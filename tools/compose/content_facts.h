// What counts of a file's content when a type and an encoding are picked for it.
#ifndef VEL_TOOLS_COMPOSE_CONTENT_FACTS_H
#define VEL_TOOLS_COMPOSE_CONTENT_FACTS_H

#include <cstdint>
#include <string>

namespace vel::command {

struct ContentFacts {
    bool is_text = true;  // UTF-8 without NUL; of other content nothing more is told
    bool is_ascii = true;
    bool has_bare_cr = false;
    bool has_bare_lf = false;
    bool ends_in_crlf = false;
    bool ends_within_from = false;   // the last line, in what may become "From " (the library's encoder gives up there)
    bool has_embedded_file = false;  // what the library's parser takes for one within a text
    bool has_delimiter = false;      // what may be one of the builders'
    uint64_t size = 0;
    uint64_t escapes = 0;       // bytes that quoted-printable escapes
    uint64_t longest_line = 0;  // without its line end

    // Lines that may stand as they are (RFC 2045 section 2.7); a body may be empty, else its last line ends.
    bool fit_7bit() const { return is_text && is_ascii && has_crlf_lines() && longest_line <= kLongestLine; }

    // Lines that quoted-printable keeps, while it is shorter than base64.
    bool fit_quoted_printable() const { return is_text && has_crlf_lines() && ends_in_crlf && escapes < size / 6; }

    // A parser finds in it what is none of the message's.
    bool mislead() const { return has_embedded_file || has_delimiter; }

    static constexpr uint64_t kLongestLine = 998;

  private:
    bool has_crlf_lines() const { return !has_bare_cr && !has_bare_lf && (ends_in_crlf || size == 0); }
};

// is_utf8 says whether a text has to be UTF-8; its other charsets have ASCII in them as it is. Throws Failure.
ContentFacts facts_of(const std::string& path, bool is_utf8 = true);

}  // namespace vel::command

#endif
