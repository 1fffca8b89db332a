#include "tools/compose/mailbox.h"

#include <algorithm>
#include <cstring>

#include "tools/compose/header_words.h"
#include "tools/io/exit_code.h"
#include "tools/io/library_owned.h"
#include "tools/text/ascii.h"
#include "tools/text/utf8.h"
#include "vel/rfc822.h"

namespace vel::command {
namespace {

class Refusal {
  public:
    Refusal(const std::string& option, const std::string& text) : about_(option + ": \"" + text + "\" ") {}
    [[noreturn]] void operator()(const char* why) const { throw Failure(Exit::bad_data, about_ + why); }

  private:
    const std::string about_;
};

class Parsed {
  public:
    explicit Parsed(std::string_view text) : copy_(::strndup(text.data(), text.size())) {
        const char* const rest = copy_ ? ParseAddr(copy_.get(), &record_) : nullptr;
        is_alone_ = rest && trimmed(rest).empty() && !text.ends_with(',') && !text.ends_with(';');
    }
    Parsed(const Parsed&) = delete;
    Parsed& operator=(const Parsed&) = delete;
    ~Parsed() { Clear_RP(&record_); }

    std::string_view canonical() const { return text_of(record_.canon); }
    std::string_view local() const { return text_of(record_.local); }
    std::string_view domain() const { return text_of(record_.domain); }
    std::string_view comment() const { return text_of(record_.comment); }
    bool is_alone() const { return is_alone_; }

    // Neither a group nor a source route.
    bool is_mailbox() const {
        return !local().empty() && canonical().size() == local().size() + (domain().empty() ? 0 : 1 + domain().size());
    }

    // The parser takes \" for two blanks, which makes it another address.
    bool is_changed_from(std::string_view text) const {
        return local().starts_with('"') && text.find("\\\"") != text.npos;
    }

    bool is_followed_by_comment(std::string_view text) const {
        return text.starts_with(canonical()) && text.ends_with(')') && !comment().empty();
    }

  private:
    const Text copy_;
    recipient record_{};
    bool is_alone_;
};

// A quoted string's text (RFC 5322 section 3.2.4); any other text as it is.
std::string without_quotes(std::string_view phrase) {
    if (phrase.size() < 2 || !phrase.starts_with('"') || !phrase.ends_with('"')) return std::string(phrase);
    std::string text;
    bool is_quoted = false;
    for (const char c : phrase.substr(1, phrase.size() - 2)) {
        is_quoted = c == '\\' && !is_quoted;
        if (!is_quoted) text += c;
    }
    return text;
}

// Where the "<" of NAME <ADDRESS> stands, for a name that the parser would not read; else npos.
std::size_t address_behind_name(std::string_view text) {
    return !is_ascii(text) && text.ends_with('>') ? text.rfind('<') : text.npos;
}

// In quotes, or of characters that say nothing else.
bool is_name(std::string_view text) {
    const bool is_quoted = text.size() > 1 && text.starts_with('"') && text.ends_with('"');
    return is_quoted || text.find_first_of("<>,;:\"") == text.npos;
}

}  // namespace

void expect_one_line(const std::string& option, const std::string& text) {
    if (text.find_first_of("\r\n") != text.npos) throw Failure(Exit::usage, option + ": a line break in the value");
    if (!is_utf8(text)) throw Failure(Exit::usage, option + ": the value is not UTF-8");
}

Mailbox parse_mailbox(const std::string& option, const std::string& given) {
    constexpr std::size_t kFieldName = 6;  // "From: "
    expect_one_line(option, given);
    const Refusal refuse(option, given);
    const std::string_view text = trimmed(given);
    const std::size_t open = address_behind_name(text);
    const Parsed parsed(text.substr(open == text.npos ? 0 : open));
    if (parsed.canonical().empty()) refuse("is no address");
    if (!parsed.is_alone()) refuse("is not one address; each has a value of its own");
    if (!parsed.is_mailbox()) refuse("is no mailbox");
    if (parsed.is_changed_from(text)) refuse("has \\\" in its local part, which would be lost");
    if (!is_ascii(parsed.canonical())) refuse("has an address that is not ASCII");
    if (parsed.domain().empty()) refuse("has no domain");
    const std::string address(parsed.canonical());
    if (is_ascii(text)) return {std::string(text), address};
    const std::string_view name = trimmed(text.substr(0, std::min(open, text.size())));
    if (open != text.npos && is_name(name)) {
        return {phrase_words(without_quotes(name), kFieldName).append(" <").append(address).append(">"), address};
    }
    if (open != text.npos || !parsed.is_followed_by_comment(text)) refuse("is no NAME <ADDRESS>");
    const std::string comment = phrase_words(parsed.comment(), kFieldName + address.size());
    return {std::string(address).append(" (").append(comment).append(")"), address};
}

std::vector<Mailbox> parse_mailboxes(const std::string& option, const std::vector<std::string>& texts) {
    std::vector<Mailbox> mailboxes;
    for (const std::string& text : texts) mailboxes.push_back(parse_mailbox(option, text));
    return mailboxes;
}

}  // namespace vel::command
