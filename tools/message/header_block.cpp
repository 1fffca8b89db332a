#include "tools/message/header_block.h"

#include <algorithm>
#include <array>
#include <optional>

#include "tools/io/exit_code.h"
#include "tools/io/lines.h"
#include "tools/message/address_list.h"
#include "tools/message/date_reading.h"
#include "tools/text/ascii.h"

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

// The fields that the header parser reads as lists of addresses.
constexpr std::array kAddressFields = std::to_array<std::string_view>({
    "from:",
    "reply-to:",
    "to:",
    "cc:",
    "bcc:",
    "resent-from:",
    "resent-to:",
    "resent-cc:",
    "resent-bcc:",
    "return-receipt-to:",
});

bool is_address_field(std::string_view field) {
    return std::any_of(kAddressFields.begin(), kAddressFields.end(),
                       [&](std::string_view name) { return begins(field, name); });
}

// "undisclosed recipients: ;" stands where there is nobody to name: nothing is lost by it (RFC 5322 section 3.4).
bool is_empty_group(std::string_view stretch) {
    if (!stretch.ends_with(';')) return false;
    stretch.remove_suffix(1);
    return stretch.substr(0, stretch.find_last_not_of(kBlanks) + 1).ends_with(':');
}

// The first stretch of a field's list that is no address.
std::optional<std::string> no_address_in(std::string_view field) {
    AddressListReader reader(field.substr(field.find(':') + 1));
    Recipient record;
    while (const auto stretch = reader.next(record.get())) {
        if (stretch->left_out && !is_empty_group(stretch->text)) return std::string(stretch->text);
    }
    return std::nullopt;
}

// Goes through the lines of a block that has been read, for what the record does not hold.
class Remainder {
  public:
    explicit Remainder(HeaderBlock& block) : block_(block) {}

    void take(const Line& piece) {
        const bool begins_line = std::exchange(line_ended_, piece.text.ends_with('\n'));
        const std::string_view line = without_line_end(piece.text);
        if (line.empty()) return;
        if (kBlanks.find(line.front()) != std::string_view::npos) {
            if (field_) field_->text.append(" ").append(line);
            return;
        }
        end_field();
        if (is_date(line) || is_address_field(line)) field_ = HeaderLine{piece.start, std::string(line)};
        if (is_envelope_line(line)) {
            block_.envelope.emplace_back(line);
        } else if (!is_field(std::string(line))) {
            (begins_line ? block_.no_fields : block_.cut_off).add({piece.start, std::string(line)});
        }
    }

    void finish() { end_field(); }

  private:
    void end_field() {
        if (!field_) return;
        if (!is_date(field_->text)) {
            look_at_addresses();
        } else if (!std::exchange(has_date_, true)) {  // the first one counts, whichever field it stands in
            if (!is_rfc822_date(field_->text.substr(field_->text.find(':') + 1))) block_.unreadable_date = field_;
        }
        field_.reset();
    }

    void look_at_addresses() {
        const std::optional<std::string> other = no_address_in(field_->text);
        if (!other) return;
        std::string text = field_->text.substr(0, field_->text.find(':'));
        block_.no_addresses.add({field_->start, text.append(": ").append(*other)});
    }

    HeaderBlock& block_;
    std::optional<HeaderLine> field_;  // a date or addresses, to which the next line may belong
    bool has_date_ = false;
    bool line_ended_ = true;  // by the piece before
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
        remainder.take(*line);
    }
    remainder.finish();
    return block;
}

}  // namespace vel::command
