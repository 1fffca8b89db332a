// Content-Type and Content-Disposition: a value, then parameters.
//
// Kept: a Content-Type that is no type at all counts as application/octet-stream.
// Kept: a disposition is stored untrimmed, without parameters with its CR LF.
#include <cstring>
#include <string>
#include <string_view>

#include "frame/chain.h"
#include "frame/owned.h"
#include "mime/field_error.h"
#include "mime/header_fields.h"
#include "mime/parameters.h"
#include "mime/token.h"

namespace vel {
namespace {

constexpr ParameterRules kContentTypeRules{"content-type:", true};
constexpr ParameterRules kContentDispositionRules{"content-disposition:", false};

// A longer type/subtype text is no type.
constexpr std::size_t kTypeTextMax = 255;

void clear_type(MimeMsg& record) {
    clear_text(record.contentType);
    clear_text(record.contentSubtype);
    clear_chain(record.contentTypeParams);
}

int default_type(const FieldBeingRead& field) {
    log_line(kLogNotice, "\"%s\" field invalid. Defaulting to %s/%s.", field.name, "application", "octet-stream");
    clear_type(field.record);
    assign_text(field.record.contentType, copy_text("application"));
    assign_text(field.record.contentSubtype, copy_text("octet-stream"));
    return 0;
}

// The text up to the parameters.
std::string_view before_parameters(const char* value) { return {value, std::strcspn(value, ";")}; }

}  // namespace

int parse_content_type(const FieldBeingRead& field) {
    MimeMsg& record = field.record;
    char* value = begin_value(field);
    if (!value) return field_invalid(field.name);
    const std::string_view text = before_parameters(value);
    if (text.size() > kTypeTextMax) {
        log_text(kLogNotice, "type/subtype bigger than tmp");
        return default_type(field);
    }
    const std::size_t slash = text.find('/');
    if (slash == std::string_view::npos) return default_type(field);
    if (slash == 0) return field_invalid_because(field.name, "Misplaced slash.");

    clear_type(record);
    assign_text(record.contentType, copy_text(text.substr(0, slash)));
    if (!IsValidToken(record.contentType)) return default_type(field);
    std::string_view subtype = text.substr(slash + 1);
    subtype = subtype.substr(0, subtype.find_first_of(" \t\r\n"));
    if (subtype.empty()) return field_invalid_because(field.name, "Missing subtype.");
    assign_text(record.contentSubtype, copy_text(subtype));
    if (!IsValidToken(record.contentSubtype)) return default_type(field);

    log_line(kLogNotice, "Found %s/%s", record.contentType, record.contentSubtype);
    return parse_parameters(field.file, value + slash + 1 + subtype.size(), kContentTypeRules,
                            record.contentTypeParams);
}

int parse_content_disposition(const FieldBeingRead& field) {
    char* value = begin_value(field);
    if (!value) return field_invalid(field.name, kLogNotice);
    const std::string_view text = before_parameters(value);
    assign_text(field.record.contentDisposition, copy_text(text));
    clear_chain(field.record.contentDispositionParams);
    return parse_parameters(field.file, value + text.size(), kContentDispositionRules,
                            field.record.contentDispositionParams);
}

}  // namespace vel
