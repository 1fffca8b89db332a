#include "tools/message/part_name.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "tools/message/header_texts.h"
#include "tools/message/parameters.h"
#include "tools/text/ascii.h"

namespace vel::command {
namespace {

struct TypeExtension {
    std::string_view type, extension;
};

// The types that mail brings, by their registered or customary extension.
constexpr std::array kExtensions = std::to_array<TypeExtension>({
    {"application/gzip", ".gz"},
    {"application/json", ".json"},
    {"application/mac-binhex40", ".hqx"},
    {"application/msword", ".doc"},
    {"application/pdf", ".pdf"},
    {"application/pgp-keys", ".asc"},
    {"application/pgp-signature", ".asc"},
    {"application/pkcs7-mime", ".p7m"},
    {"application/pkcs7-signature", ".p7s"},
    {"application/postscript", ".ps"},
    {"application/rtf", ".rtf"},
    {"application/vnd.ms-excel", ".xls"},
    {"application/vnd.ms-powerpoint", ".ppt"},
    {"application/vnd.openxmlformats-officedocument.presentationml.presentation", ".pptx"},
    {"application/vnd.openxmlformats-officedocument.spreadsheetml.sheet", ".xlsx"},
    {"application/vnd.openxmlformats-officedocument.wordprocessingml.document", ".docx"},
    {"application/x-gzip", ".gz"},
    {"application/x-pkcs7-mime", ".p7m"},
    {"application/x-pkcs7-signature", ".p7s"},
    {"application/x-tar", ".tar"},
    {"application/x-zip-compressed", ".zip"},
    {"application/xml", ".xml"},
    {"application/zip", ".zip"},
    {"audio/basic", ".au"},
    {"audio/mpeg", ".mp3"},
    {"audio/wav", ".wav"},
    {"audio/x-wav", ".wav"},
    {"image/bmp", ".bmp"},
    {"image/gif", ".gif"},
    {"image/jpeg", ".jpg"},
    {"image/jpg", ".jpg"},
    {"image/png", ".png"},
    {"image/svg+xml", ".svg"},
    {"image/tiff", ".tif"},
    {"message/delivery-status", ".txt"},
    {"message/disposition-notification", ".txt"},
    {"message/rfc822", ".eml"},
    {"text/calendar", ".ics"},
    {"text/csv", ".csv"},
    {"text/enriched", ".rtx"},
    {"text/html", ".html"},
    {"text/richtext", ".rtx"},
    {"text/vcard", ".vcf"},
    {"text/x-vcard", ".vcf"},
    {"text/xml", ".xml"},
    {"video/mp4", ".mp4"},
    {"video/mpeg", ".mpg"},
    {"video/quicktime", ".mov"},
});

static_assert(std::is_sorted(kExtensions.begin(), kExtensions.end(),
                             [](const TypeExtension& a, const TypeExtension& b) { return a.type < b.type; }),
              "the search is by halves");

}  // namespace

std::optional<Readable> given_name(const MimeMsg& record) {
    auto name = parameter(record.contentDispositionParams, "filename");
    if (!name || name->text.empty()) name = parameter(record.contentTypeParams, "name");
    if (!name || name->text.empty()) name = readable(text_of(record.trueName));
    return name->text.empty() ? std::nullopt : name;
}

std::optional<Readable> description_of(const MimeMsg& record, LineReader& lines) {
    if (!record.contentDescription) return std::nullopt;
    const auto fields = header_texts(lines, {record.headerStart, record.bodyStart}, {"Content-Description"});
    return readable(fields.empty() ? text_of(record.contentDescription) : std::string_view(fields.back().text));
}

std::string type_of(const MimeMsg& record) {
    if (!record.contentType) return "text/plain";
    std::string type(record.contentType);
    if (record.contentSubtype) type.append("/").append(record.contentSubtype);
    return type;
}

std::string extension_of(const MimeMsg& record) {
    const std::string type = lower(type_of(record));
    const auto row = std::lower_bound(kExtensions.begin(), kExtensions.end(), type,
                                      [](const TypeExtension& a, const std::string& b) { return a.type < b; });
    if (row != kExtensions.end() && row->type == type) return std::string(row->extension);
    return type.starts_with("text/") ? ".txt" : ".bin";
}

}  // namespace vel::command
