#include "tools/types/type_row.h"

#include <algorithm>
#include <cstring>

#include "tools/text/ascii.h"

namespace vel::command {
namespace {

constexpr std::size_t kCode = 4;

bool is_visible(char c) { return c > ' ' && c < '\x7f'; }

// RFC 2045 section 5.1.
bool is_token_character(char c) {
    return is_visible(c) && std::string_view("()<>@,;:\\\"/[]?=").find(c) == std::string_view::npos;
}

// A path's extension begins behind its last dot and ends at its first blank.
bool is_of_extension(char c) { return is_visible(c) && c != '.' && c != '/'; }

// Macintosh codes have letters beyond ASCII.
bool is_of_code(char c) { return static_cast<unsigned char>(c) >= ' ' && c != '\x7f'; }

struct Rule {
    const TypeField& field;
    std::size_t longest;
    bool may_be_empty;
    bool (*takes)(char);
};

constexpr std::array kRules{
    Rule{kTypeFields[0], sizeof MagicRecord::extension - 1, false, is_of_extension},
    Rule{kTypeFields[1], sizeof MagicRecord::contentType - 1, false, is_token_character},
    Rule{kTypeFields[2], sizeof MagicRecord::contentSubtype - 1, false, is_token_character},
    Rule{kTypeFields[4], sizeof MagicRecord::secondContentSubtype - 1, true, is_token_character},
    Rule{kTypeFields[5], kCode, true, is_of_code},
    Rule{kTypeFields[6], kCode, true, is_of_code},
};

std::string fault_by(const Rule& rule, const std::string& text) {
    const std::string name(rule.field.name);
    if (text.empty()) return rule.may_be_empty ? "" : "the " + name + " is missing";
    if (text.size() > rule.longest) return "the " + name + " has more than " + std::to_string(rule.longest) + " bytes";
    return std::all_of(text.begin(), text.end(), rule.takes) ? ""
                                                             : "the " + name + " has a character that does not fit";
}

template <std::size_t Size>
void fill(char (&field)[Size], std::string_view text) {
    std::copy_n(text.begin(), std::min(text.size(), Size - 1), field);
}

template <std::size_t Size>
std::string field_text(const char (&field)[Size]) {
    return {field, ::strnlen(field, Size)};
}

// Padded with blanks to four, as "TEXTttxt"; none at all when there is neither.
std::string codes_of(const TypeRow& row) {
    if (row.mac_type.empty() && row.creator.empty()) return {};
    std::string type = row.mac_type;
    std::string creator = row.creator;
    type.resize(kCode, ' ');
    creator.resize(kCode, ' ');
    return type + creator;
}

std::string without_padding(std::string code) {
    code.erase(code.find_last_not_of(' ') + 1);
    return code;
}

}  // namespace

std::string fault_of(const TypeRow& row) {
    for (const Rule& rule : kRules) {
        if (std::string fault = fault_by(rule, row.*rule.field.text); !fault.empty()) return fault;
    }
    const bool carries_bytes = same(row.encoding, "base64") || same(row.encoding, "quoted-printable");
    return carries_bytes ? "" : "the encoding is neither base64 nor quoted-printable";
}

MagicRecord record_of(const TypeRow& row) {
    MagicRecord record{};
    fill(record.extension, row.extension);
    fill(record.contentType, row.type);
    fill(record.contentSubtype, row.subtype);
    fill(record.secondContentType, row.encoding);
    fill(record.secondContentSubtype, row.second_subtype);
    fill(record.macTypeCreator, codes_of(row));
    return record;
}

TypeRow row_of(const MagicRecord& record) {
    const std::string codes = field_text(record.macTypeCreator);
    return {field_text(record.extension),
            field_text(record.contentType),
            field_text(record.contentSubtype),
            field_text(record.secondContentType),
            field_text(record.secondContentSubtype),
            without_padding(codes.substr(0, kCode)),
            codes.size() > kCode ? without_padding(codes.substr(kCode)) : ""};
}

}  // namespace vel::command
