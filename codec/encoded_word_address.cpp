// Kept: an encoded word may stand in a quoted string, against RFC 1522 section 5 (encode_phrase).
// Kept: a single word of any field, such as a subject, passes for an address; of several comments the last
//       one stays, up to 255 characters of it (encode_value).
#include "codec/encoded_word_encoder.h"
#include "frame/owned.h"
#include "vel/rfc822.h"

namespace vel {
namespace {

struct Addresses : RecipTbl {
    Addresses() : RecipTbl{} {}
    Addresses(const Addresses&) = delete;
    Addresses& operator=(const Addresses&) = delete;
    ~Addresses() { Clear_RT(this); }
};

// Nothing stands behind the first address, not even a comma or a semicolon. What does would be lost with the
// parser's result: it may be prose that parses as nothing.
bool first_address_is_all(std::string_view value) {
    if (value.ends_with(',') || value.ends_with(';')) return false;
    const COwned<char> text = copy_text(value);
    recipient first{};
    const char* const rest = ParseAddr(text.get(), &first);
    Clear_RP(&first);
    return *rest == '\0';
}

// Of a plain address canon is what local part and domain make, of one with a route it stands in brackets.
bool is_group(const recipient& address) {
    const std::string_view canon = address.canon, local = address.local, domain = address.domain;
    return !canon.starts_with('<') && canon.size() != local.size() + (domain.empty() ? 0 : 1 + domain.size());
}

// Parses a value that is one address and nothing else. A long list is refused by its first address, before
// there is a record of each. The parser changes its text, so it gets copies.
bool parse_one(std::string_view value, Addresses& address) {
    if (!first_address_is_all(value)) return false;
    const COwned<char> text = copy_text(value);
    return VEL_RecipParse(text.get(), &address, 1) == 1 && !is_group(*address.first);
}

std::string encode_phrase(std::string_view phrase, const WordEncoding& encoding) {
    const bool quoted = phrase.size() > 1 && phrase.starts_with('"') && phrase.ends_with('"');
    if (!quoted) return encode_text(phrase, encoding);
    return '"' + encode_text(phrase.substr(1, phrase.size() - 2), encoding) + '"';
}

std::string encode_canon(std::string_view canon, const WordEncoding& encoding) {
    return is_ascii(canon) ? std::string(canon) : encode_text(canon, encoding);
}

std::string encode_address(const recipient& address, const WordEncoding& encoding) {
    const std::string_view phrase = address.phrase, canon = address.canon, comment = address.comment;
    std::string result = encode_canon(canon, encoding);
    if (!phrase.empty()) {
        if (!canon.starts_with('<')) result = '<' + result + '>';
        result = encode_phrase(phrase, encoding) + ' ' + result;
    }
    if (!comment.empty()) result += " (" + encode_text(comment, encoding) + ')';
    return result;
}

}  // namespace

std::string encode_value(std::string_view value, const WordEncoding& encoding) {
    if (is_ascii(value)) return std::string(value);
    Addresses addresses;
    if (!parse_one(value, addresses)) return encode_text(value, encoding);
    return encode_address(*addresses.first, encoding);
}

}  // namespace vel
