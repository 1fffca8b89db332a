// Header blocks and text bodies as files, line by line.
#include <cstdio>
#include <optional>
#include <string_view>

#include "frame/access.h"
#include "frame/at_boundary.h"
#include "frame/file_pool.h"
#include "frame/line_file.h"
#include "frame/new_file.h"
#include "frame/open_handle.h"
#include "mime/envelope_line.h"
#include "mime/header_words.h"
#include "vel/mime.h"

namespace vel {
namespace {

constexpr const char* kHeaderPrefix = "MIME";
constexpr const char* kTextPrefix = "mime";  // Kept: the one prefix in lower case.

// The lines of a message file from a position on, and the file that they are written to.
class LineCopy {
  public:
    LineCopy(const MimeMsg& record, uint32_t start, const char* prefix)
        : input_(fileopen(record.fileName, kForReading, kBuffered)),
          output_(NewFile::create(prefix, NewFile::Writes::buffered)),
          ready_(input_ && output_) {
        if (ready_) go_to(start);
    }

    // Nothing has failed so far.
    bool ready() const { return ready_; }

    // False at the end of the file, and on an error, which fails the copy.
    bool next(std::string_view& line) {
        const LineResult result = lines().next(line);
        ready_ = ready_ && result != LineResult::error;
        return result == LineResult::line;
    }

    void write(std::string_view text) { ready_ = ready_ && LineFile(pooled_file(output_->handle())).put(text) == 1; }

    void go_to(uint32_t offset) { ready_ = ready_ && lines().set_position(static_cast<int32_t>(offset)) != -1; }

    uint32_t position() { return static_cast<uint32_t>(lines().position()); }
    char* keep() { return ready_ ? output_->keep() : nullptr; }

  private:
    LineFile lines() { return LineFile(pooled_file(input_.get())); }

    OpenHandle input_;
    std::optional<NewFile> output_;
    bool ready_;
};

char* header_text(const MimeMsg& record) {
    LineCopy copy(record, record.headerStart, kHeaderPrefix);
    std::string_view line;
    while (copy.ready() && copy.next(line)) {
        if (!is_envelope_line(line)) {
            const COwned<char> decoded = decode_header_words(line);
            copy.write(decoded ? decoded.get() : line);
        }
        if (copy.position() >= record.bodyStart) break;
    }
    return copy.keep();
}

// The children of a text are the files embedded in it; each is passed over from its first line on.
char* text_between_children(const MimeMsg& record) {
    LineCopy copy(record, record.bodyStart, kTextPrefix);
    unsigned child = 0;
    std::string_view line;
    while (copy.ready() && copy.position() < record.bodyEnd && copy.next(line)) {
        if (child < record.numChildren && copy.position() > record.children[child]->bodyStart) {
            copy.go_to(record.children[child++]->bodyEnd);
        } else {
            copy.write(line);
        }
    }
    return copy.keep();
}

}  // namespace
}  // namespace vel

extern "C" {

char* MimeGetHeader(const MimeMsg* record) {
    if (!record || record->headerStart >= record->bodyEnd) return nullptr;
    return vel::at_boundary<char*>(nullptr, [=] { return vel::header_text(*record); });
}

char* MimeGetBodyWithNoEmbeddedAttachment(const MimeMsg* record) {
    if (!record || record->bodyEnd <= record->bodyStart) return nullptr;
    return vel::at_boundary<char*>(nullptr, [=] { return vel::text_between_children(*record); });
}

void MimeFreeFile(char* path) {
    if (!path || !*path) return;
    std::remove(path);
    std::free(path);
}

}  // extern "C"
