#include "mime/header_fields.h"

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string_view>

#include "frame/ascii.h"
#include "frame/at_boundary.h"
#include "frame/owned.h"
#include "mime/field_error.h"
#include "mime/field_text.h"
#include "mime/token.h"

namespace vel {
namespace {

struct FieldRow {
    std::string_view name;
    int (*parse)(const FieldBeingRead& field);
};

constexpr FieldRow kFields[] = {
    {"mime-version:", parse_mime_version},
    {"content-id:", parse_content_id},
    {"content-description:", parse_content_description},
    {"content-type:", parse_content_type},
    {"content-disposition:", parse_content_disposition},
    {"content-transfer-encoding:", parse_content_transfer_encoding},
};

// The C library's text-to-double conversion in the "C" locale, so that the point is always the point.
double to_double(const char* text) {
    static const locale_t c_locale = ::newlocale(LC_ALL_MASK, "C", nullptr);
    return ::strtod_l(text, nullptr, c_locale);
}

}  // namespace

char* begin_value(const FieldBeingRead& field) {
    char* value = EatCommentsAndSpace(field.file, field.value);
    return value && *value && !at_line_end(value) ? value : nullptr;
}

int expect_field_end(const FieldBeingRead& field, char* position) {
    const char* rest = EatCommentsAndSpace(field.file, position);
    return rest && at_line_end(rest) ? 0 : bad_continuation(field.name);
}

int parse_mime_version(const FieldBeingRead& field) {
    char* value = begin_value(field);
    if (!value) return field_invalid(field.name);
    const double version = to_double(value);
    field.record.mimeVersion = static_cast<float>(version);
    if (version == 0.0) return field_invalid(field.name);
    return expect_field_end(field, value + std::strcspn(value, " \t\r\n"));
}

int parse_content_id(const FieldBeingRead& field) {
    char* value = begin_value(field);
    if (!value) return field_invalid(field.name);
    std::size_t length = std::strcspn(value, ">\r\n");
    if (length == 0) return field_invalid(field.name);
    if (value[length] == '>') ++length;
    assign_text(field.record.contentID, copy_text({value, length}));
    if (!IsValidMsgId(field.record.contentID)) return field_invalid(field.name);
    return expect_field_end(field, value + length);
}

// Kept: neither comments nor continuation lines are read, and the last two characters are taken for
// the line's CR LF.
int parse_content_description(const FieldBeingRead& field) {
    constexpr std::size_t kLineEnd = 2;
    std::string_view text = field.value + std::strspn(field.value, " \t");
    if (text.empty()) return field_invalid(field.name);
    clear_text(field.record.contentDescription);
    if (text == "\r\n") return 0;
    text.remove_suffix(std::min(kLineEnd, text.size()));
    assign_text(field.record.contentDescription, copy_text(text));
    return 0;
}

int parse_content_transfer_encoding(const FieldBeingRead& field) {
    char* value = begin_value(field);
    if (!value) return field_invalid(field.name, kLogNotice);
    const std::size_t length = std::strcspn(value, " \t\r\n");
    if (length == 0) return field_invalid(field.name);
    assign_text(field.record.contentTransferEncoding, copy_text({value, length}));
    if (!IsValidToken(field.record.contentTransferEncoding)) return field_invalid(field.name);
    return expect_field_end(field, value + length);
}

}  // namespace vel

extern "C" int ParseMimeHeaders(VEL_FILE* file, MimeMsg* record, char* line) {
    if (!file || !record || !line) return -1;
    const auto* row = std::find_if(std::begin(vel::kFields), std::end(vel::kFields),
                                   [text = std::string_view(line)](const vel::FieldRow& known) {
                                       return vel::ascii::starts_with_ignoring_case(text, known.name);
                                   });
    if (row == std::end(vel::kFields)) return 0;
    return vel::at_boundary(
        -1, [] { vel::log_text(vel::kLogError, vel::kOutOfMemory); },
        [=] {
            return row->parse({file, *record, row->name.data(), line + row->name.size()});
        });
}
