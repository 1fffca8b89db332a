#include "magic/record.h"

#include <algorithm>

namespace vel {
namespace {

constexpr std::size_t kShortField = 10;

// A field of both records: as much of the text as leaves room for its NUL.
template <std::size_t Size>
void copy_field(const char (&from)[Size], char (&to)[Size]) {
    const std::string_view text = text_of(from).substr(0, Size - 1);
    std::fill(std::copy(text.begin(), text.end(), to), to + Size, '\0');
}

}  // namespace

void copy_record(const MagicRecord& from, magicdbFields& to) {
    copy_field(from.extension, to.extension);
    copy_field(from.contentType, to.content_type);
    copy_field(from.contentSubtype, to.content_subtype);
    copy_field(from.secondContentType, to.second_content_type);
    copy_field(from.secondContentSubtype, to.second_content_subtype);
    copy_field(from.macTypeCreator, to.mac_type_creator);
}

void copy_record(const magicdbFields& from, MagicRecord& to) {
    copy_field(from.extension, to.extension);
    copy_field(from.content_type, to.contentType);
    copy_field(from.content_subtype, to.contentSubtype);
    copy_field(from.second_content_type, to.secondContentType);
    copy_field(from.second_content_subtype, to.secondContentSubtype);
    copy_field(from.mac_type_creator, to.macTypeCreator);
}

void copy_out(std::string_view text, char* buffer) {
    const std::string_view kept = text.substr(0, kShortField - 1);
    *std::copy(kept.begin(), kept.end(), buffer) = '\0';
}

}  // namespace vel
