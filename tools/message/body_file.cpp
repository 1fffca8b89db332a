#include "tools/message/body_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include "tools/io/blocks.h"
#include "tools/io/exit_code.h"
#include "tools/io/library_scratch.h"
#include "tools/message/entity.h"

namespace vel::command {
namespace {

constexpr int kOwnDescriptor = -1;

bool is_quoted_printable(const MimeMsg& record) {
    return same(text_of(record.contentTransferEncoding), "quoted-printable");
}

bool names_encoding(const MimeMsg& record) {
    const std::string encoding = lower(text_of(record.contentTransferEncoding));
    return encoding == "base64" || is_quoted_printable(record) || encoding.find("uue") != std::string::npos;
}

// An encoding goes before the type: BinHex text that it yields stays text.
bool is_binhex(const MimeMsg& record) {
    return same(text_of(record.contentSubtype), "mac-binhex40") && !names_encoding(record);
}

// The library says nothing of a body that does not decode, but delivers it byte for byte.
bool is_as_stored(const MimeMsg& record, const ResultFile& file) {
    if (!is_encoded(record) || size_of_body(record) == 0 || size_of(file) != size_of_body(record)) return false;
    const Descriptor stored = open_for_reading(record.fileName);
    off_t offset = record.bodyStart;
    bool same_bytes = true;
    bool escapes = false;
    for_each_block(open_for_reading(file.get()).get(), [&](std::string_view block) {
        std::string other(block.size(), '\0');
        const ssize_t got = ::pread(stored.get(), other.data(), other.size(), offset);
        same_bytes = got == static_cast<ssize_t>(block.size()) && other == block;
        escapes = escapes || block.find('=') != std::string_view::npos;
        offset += got;
        return same_bytes;
    });
    return same_bytes && (escapes || !is_quoted_printable(record));
}

ResultFile checked(char* path, const LibraryScratch& written_to) {
    if (!path) throw written_to.failure();
    return ResultFile(path);
}

// The end that the parser computes for an empty body may stand before its start, which the library refuses.
ResultFile whole_body(MimeMsg& record, Form form, const LibraryScratch& written_to) {
    const uint32_t computed_end = record.bodyEnd;
    record.bodyEnd = end_of_body(record);
    char* path = MimeGetBody(&record, form == Form::raw, kOwnDescriptor);
    record.bodyEnd = computed_end;
    return checked(path, written_to);
}

// What the library leaves of such a text is still encoded.
BodyFile text_around_files(const MimeMsg& record, const LibraryScratch& written_to) {
    const ResultFile text = checked(MimeGetBodyWithNoEmbeddedAttachment(&record), written_to);
    MimeMsg remainder{};
    remainder.fileName = text.get();
    remainder.contentTransferEncoding = record.contentTransferEncoding;
    remainder.bodyEnd = static_cast<uint32_t>(size_of(text));
    ResultFile file = checked(MimeGetBody(&remainder, 0, kOwnDescriptor), written_to);
    const bool decoded = !is_as_stored(remainder, file);
    return {std::move(file), decoded};
}

}  // namespace

BodyFile write_body(MimeMsg& record, Form form, Scratch& scratch) {
    const LibraryScratch written_to(scratch);
    if (form == Form::decoded && has_embedded_files(record)) return text_around_files(record, written_to);
    ResultFile file = whole_body(record, form, written_to);
    if (form == Form::raw) return {std::move(file), false};
    const bool decoded = !is_as_stored(record, file);
    return {std::move(file), decoded, decoded && is_binhex(record) && size_of_body(record) > 0};
}

bool is_encoded(const MimeMsg& record) { return names_encoding(record) || is_binhex(record); }

bool hides_content_in_header(const MimeMsg& record) {
    constexpr std::string_view kBlankLine = "\r\n";
    if (size_of_body(record) > 0 || record.bodyStart <= record.headerStart) return false;
    const Descriptor file = open_for_reading(record.fileName);
    std::string end(std::min<std::size_t>(2 * kBlankLine.size(), record.bodyStart - record.headerStart), '\0');
    const off_t offset = record.bodyStart - static_cast<off_t>(end.size());
    if (::pread(file.get(), end.data(), end.size(), offset) != static_cast<ssize_t>(end.size())) return false;
    return end != kBlankLine && end != std::string(kBlankLine).append(kBlankLine);
}

uint64_t size_of(const ResultFile& file) {
    struct stat status {};
    if (::stat(file.get(), &status) != 0) throw Failure::of_system_call(Exit::io_error, file.get());
    return static_cast<uint64_t>(status.st_size);
}

}  // namespace vel::command
