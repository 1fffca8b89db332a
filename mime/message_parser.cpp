// The parser of MIME messages (RFC 2045, 2046): one pass over the lines of a file, which leaves a record
// for every entity.
//
// Kept: delimiter lines are recognised by exact prefix, and the length that is taken off a body is that
//       of the bare delimiter line, so that anything behind the delimiter stays in the body.
// Kept: a last part without a delimiter behind it is dropped.
// Kept: queue envelope lines are skipped in every header block, also of a part.
// Kept: each piece of a line of more than 1024 bytes counts as a line.
// Kept: the boundary "VEL" counts as no delimiter, so that its first part runs to the end of the file.
#include <optional>
#include <string>
#include <string_view>

#include "frame/at_boundary.h"
#include "frame/line_file.h"
#include "frame/log.h"
#include "frame/owned.h"
#include "frame/settings.h"
#include "mime/boundary_pool.h"
#include "mime/embedded_scan.h"
#include "mime/entity_pool.h"
#include "mime/envelope_line.h"
#include "mime/message_pool.h"
#include "mime/parse_failure.h"
#include "mime/record.h"
#include "mime/roll_back.h"

namespace vel {
namespace {

constexpr Setting<16> kStrictParsing{"Options", "StrictMimeParsing", "YES"};

// The delimiter of an enclosed message that stands in no multipart: it has none.
constexpr const char* kNoDelimiter = "--VEL";
constexpr std::string_view kClosingMark = "--";
constexpr uint32_t kLineEnd = 2;  // CR LF

constexpr const char* kOutOfMemoryText = "ParseMimeMessage: out of memory.";
constexpr const char* kReadFailed = "ParseMimeMessage: getline failed.";
constexpr const char* kNotValid = "ParseMimeMessage: not a valid MIME message.";
constexpr const char* kBoundaryNotValid = "ParseMimeMessage: boundary line not valid.";
constexpr const char* kBoundaryMissing = "ParseMimeMessage: boundary line is missing.";

constexpr int32_t kUnplaced = 0;
constexpr int32_t kRunsToFileEnd = 1;

bool is_multipart(const MimeMsg& record) {
    return record.contentType && ascii::equals_ignoring_case(record.contentType, "multipart");
}

// Embedded files are looked for in plain text and in what has no type.
bool may_hold_files(const MimeMsg& record) { return !record.contentType || has_type(record, "text", "plain"); }

// The value of the boundary parameter (RFC 2046 section 5.1.1).
std::string_view boundary_value(const MimeMsg& record) {
    const ms* parameter = record.contentTypeParams;
    while (parameter && !ascii::starts_with_ignoring_case(parameter->text, "boundary")) parameter = parameter->next;
    if (!parameter) throw ParseFailure{kBoundaryMissing};
    const std::string_view text = parameter->text;
    const std::size_t equals = text.find('=');
    if (equals == std::string_view::npos) throw ParseFailure{kBoundaryNotValid};
    std::string_view value = text.substr(equals + 1);
    while (!value.empty() && ascii::is_space(value.front())) value.remove_prefix(1);
    if (value.starts_with('"')) value.remove_prefix(1);
    if (value.ends_with('"')) value.remove_suffix(1);
    return value;
}

class MessageParser {
  public:
    MessageParser(const char* path, VEL_FILE* file, bool nested)
        : file_(file),
          lines_(file),
          nested_(nested),
          strict_(is(read(kStrictParsing), "YES")),
          size_(size_of(*file)),
          pool_(path),
          record_(&pool_.add(0)) {
        lines_.take_descriptor();
    }
    MessageParser(const MessageParser&) = delete;
    MessageParser& operator=(const MessageParser&) = delete;
    ~MessageParser() { FreeMsgPool(&containers_); }

    int parse(mime_msg_pool** pool) {
        while (phase_ != Phase::finished) phase_ = phase_ == Phase::headers ? read_header_line() : read_body();
        finish();
        return pool_.give(pool);
    }

  private:
    enum class Phase { headers, body, finished };

    // ---- Header blocks

    Phase read_header_line() {
        const uint32_t start = position();
        std::string_view line;
        if (!next_line(line)) return Phase::finished;
        if (is_envelope_line(line)) return Phase::headers;
        if (has_delimiter() && line.starts_with(delimiter_)) return end_without_body(line, start);
        if (line == "\r\n") return end_headers();
        if (ParseMimeHeaders(file_, record_, file_->line) != 0) throw ParseFailure{kNotValid};
        return Phase::headers;
    }

    // A delimiter line in a header block: the entity has no blank line and no body.
    Phase end_without_body(std::string_view line, uint32_t start) {
        attach();
        record_->bodyStart = record_->bodyEnd = start;
        const bool closing = line.substr(delimiter_.size()).starts_with(kClosingMark);
        const std::string delimiter_line(line);
        next_record();
        if (!closing && !in_message_) return Phase::headers;
        return roll_back(delimiter_line, kBoundaryNotValid) ? Phase::headers : Phase::finished;
    }

    Phase end_headers() {
        if (is_multipart(*record_)) {
            open_multipart();
            return Phase::headers;
        }
        record_->bodyStart = position();
        if (!nested_ || !is_enclosed_message(*record_)) return Phase::body;
        open_message();
        return Phase::headers;
    }

    void open_multipart() {
        const std::string delimiter = std::string(kClosingMark).append(boundary_value(*record_));
        assign_text(record_->boundary, copy_text(delimiter));
        std::string_view line;
        const LineResult result = lines_.next_with(delimiter, line);
        if (result != LineResult::line) throw ParseFailure{result == LineResult::end ? kNotValid : kReadFailed};
        attach();
        record_->bodyStart = position() - static_cast<uint32_t>(delimiter.size()) - kLineEnd;
        in_message_ = false;
        open_level();
    }

    // The headers of the enclosed message follow.
    void open_message() {
        assign_text(record_->boundary, copy_text(delimiter_.empty() ? kNoDelimiter : delimiter_));
        attach();
        in_message_ = true;
        open_level();
    }

    // Makes the record the container of a new level.
    void open_level() {
        ++level_;
        expect_memory(AddBoundaryNode(&boundaries_, record_->boundary, level_));
        expect_memory(AddToMsgPool(&containers_, record_, level_));
        delimiter_ = record_->boundary;
        container_ = record_;
        next_record();
    }

    // ---- Bodies

    Phase read_body() {
        const bool scanned = may_hold_files(*record_);
        if (!has_delimiter()) return read_to_file_end(scanned);
        std::string_view line;
        const LineResult result = scanned ? scan_part(line) : lines_.next_with(delimiter_, line);
        if (result == LineResult::error) throw ParseFailure{kReadFailed};
        if (result == LineResult::line) return end_part(line.substr(delimiter_.size()).starts_with(kClosingMark));
        if (strict_) log_text(kLogError, kReadFailed);  // Kept: that very text.
        return Phase::finished;
    }

    // Looks for embedded files up to the delimiter line that ends the part, and hands that out.
    LineResult scan_part(std::string_view& line) {
        EmbeddedScan scan;
        const auto ends_part = [this](std::string_view text) {
            return has_delimiter() && text.starts_with(delimiter_);
        };
        for (;;) {
            const LineResult result =
                lines_.next_where([&](std::string_view text) { return scan.wants(text) || ends_part(text); }, line);
            if (result != LineResult::line || ends_part(line)) return result;
            look_for_file(scan, line);
        }
    }

    Phase end_part(bool closing) {
        const uint32_t resume = position();
        std::string delimiter_line = delimiter_;
        if (closing) delimiter_line += kClosingMark;
        end_body(resume - static_cast<uint32_t>(delimiter_line.size()) - kLineEnd, resume);
        if (!closing && !in_message_) return Phase::headers;
        if (!roll_back(delimiter_line, kNotValid)) return Phase::finished;
        container_->bodyEnd = record_->headerStart = position();
        return Phase::headers;
    }

    Phase read_to_file_end(bool scanned) {
        std::string_view line;
        if (scanned && scan_part(line) == LineResult::error) throw ParseFailure{kReadFailed};
        record_->nodeKind = kRunsToFileEnd;
        end_body(size_, size_);
        return Phase::headers;
    }

    // Ends the body and goes on with the next record where the next header block begins.
    void end_body(uint32_t end, uint32_t resume) {
        attach();
        record_->bodyEnd = end;
        if (lines_.return_to(static_cast<int32_t>(resume)) == -1) throw ParseFailure{kReadFailed};
        next_record();
    }

    void look_for_file(EmbeddedScan& scan, std::string_view line) {
        const uint32_t start = position() - static_cast<uint32_t>(line.size());
        const std::optional<EmbeddedFile> found = scan.line(line, start, position());
        if (!found) return;
        const bool uuencoded = found->kind == EmbeddedKind::uuencode;
        MimeMsg& embedded =
            uuencoded ? add_uuencoded(pool_, found->start, found->end) : add_binhex(pool_, found->start, found->end);
        expect_memory(AddMsgNodeToTree(record_, &embedded));
        log_line(kLogNotice, "Found embedded %s attachment in body %s/%s", uuencoded ? "UUEncode" : "Binhex",
                 record_->contentType ? record_->contentType : "<unknown>",
                 record_->contentSubtype ? record_->contentSubtype : "<unknown>");
    }

    // ---- Levels

    // Leaves levels at a delimiter line. False when none is left, which ends the parse.
    bool roll_back(const std::string& line, const char* failure_without_delimiter) {
        if (RollBackMimeLevel(file_, &containers_, &boundaries_, &level_, line.c_str(), nested_) != 0) {
            throw ParseFailure{kNotValid};
        }
        if (level_ < 0) {
            if (MimeMsg* outermost = GetFromMsgPool(&containers_, 0)) outermost->bodyEnd = position();
            return false;
        }
        const char* delimiter = GetBoundaryFromPool(&boundaries_, level_);
        if (!delimiter) throw ParseFailure{failure_without_delimiter};
        container_ = GetFromMsgPool(&containers_, level_);
        if (!container_) throw ParseFailure{kNotValid};
        delimiter_ = delimiter;
        in_message_ = has_type(*container_, "message", "rfc822");
        return true;
    }

    // ---- Records

    void attach() {
        if (container_) expect_memory(AddMsgNodeToTree(container_, record_));
    }

    void next_record() { record_ = &pool_.add(position()); }

    // What was never placed goes; what was never ended ends with the file; an enclosed message ends
    // where its last part does.
    void finish() {
        mime_msg_pool& all = pool_.records();
        if (all.count > 1 && all.items[all.count - 1]->nodeKind == kUnplaced) DelFromMsgPool(&all, all.count - 1);
        for (int i = 0; i < all.count; ++i) {
            if (all.items[i]->bodyEnd == 0) all.items[i]->bodyEnd = size_;
        }
        for (int i = all.count - 1; i >= 0; --i) {
            MimeMsg& record = *all.items[i];
            if (record.numChildren > 0 && is_enclosed_message(record)) {
                record.bodyEnd = record.children[record.numChildren - 1]->bodyEnd;
            }
        }
    }

    // ---- The file

    bool next_line(std::string_view& line) {
        const LineResult result = lines_.next(line);
        if (result == LineResult::error) throw ParseFailure{kReadFailed};
        return result == LineResult::line;
    }

    uint32_t position() const { return static_cast<uint32_t>(lines_.position()); }
    bool has_delimiter() const { return !delimiter_.empty() && delimiter_ != kNoDelimiter; }

    VEL_FILE* file_;
    LineFile lines_;
    const bool nested_;
    const bool strict_;
    const uint32_t size_;

    EntityPool pool_;
    mime_msg_pool containers_{};  // by level; the records belong to pool_
    boundary_pool boundaries_;
    MimeMsg* record_;
    MimeMsg* container_ = nullptr;
    std::string delimiter_;
    int level_ = -1;
    bool in_message_ = false;  // the container is an enclosed message
    Phase phase_ = Phase::headers;
};

}  // namespace
}  // namespace vel

extern "C" int ParseMimeMessage(const char* path, int nested, mime_msg_pool** pool) {
    if (!pool) return -1;
    *pool = nullptr;
    if (!path || !*path) return vel::parse_failed("ParseMimeMessage: filename not valid.");
    if (!vel::is_readable(path)) return vel::parse_failed("ParseMimeMessage: file cannot be read.");
    const vel::OpenFile file(FileOpen(path, 1));
    if (!file) return vel::parse_failed("ParseMimeMessage: fileopen failed.");
    return vel::run_parse(vel::kOutOfMemoryText,
                          [&] { return vel::MessageParser(path, file.get(), nested != 0).parse(pool); });
}
