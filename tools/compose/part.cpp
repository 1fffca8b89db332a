#include "tools/compose/part.h"

#include <algorithm>
#include <utility>

#include "tools/compose/header_words.h"
#include "tools/compose/mail_text.h"
#include "tools/io/exit_code.h"
#include "tools/io/library_owned.h"
#include "tools/io/private_copy.h"
#include "tools/text/ascii.h"
#include "tools/text/utf8.h"

namespace vel::command {
namespace {

constexpr const char* k7bit = "7bit";
constexpr const char* kQuotedPrintable = "quoted-printable";
constexpr const char* kBase64 = "base64";

constexpr uint32_t kLineEnd = 2;

// Another file takes the place of a body.
void replace(Input& body, PrivateFile file) {
    body.copies.push_back(std::move(file));
    body.path = body.copies.back().path();
}

// The encoding of a body in a multipart.
const char* enclosed_encoding(Input& body, const ContentFacts& facts, Scratch& scratch) {
    if (facts.mislead() || !facts.fit_quoted_printable() || facts.ends_within_from) return kBase64;
    replace(body, copy_range({0, static_cast<uint32_t>(facts.size) - kLineEnd}, body.path, scratch));
    return kQuotedPrintable;
}

const char* lone_encoding(const ContentFacts& facts) {
    if (facts.mislead()) return kBase64;
    if (facts.fit_7bit()) return k7bit;
    return facts.fit_quoted_printable() ? kQuotedPrintable : kBase64;
}

// A name in quotes keeps those of its own.
std::string quoted(std::string_view attribute, std::string_view value) {
    return std::string(attribute).append("=\"").append(value).append("\"");
}

std::string name_of_file(const std::string& file) {
    if (file == "-") return "";
    const std::string name = file.substr(file.rfind('/') + 1);
    if (!is_utf8(name)) throw Failure(Exit::bad_data, "has a name that is not UTF-8");
    return name;
}

const char* charset_of(const ContentFacts& facts) { return facts.is_ascii ? "us-ascii" : "utf-8"; }

// Whether a message can be a part of another one, where it may not be encoded (RFC 2046 section 5.2.1): what the library
// finds wrong with it could cost other parts.
bool can_be_enclosed(const Input& message, Journal& journal) {
    if (!facts_of(message.path).fit_7bit()) return false;
    journal.take();
    mime_msg_pool* pool = nullptr;
    const int count = ParseMimeMessage(message.path.c_str(), 1, &pool);
    const Pool owned(pool);
    const std::vector<LogLine> said = journal.take();
    return count > 0 &&
           std::none_of(said.begin(), said.end(), [](const LogLine& line) { return line.level == kErrorLevel; });
}

// Has a message be a part as it is, but for its line ends, where that can be.
bool encloses(Input& body, Session& session) {
    Input message;
    replace(message, with_mail_line_ends(body.path, session.scratch));
    if (!can_be_enclosed(message, session.journal)) return false;
    body = std::move(message);
    return true;
}

}  // namespace

Part text_part(const std::string& file, const std::string& charset, bool enclosed, Session& session) {
    Part part{open_as_it_stands(file, session), kPlainText, {}, k7bit};
    replace(part.body, as_mail_text(part.body.path, charset, session.scratch));
    const ContentFacts facts = facts_of(part.body.path, charset.empty());
    part.parameters.push_back(quoted("charset", charset.empty() ? charset_of(facts) : charset));
    // In 7 bits alone, as other mail programs want it (RFC 1468).
    const bool is_jis = same(charset, kJis) && facts.fit_7bit() && !facts.mislead();
    if (!is_jis) part.encoding = enclosed ? enclosed_encoding(part.body, facts, session.scratch) : lone_encoding(facts);
    return part;
}

Part attached_part(const std::string& file, const TypeOfFile& type_of, Session& session) {
    Input body = open_as_it_stands(file, session);
    const std::string name = name_of_file(file);
    const ContentFacts facts = facts_of(body.path);
    const FileType type = type_of(body.path, name, facts);
    Part part{std::move(body), type, {}, k7bit};
    if (part.type.type == "text" && facts.is_text) part.parameters.push_back(quoted("charset", charset_of(facts)));
    if (!name.empty()) part.parameters.push_back(quoted("name", parameter_words(name)));
    if (part.type == kMessageType && encloses(part.body, session)) return part;
    if (part.type == kMessageType) part.type = kBinaryType;
    part.encoding = enclosed_encoding(part.body, facts, session.scratch);
    return part;
}

}  // namespace vel::command
