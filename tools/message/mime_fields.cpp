#include "tools/message/mime_fields.h"

#include <cstdlib>

#include "tools/message/delimiters.h"
#include "tools/message/entity.h"

namespace vel::command {
namespace {

constexpr std::string_view kContentType = "content-type:";
constexpr std::string_view kEncoding = "content-transfer-encoding:";

void forget(char*& text) {
    std::free(text);
    text = nullptr;
}

void forget_type(MimeMsg& record) {
    forget(record.contentType);
    forget(record.contentSubtype);
    freeStringChain(record.contentTypeParams);
    record.contentTypeParams = nullptr;
}

}  // namespace

void MimeFields::clear() {
    forget_type(record_);
    freeStringChain(record_.contentDispositionParams);
    for (char* text :
         {record_.contentID, record_.contentDescription, record_.contentTransferEncoding, record_.contentDisposition}) {
        std::free(text);
    }
    record_ = {};
}

void MimeFields::refuse(std::string_view line) {
    if (is_content_type(line)) forget_type(record_);
    if (begins(line, kEncoding)) forget(record_.contentTransferEncoding);
}

bool MimeFields::is_multipart() const { return command::is_multipart(record_); }

bool MimeFields::is_open_message() const {
    const std::string encoding = lower(text_of(record_.contentTransferEncoding));
    return is_message(record_) &&
           (encoding.empty() || encoding == "7bit" || encoding == "8bit" || encoding == "binary");
}

std::optional<std::string> MimeFields::delimiter() const {
    for (const ms* node = record_.contentTypeParams; node; node = node->next) {
        const std::string_view text = node->text;
        const std::size_t equals = text.find('=');
        if (!begins(text, "boundary") || equals == std::string_view::npos) continue;
        std::string_view value = trimmed(text.substr(equals + 1));
        if (value.starts_with('"')) value.remove_prefix(1);
        if (value.ends_with('"')) value.remove_suffix(1);
        return std::string(kClosingMark).append(value);
    }
    return std::nullopt;
}

bool is_content_type(std::string_view line) { return begins(line, kContentType); }

}  // namespace vel::command
