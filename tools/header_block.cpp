#include "tools/header_block.h"

#include <optional>

#include "tools/ascii.h"
#include "tools/date_reading.h"
#include "tools/exit_code.h"
#include "tools/lines.h"

namespace vel::command {
namespace {

constexpr int kReadOnly = 0;
constexpr int kBuffered = 1;

using Header = std::unique_ptr<addr822, HeaderFreed>;

Header new_header() {
    Header header(New822Header());
    if (!header) throw std::bad_alloc();
    return header;
}

std::string_view without_line_end(std::string_view line) {
    line = line.substr(0, line.find('\0'));
    if (line.ends_with('\n')) line.remove_suffix(1);
    if (line.ends_with('\r')) line.remove_suffix(1);
    return line;
}

// Whether the header parser stores a line; a record of its own, since storing takes time that grows with
// what is in it.
bool is_field(const std::string& line) { return ParseLine(line.c_str(), new_header().get()) != -1; }

bool is_date(std::string_view field) { return begins(field, "date:") || begins(field, "resent-date:"); }

// Goes through the lines of a block that has been read, for what the record does not hold.
class Remainder {
  public:
    explicit Remainder(HeaderBlock& block) : block_(block) {}

    void take(std::string_view line, uint32_t start) {
        if (line.empty()) return;
        if (kBlanks.find(line.front()) != std::string_view::npos) {
            if (in_date_) date_->text.append(" ").append(line);
            return;
        }
        in_date_ = !date_ && is_date(line);
        if (in_date_) date_ = HeaderLine{start, std::string(line)};
        if (is_envelope_line(line)) {
            block_.envelope.emplace_back(line);
        } else if (block_.no_fields.size() < kMostNoFields && !is_field(std::string(line))) {
            block_.no_fields.push_back({start, std::string(line)});
        }
    }

    // The first date counts, whichever field it stands in.
    void finish() {
        if (date_ && !is_rfc822_date(date_->text.substr(date_->text.find(':') + 1))) block_.unreadable_date = date_;
    }

  private:
    HeaderBlock& block_;
    std::optional<HeaderLine> date_;
    bool in_date_ = false;  // the line before belongs to it
};

}  // namespace

bool is_envelope_line(std::string_view line) { return line.starts_with("#F") || line.starts_with("#R"); }

HeaderBlock read_header_block(const std::string& path, Journal& journal) {
    HeaderBlock block;
    block.fields = new_header();
    journal.take();
    const int handle = fileopen(path.c_str(), kReadOnly, kBuffered);
    if (handle == -1) throw Failure::of_system_call(Exit::no_input, "");
    ParseHdr(handle, block.fields.get(), &block.lines, &block.status_line);
    block.end = static_cast<uint32_t>(getfpos(handle));
    fileclose(handle);
    block.said = journal.take();
    LineReader lines(path);
    Remainder remainder(block);
    while (lines.position() < block.end) {
        const std::optional<Line> line = lines.next();
        if (!line) break;
        remainder.take(without_line_end(line->text), line->start);
    }
    remainder.finish();
    return block;
}

}  // namespace vel::command
