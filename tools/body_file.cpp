#include "tools/body_file.h"

#include <sys/stat.h>

#include "tools/entity.h"
#include "tools/exit_code.h"

namespace vel::command {
namespace {

constexpr int kOwnDescriptor = -1;

// Encodings whose decoded form is always shorter than what is stored.
bool shrinks_when_decoded(const MimeMsg& record) {
    const std::string encoding = lower(text_of(record.contentTransferEncoding));
    return encoding == "base64" || encoding.find("uue") != std::string::npos ||
           same(text_of(record.contentSubtype), "mac-binhex40");
}

ResultFile checked(char* path) {
    if (!path) throw Failure(Exit::io_error, "a body cannot be written to the temporary directory");
    return ResultFile(path);
}

// The end that the parser computes for an empty body may stand before its start, which the library refuses.
ResultFile whole_body(MimeMsg& record, Form form) {
    const uint32_t computed_end = record.bodyEnd;
    record.bodyEnd = end_of_body(record);
    char* path = MimeGetBody(&record, form == Form::raw, kOwnDescriptor);
    record.bodyEnd = computed_end;
    return checked(path);
}

// What the library leaves of such a text is still encoded.
ResultFile text_around_files(const MimeMsg& record) {
    ResultFile text = checked(MimeGetBodyWithNoEmbeddedAttachment(&record));
    MimeMsg remainder{};
    remainder.fileName = text.get();
    remainder.contentTransferEncoding = record.contentTransferEncoding;
    remainder.bodyEnd = static_cast<uint32_t>(size_of(text));
    return checked(MimeGetBody(&remainder, 0, kOwnDescriptor));
}

}  // namespace

BodyFile write_body(MimeMsg& record, Form form) {
    if (form == Form::decoded && has_embedded_files(record)) return {text_around_files(record), true};
    ResultFile file = whole_body(record, form);
    if (form == Form::raw) return {std::move(file), false};
    const bool as_stored =
        shrinks_when_decoded(record) && size_of_body(record) > 0 && size_of(file) == size_of_body(record);
    return {std::move(file), !as_stored};
}

uint64_t size_of(const ResultFile& file) {
    struct stat status {};
    if (::stat(file.get(), &status) != 0) throw Failure::of_system_call(Exit::io_error, file.get());
    return static_cast<uint64_t>(status.st_size);
}

}  // namespace vel::command
