// Kept: under the lenient grammar the first character behind "=" never ends a value.
// Kept: a parameter's name keeps the blanks before "=", since blanks are token characters here.
#include "mime/parameters.h"

#include <cstring>
#include <string>
#include <string_view>

#include "frame/chain.h"
#include "frame/settings.h"
#include "mime/field_error.h"
#include "mime/field_text.h"
#include "mime/quoted_value.h"
#include "mime/token.h"

namespace vel {
namespace {

// Three characters are significant: the fourth byte is the NUL.
constexpr Setting<4> kStrictParsing{"Options", "StrictMimeParsing", "YES"};

std::string without_spaces(std::string_view text) {
    std::string result(text);
    std::erase(result, ' ');
    return result;
}

class ParameterParser {
  public:
    ParameterParser(VEL_FILE* file, const ParameterRules& rules, ms*& parameters)
        : file_(file), rules_(rules), chain_(parameters) {}

    int parse(char* position) {
        at_ = position;
        Outcome outcome = Outcome::more;
        while (outcome == Outcome::more) {
            outcome = separator();
            if (outcome == Outcome::more) outcome = parameter();
        }
        return outcome == Outcome::done ? 0 : -1;
    }

  private:
    enum class Outcome { more, done, refused };

    bool at_field_end() const { return *at_ == '\0' || at_line_end(at_); }

    // Passes blanks, comments and folds; the field may end there.
    Outcome pass(char* from) {
        at_ = EatCommentsAndSpace(file_, from);
        if (!at_) {
            bad_continuation(rules_.field);
            return Outcome::refused;
        }
        return at_field_end() ? Outcome::done : Outcome::more;
    }

    // ";", any number of them, before a parameter.
    Outcome separator() {
        if (*at_ == '\0') return Outcome::done;
        Outcome outcome = pass(at_);
        if (outcome != Outcome::more) return outcome;
        if (*at_ != ';') {
            field_invalid_because(rules_.field, "Missing parm separator.");
            return Outcome::refused;
        }
        while (outcome == Outcome::more && *at_ == ';') outcome = pass(at_ + 1);
        return outcome;
    }

    Outcome parameter() {
        char* equals = std::strchr(at_, '=');
        if (!equals || !IsValidToken(std::string(at_, equals).c_str())) return refuse();
        if (!is(read(kStrictParsing), "YES")) return lenient_value(equals);
        const char* quote = opening_quote(equals);
        return quote ? quoted_value(quote) : plain_value(equals);
    }

    // Where a quoted value begins, or null. In Content-Type a quote anywhere before the next ";" does.
    const char* opening_quote(const char* equals) const {
        const char* at = rules_.content_type ? std::strpbrk(equals, "\";") : equals + 1;
        return at && *at == '"' ? at : nullptr;
    }

    Outcome quoted_value(const char* quote) {
        const std::string_view prefix(at_, static_cast<std::size_t>(quote + 1 - at_));
        QuotedValue value(file_, rules_.field, rules_.content_type ? without_spaces(prefix) : std::string(prefix));
        at_ = value.read(at_ + prefix.size());
        if (!at_) return Outcome::refused;
        add(value.text());
        return Outcome::more;
    }

    Outcome plain_value(const char* equals) {
        const std::size_t length = std::strcspn(equals + 1, "; \t\r\n");
        const std::string value(equals + 1, length);
        if (!(rules_.content_type ? IsValidTokenValue(value.c_str()) : IsValidToken(value.c_str()))) return refuse();
        take_until(equals + 1 + length);
        return Outcome::more;
    }

    Outcome lenient_value(const char* equals) {
        const char* end = equals + 1;
        if (*end) ++end;
        while (*end && !((*end == ';' || *end == '\r' || *end == '\n') && end[-1] != '\\')) ++end;
        take_until(end);
        // A blank value has swallowed the CR: the field ends at the LF that is left.
        return std::string_view(equals, static_cast<std::size_t>(end - equals)) == "=\r" ? Outcome::done
                                                                                         : Outcome::more;
    }

    // Adds the text from the parameter's name on as it stands.
    void take_until(const char* end) {
        const auto length = static_cast<std::size_t>(end - at_);
        add({at_, length});
        at_ += length;
    }

    void add(std::string_view text) {
        COwned<char> node = copy_text(text);
        const char* stored = node.get();
        chain_.append(std::move(node));
        log_text(kLogNotice, stored);
    }

    Outcome refuse() {
        invalid_parameter(rules_.field, at_);
        return Outcome::refused;
    }

    VEL_FILE* file_;
    const ParameterRules& rules_;
    ChainTail chain_;
    char* at_ = nullptr;
};

}  // namespace

int parse_parameters(VEL_FILE* file, char* position, const ParameterRules& rules, ms*& parameters) {
    return ParameterParser(file, rules, parameters).parse(position);
}

}  // namespace vel
