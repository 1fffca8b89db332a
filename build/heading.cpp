// Kept: a chain of nothing but empty entries writes its line end, which ends the header block (add_addresses).
// Kept: the column is 4 behind each field's name, and 3 behind an address that began a line (add_addresses).
// Kept: the subject is not converted to JIS, the addresses are (lines_of).
#include "build/heading.h"

#include <string_view>

#include "build/header_value.h"
#include "build/texts.h"
#include "codec/japanese_settings.h"
#include "frame/owned.h"
#include "vel/words.h"

namespace vel {
namespace {

constexpr std::string_view kFold = "\r\n   ";
constexpr std::size_t kFoldColumn = 3;
constexpr std::size_t kFirstColumn = 4;
constexpr std::size_t kLastColumn = 79;
constexpr std::string_view kSeparator = ", ";

bool converts_to_jis() { return is_locally_japanese() && is(read(kDisableJisInHeaders), "NO"); }

// What was made of a text. Kept: the text itself when nothing could be, for want of memory.
std::string_view either(const COwned<char>& made, const char* given) { return made ? made.get() : given; }

void add_sender(std::string& lines, const char* from, bool jis) {
    if (is_empty(from)) return;
    const COwned<char> address(processAddress(from, 1, jis));
    lines.append("From: ").append(either(address, from)).append(kLineEnd);
}

void add_addresses(std::string& lines, std::string_view field, const ms* list, bool jis) {
    if (!list) return;
    std::size_t column = 0;
    for_each_text(list, [&](const char* entry) {
        const bool is_first = column == 0;
        lines.append(is_first ? field : kSeparator);
        column = is_first ? kFirstColumn : column + kSeparator.size();
        const COwned<char> made(processAddress(entry, 0, jis));
        const std::string_view address = either(made, entry);
        column += kSeparator.size() + address.size();
        if (column > kLastColumn) {
            lines.append(kFold);
            column = kFoldColumn;
        }
        lines.append(address);
    });
    lines.append(kLineEnd);
}

void add_subject(std::string& lines, const char* subject) {
    if (is_empty(subject)) return;
    const COwned<char> encoded(rfc1522encoding(subject));
    lines.append("Subject: ").append(either(encoded, subject)).append(kLineEnd);
}

void add_extra(std::string& lines, std::string_view line) {
    lines.append(line);
    if (!line.ends_with(kLineEnd)) lines.append(kLineEnd);
}

}  // namespace

std::string lines_of(const Heading& heading) {
    const bool jis = converts_to_jis();
    std::string lines;
    add_sender(lines, heading.from, jis);
    add_addresses(lines, "To: ", heading.to, jis);
    add_addresses(lines, "Cc: ", heading.cc, jis);
    add_addresses(lines, "Bcc: ", heading.bcc, jis);
    add_subject(lines, heading.subject);
    for_each_text(heading.extra, [&](const char* line) { add_extra(lines, line); });
    return lines;
}

}  // namespace vel
