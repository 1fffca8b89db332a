#include "tools/report/report_parts.h"

#include <algorithm>
#include <array>

#include "tools/text/ascii.h"

namespace vel::command {
namespace {

bool has_subtype(const MimeMsg& record, std::initializer_list<std::string_view> subtypes) {
    return std::any_of(subtypes.begin(), subtypes.end(),
                       [&](std::string_view subtype) { return same(text_of(record.contentSubtype), subtype); });
}

// RFC 8098, RFC 6533, RFC 5965
struct OtherReport {
    std::string_view subtype;
    const char* name;
};
constexpr const char* kDisposition = "a disposition notification: what a reader did";
constexpr std::array kOtherReports{
    OtherReport{"disposition-notification", kDisposition},
    OtherReport{"global-disposition-notification", kDisposition},
    OtherReport{"feedback-report", "a feedback report: what a reader complains of"},
};

}  // namespace

bool is_status(const MimeMsg& record) { return has_subtype(record, {"delivery-status", "global-delivery-status"}); }

bool is_returned(const MimeMsg& record) {
    return has_subtype(record, {"rfc822", "rfc822-headers", "global", "global-headers"});
}

bool is_plain_text(const MimeMsg& record) {
    const std::string_view type = text_of(record.contentType), subtype = text_of(record.contentSubtype);
    return type.empty() || (same(type, "text") && (subtype.empty() || same(subtype, "plain")));
}

bool is_html(const MimeMsg& record) {
    return same(text_of(record.contentType), "text") && has_subtype(record, {"html"});
}

const char* other_report(const MimeMsg& record) {
    const auto* found = std::find_if(kOtherReports.begin(), kOtherReports.end(), [&](const OtherReport& other) {
        return same(text_of(record.contentSubtype), other.subtype);
    });
    return found == kOtherReports.end() ? nullptr : found->name;
}

bool begins_returned_part(std::string_view line) {
    constexpr std::string_view field = "Content-Type:";
    if (!begins(line, field)) return false;
    const std::string_view type = trimmed(line.substr(field.size()));
    return begins(type, "message/rfc822") || begins(type, "message/global") || begins(type, "text/rfc822-headers");
}

}  // namespace vel::command
