// Fields of a header block (RFC 822 section 3.2). Departures from the RFC:
//  - a blank before the colon ends the name, and the line is no field;
//  - only the fields that the table marks are unfolded, the others keep their line breaks;
//  - the name of a field that is not known is stored in lower case but for its first letter.
#include "rfc822/header_field.h"

#include <algorithm>
#include <array>

#include "frame/ascii.h"
#include "frame/at_boundary.h"
#include "frame/log.h"

namespace vel {
namespace {

// More than any known keyword has: a longer one is unknown, whatever follows.
constexpr std::size_t kKeywordMax = 32;

// Kept: a blank too, so that "Subject :" is no field.
constexpr bool ends_name(char c) { return c == ' ' || c == '\t' || c == '\n' || c == ':'; }

struct Field {
    std::string_view name;
    bool colon;
    std::string_view value;
};

Field split(std::string_view text) {
    const auto end = std::find_if(text.begin(), text.end(), ends_name);
    const auto length = static_cast<std::size_t>(end - text.begin());
    const bool colon = end != text.end() && *end == ':';
    const auto value = std::find_if_not(end + (colon ? 1 : 0), text.end(), ascii::is_space);
    return {text.substr(0, length), colon, text.substr(static_cast<std::size_t>(value - text.begin()))};
}

const cmd_table* row_of(const Field& field) {
    std::array<char, kKeywordMax> keyword;
    const std::size_t known = std::min(field.name.size(), keyword.size() - 1);
    std::transform(field.name.begin(), field.name.begin() + known, keyword.begin(), ascii::to_lower);
    keyword[known] = field.colon ? ':' : ' ';
    return field_row({keyword.data(), known + 1});
}

// Copies a value; each line break with the white space behind it becomes one blank.
COwned<char> unfold(std::string_view value) {
    COwned<char> result = copy_text(value);
    char* to = result.get();
    for (auto at = value.begin(); at != value.end();) {
        const bool crlf = *at == '\r' && at + 1 != value.end() && at[1] == '\n';
        if (crlf || *at == '\n') {
            *to++ = ' ';
            at = std::find_if_not(at, value.end(), ascii::is_space);
        } else {
            *to++ = *at++;
        }
    }
    *to = '\0';
    return result;
}

// "Keyword: value". Kept: of the name only the first letter is a capital.
COwned<char> whole_line(const Field& field) {
    constexpr std::string_view kBetween = ": ";
    const std::size_t size = field.name.size() + kBetween.size() + field.value.size() + 1;
    COwned<char> line(static_cast<char*>(std::malloc(size)));
    if (!line) throw std::bad_alloc();
    char* to = std::transform(field.name.begin(), field.name.end(), line.get(), ascii::to_lower);
    to = std::copy(kBetween.begin(), kBetween.end(), to);
    to = std::copy(field.value.begin(), field.value.end(), to);
    *to = '\0';
    *line = ascii::to_upper(*line);
    return line;
}

COwned<char> stored_value(const Field& field, const cmd_table& row) {
    if (row.code == header_code::other || row.code == header_code::recvdate) return whole_line(field);
    return row.flags & kUnfold ? unfold(field.value) : copy_text(field.value);
}

}  // namespace

int store_field(std::string_view text, HeaderRecord& record) noexcept {
    const Field field = split(text);
    const cmd_table* row = row_of(field);
    if (!row) return header_code::none;
    return at_boundary(
        static_cast<int>(header_code::none), [] { log_line_as("ParseLine", kLogError, "malloc failed."); },
        [&] {
            record.store(row->code, stored_value(field, *row));
            return static_cast<int>(row->code);
        });
}

}  // namespace vel

extern "C" int ParseLine(const char* field, addr822* header) {
    if (!field || !header) return vel::header_code::none;
    vel::HeaderRecord record(*header);
    return vel::store_field(field, record);
}
