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
        for (uint32_t start = 0; next_line(line); start = position()) take(line, start);
        text_->bodyEnd = size_of(*file_);
        return pool_.give(pool);
    }

  private:
    enum class State { headers, text, in_uuencode, before_binhex_data, in_binhex_data };

    void take(std::string_view line, uint32_t start) {
        switch (state_) {
            case State::headers:
                if (!line.starts_with("\r\n")) return;
                text_->bodyStart = position();
                state_ = State::text;
                return;
            case State::text: return look_for_file(line, start);
            case State::in_uuencode:
                if (ascii::starts_with_ignoring_case(line, "end")) end_file(add_uuencoded);
                return;
            case State::before_binhex_data:
                if (line.starts_with(':')) state_ = State::in_binhex_data;
                return;
            case State::in_binhex_data:
                if (line.find(':') != std::string_view::npos) end_file(add_binhex);
                return;
        }
    }

    void look_for_file(std::string_view line, uint32_t start) {
        file_start_ = start;
        if (IsuuencodeBegin(file_->line, nullptr)) {
            state_ = State::in_uuencode;
        } else if (ascii::starts_with_ignoring_case(line, kBinhexBanner)) {
            state_ = State::before_binhex_data;
        }
    }

    // The text before the file ends where the file began; another text follows, empty or not.
    void end_file(MimeMsg& (*add_file)(EntityPool&, uint32_t, uint32_t)) {
        text_->bodyEnd = file_start_;
        add_file(pool_, file_start_, position());
        text_ = &pool_.add(position());
        text_->bodyStart = position();
        state_ = State::text;
    }

    bool next_line(std::string_view& line) {
        const LineResult result = lines_.next(line);
        if (result == LineResult::error) throw ParseFailure{kReadFailed};
        return result == LineResult::line;
    }

    uint32_t position() const { return static_cast<uint32_t>(lines_.position()); }

    VEL_FILE* file_;
    LineFile lines_;
    EntityPool pool_;
    MimeMsg* text_;  // the piece of text that is being read
    uint32_t file_start_ = 0;
    State state_ = State::headers;
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
