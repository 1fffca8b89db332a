#include "mime/quoted_value.h"

#include <algorithm>
#include <string_view>

#include "mime/field_error.h"
#include "mime/field_text.h"

namespace vel {
namespace {

// The claim on memory that decides when a value is too big. It grows by what an append may need
// whenever the used part and that together pass the unused part, so the limit is about half of it.
constexpr std::size_t kFirstClaim = 80;
constexpr std::size_t kLargestClaim = 65534;
constexpr std::size_t kClaimForCharacter = 2;
constexpr std::size_t kClaimForLineEnd = 3;

bool is_escaped_pair(const char* at) { return at[0] == '\\' && (at[1] == '\\' || at[1] == '"'); }

}  // namespace

QuotedValue::QuotedValue(VEL_FILE* file, const char* field, std::string prefix)
    : file_(file), field_(field), text_(std::move(prefix)), claimed_(std::max(kFirstClaim, text_.size())) {}

bool QuotedValue::append(std::string_view characters, std::size_t claim) {
    if (text_.size() + claim > claimed_ - text_.size()) {
        claimed_ += claim;
        if (claimed_ > kLargestClaim) {
            log_text(kLogError, "Quoted value too big.");
            return false;
        }
    }
    text_ += characters;
    return true;
}

// Goes on behind the blank that begins a continuation line.
bool QuotedValue::next_line(char*& position) {
    position = ReadNextHeaderLine(file_);
    if (!position) {
        field_invalid_because(field_, "Premature end of file, or file read error.");
        return false;
    }
    if (!is_blank(*position)) {
        missing_quote(field_);
        return false;
    }
    ++position;
    return true;
}

char* QuotedValue::read(char* at) {
    for (;;) {
        if (*at == '\\' && at_line_end(at + 1)) {
            if (!append("\r\n", kClaimForLineEnd) || !next_line(at)) return nullptr;
        } else if (is_escaped_pair(at)) {
            if (!append({at + 1, 1}, kClaimForCharacter)) return nullptr;
            at += 2;
        } else if (*at == '"') {
            return append({at, 1}, kClaimForCharacter) ? at + 1 : nullptr;
        } else if (at_line_end(at)) {
            if (!next_line(at)) return nullptr;
        } else if (*at == '\0') {
            missing_quote(field_);
            return nullptr;
        } else {
            if (!append({at, 1}, kClaimForCharacter)) return nullptr;
            ++at;
        }
    }
}

}  // namespace vel
