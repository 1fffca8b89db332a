// One token of look-ahead decides, and it is fetched only where it decides: what stands behind a
// group's ";" is not looked at, what stands behind a ">" is. A part is stored as soon as it is known,
// since a broken token ends the address with what is complete by then.
//
// Departures from RFC 822 section 6.1:
//  - a lone word is an address, and so is a local part in angle brackets;
//  - a local part may end in a dot;
//  - a phrase holds atoms and quoted strings only; a group without a member is no address;
//  - a route needs no angle brackets, and colons may join its domains;
//  - a ";" ends a mailbox outside a group as well.
#include "rfc822/address_parser.h"

#include <optional>

namespace vel {
namespace {

// The text that a production yields; none when the input does not fit it.
using Value = std::optional<std::string_view>;

constexpr bool is_word(AddressToken token) { return token == kAtom || token == kQuotedString; }

class AddressGrammar {
  public:
    AddressGrammar(AddressLexer& lexer, AddressParts& parts) : lexer_(lexer), parts_(parts) {}

    bool address();
    bool met_broken_token() const { return next_ == kBroken; }
    bool stands_before_comma() const { return next_ == kComma; }

  private:
    static constexpr auto kNotFetched = static_cast<AddressToken>(-2);

    AddressToken next() { return next_ != kNotFetched ? next_ : next_ = adrlex(lexer_); }
    void shift() { next_ = kNotFetched; }
    bool shift(AddressToken token) {
        if (next() != token) return false;
        shift();
        return true;
    }

    static Value yield(AddressPart& part, auto... pieces) {
        return part.set(pieces...) ? Value(part.text()) : std::nullopt;
    }

    bool lone_word();
    bool group();
    bool lone(Value mailbox);
    Value member();
    Value ended(Value mailbox);
    Value route_addr();
    Value routed_spec();
    bool route();
    Value addr_spec();
    bool local_part();
    bool domain();
    bool sub_domain();
    bool phrase();
    bool word();

    AddressLexer& lexer_;
    AddressParts& parts_;
    AddressToken next_ = kNotFetched;
    std::string_view word_{};
};

// address = word / mailbox / group ";"
bool AddressGrammar::address() {
    if (!is_word(next())) return lone(route_addr());
    if (!word()) return false;
    switch (next()) {
        case kEnd:
        case kComma: return lone_word();
        case kAt: return lone(addr_spec());
        default: return phrase() && (next() == kColon ? group() : lone(route_addr()));
    }
}

// Kept: a word with nothing behind it is a local part without a domain.
bool AddressGrammar::lone_word() { return parts_.local.set(word_) && parts_.canon.set(word_); }

bool AddressGrammar::lone(Value mailbox) {
    mailbox = ended(mailbox);
    return mailbox && parts_.canon.set(*mailbox);
}

// group = phrase ":" mailbox *("," mailbox), and its ";"; the phrase has been read
bool AddressGrammar::group() {
    AddressPart name;
    name.set(parts_.phrase.text());
    shift();
    Value mailbox = member();
    if (!mailbox || !parts_.canon.set(name.text(), ": ", *mailbox)) return false;
    while (next() == kComma) {
        shift();
        mailbox = member();
        if (!mailbox || !parts_.canon.add(", ", *mailbox)) return false;
    }
    return shift(kSemicolon) && parts_.canon.add(";");
}

// mailbox = addr-spec / route-addr / phrase route-addr
Value AddressGrammar::member() {
    if (!is_word(next())) return ended(route_addr());
    if (!word()) return std::nullopt;
    switch (next()) {
        case kAt:
        case kDot:
        case kComma:
        case kSemicolon: return ended(addr_spec());
        case kAtom:
        case kQuotedString:
        case kLess: return phrase() ? ended(route_addr()) : std::nullopt;
        default: return std::nullopt;
    }
}

// Kept: a ";" ends any mailbox.
Value AddressGrammar::ended(Value mailbox) {
    if (!mailbox) return std::nullopt;
    const AddressToken end = next();
    return end == kEnd || end == kComma || end == kSemicolon ? mailbox : std::nullopt;
}

// route-addr = "<" (routed-spec / addr-spec / local-part) ">" / routed-spec
Value AddressGrammar::route_addr() {
    if (next() == kAt) return routed_spec();
    if (!shift(kLess)) return std::nullopt;
    const Value spec = next() == kAt ? routed_spec() : word() ? addr_spec() : std::nullopt;
    return spec && shift(kGreater) ? spec : std::nullopt;
}

// routed-spec = route ":" addr-spec
Value AddressGrammar::routed_spec() {
    if (!route() || !word()) return std::nullopt;
    const Value spec = addr_spec();
    return spec ? yield(parts_.route_address, "<", parts_.route.text(), ":", *spec, ">") : std::nullopt;
}

// route = "@" domain *(("," / ":") "@" domain); the ":" behind it is read too
bool AddressGrammar::route() {
    if (!shift(kAt) || !domain() || !parts_.route.set("@", parts_.domain.text())) return false;
    for (;;) {
        const bool colon = next() == kColon;
        if (!colon && next() != kComma) return false;
        shift();
        if (colon && next() != kAt) return true;
        if (!shift(kAt) || !domain()) return false;
        if (!parts_.route.add(colon ? ":@" : ",@", parts_.domain.text())) return false;
    }
}

// addr-spec = local-part ["@" domain]; the first word has been read
Value AddressGrammar::addr_spec() {
    if (!local_part()) return std::nullopt;
    if (next() != kAt) return yield(parts_.spec, parts_.local.text());
    shift();
    return domain() ? yield(parts_.spec, parts_.local.text(), "@", parts_.domain.text()) : std::nullopt;
}

// local-part = word *("." word) ["."]; the first word has been read
bool AddressGrammar::local_part() {
    if (!parts_.local.set(word_)) return false;
    while (next() == kDot) {
        shift();
        if (is_word(next())) {
            if (!word() || !parts_.local.add(".", word_)) return false;
        } else if (next() == kBroken || !parts_.local.add(".")) {
            return false;
        }
    }
    return true;
}

// domain = sub-domain *("." sub-domain)
bool AddressGrammar::domain() {
    if (!sub_domain() || !parts_.domain.set(lexer_.token)) return false;
    while (next() == kDot) {
        shift();
        if (!sub_domain() || !parts_.domain.add(".", lexer_.token)) return false;
    }
    return true;
}

// sub-domain = atom / domain-literal
bool AddressGrammar::sub_domain() { return shift(next() == kAtom ? kAtom : kDomainLiteral); }

// phrase = 1*word; the first word has been read
bool AddressGrammar::phrase() {
    if (!parts_.phrase.set(word_)) return false;
    while (is_word(next())) {
        if (!word() || !parts_.phrase.add(" ", word_)) return false;
    }
    return true;
}

// word = atom / quoted-string
bool AddressGrammar::word() {
    if (!is_word(next())) return false;
    shift();
    word_ = lexer_.token;
    return word_.size() <= AddressPart::kMax;
}

}  // namespace
}  // namespace vel

int adrparse(vel::AddressLexer& lexer, vel::AddressParts& parts) {
    vel::AddressGrammar grammar(lexer, parts);
    if (grammar.address() || grammar.met_broken_token()) return 0;
    // Kept: so the members of a group that is too long go on behind this comma, as addresses of their own.
    if (grammar.stands_before_comma()) --lexer.at;
    return 1;
}
