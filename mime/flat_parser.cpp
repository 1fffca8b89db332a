// The parser of messages that are not MIME: a flat list of text pieces and the uuencoded and BinHex files
// between them. Its rules for such files differ from those for the bodies of MIME messages.
#include <string_view>

#include "frame/ascii.h"
#include "frame/line_file.h"
#include "mime/embedded_scan.h"
#include "mime/entity_pool.h"
#include "mime/parse_failure.h"
#include "vel/codec.h"

namespace vel {
namespace {

constexpr const char* kReadFailed = "ParseNonMimeMessage failed: getline failed.";

class FlatParser {
  public:
    FlatParser(const char* path, VEL_FILE* file) : file_(file), lines_(file), pool_(path), text_(&pool_.add(0)) {}

    int parse(mime_msg_pool** pool) {
        std::string_view line;
        if (is_line(lines_.next_with("\r\n", line))) {
            text_->bodyStart = position();
            while (next_line(line)) take(line, position() - static_cast<uint32_t>(line.size()));
        }
        text_->bodyEnd = size_of(*file_);
        return pool_.give(pool);
    }

  private:
    void take(std::string_view line, uint32_t start) {
        switch (state_) {
            case ScanState::text: return look_for_file(line, start);
            case ScanState::in_uuencode:
                if (ascii::starts_with_ignoring_case(line, "end")) end_file(add_uuencoded);
                return;
            case ScanState::before_binhex_data:
                if (line.starts_with(':')) state_ = ScanState::in_binhex_data;
                return;
            case ScanState::in_binhex_data:
                if (line.find(':') != std::string_view::npos) end_file(add_binhex);
                return;
        }
    }

    void look_for_file(std::string_view line, uint32_t start) {
        file_start_ = start;
        if (IsuuencodeBegin(file_->line, nullptr)) {
            state_ = ScanState::in_uuencode;
        } else if (ascii::starts_with_ignoring_case(line, kBinhexBanner)) {
            state_ = ScanState::before_binhex_data;
        }
    }

    // The text before the file ends where the file began; another text follows, empty or not.
    void end_file(MimeMsg& (*add_file)(EntityPool&, uint32_t, uint32_t)) {
        text_->bodyEnd = file_start_;
        add_file(pool_, file_start_, position());
        text_ = &pool_.add(position());
        text_->bodyStart = position();
        state_ = ScanState::text;
    }

    bool next_line(std::string_view& line) {
        return is_line(lines_.next_where([this](std::string_view text) { return may_matter(state_, text); }, line));
    }

    static bool is_line(LineResult result) {
        if (result == LineResult::error) throw ParseFailure{kReadFailed};
        return result == LineResult::line;
    }

    uint32_t position() const { return static_cast<uint32_t>(lines_.position()); }

    VEL_FILE* file_;
    LineFile lines_;
    EntityPool pool_;
    MimeMsg* text_;  // the piece of text that is being read
    uint32_t file_start_ = 0;
    ScanState state_ = ScanState::text;
};

}  // namespace
}  // namespace vel

extern "C" int ParseNonMimeMessage(const char* path, mime_msg_pool** pool) {
    if (!pool) return -1;
    *pool = nullptr;
    if (!path || !*path || !vel::is_readable(path)) return -1;
    const vel::OpenFile file(FileOpen(path, 1));
    if (!file) return vel::parse_failed("ParseNonMimeMessage failed: fileopen failed.");
    return vel::run_parse("ParseNonMimeMessage failed: out of memory.",
                          [&] { return vel::FlatParser(path, file.get()).parse(pool); });
}
