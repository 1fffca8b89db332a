#include "tools/message/mailbox_cutter.h"

#include "tools/text/ascii.h"
#include "vel/rfc822.h"

namespace vel::command {
namespace {

constexpr std::string_view kSeparator = "From ";
constexpr char kQuote = '>';

// As much as ParseBody takes for one line.
constexpr std::size_t kLongestSeparator = 1023;

// A blank line in the two forms that it has, to be kept without a copy.
std::string_view blank_line(std::string_view line) {
    for (const std::string_view blank : {std::string_view("\n"), std::string_view("\r\n")}) {
        if (line == blank) return blank;
    }
    return {};
}

// A line that is too long to be held is text, whatever it begins with: where a block ends must not matter.
bool is_blank(std::string_view line) { return line.size() <= kLongestSeparator && trimmed(line).empty(); }

bool is_separator(std::string_view line) {
    if (!line.starts_with(kSeparator) || line.size() > kLongestSeparator) return false;
    return isNextMsgHeader(std::string(line).c_str()) != 0;
}

std::string_view unquoted(std::string_view line) {
    const std::size_t quotes = line.find_first_not_of(kQuote);
    const bool quoted = quotes != 0 && quotes != std::string_view::npos && line.substr(quotes).starts_with(kSeparator);
    return quoted ? line.substr(1) : line;
}

}  // namespace

void MailboxCutter::feed(std::string_view block) {
    while (!block.empty()) {
        const std::size_t feed = block.find('\n');
        const std::string_view piece = block.substr(0, feed == std::string_view::npos ? feed : feed + 1);
        block.remove_prefix(piece.size());
        position_ += piece.size();
        feed_piece(piece);
    }
}

// A piece is what a block holds of one line.
void MailboxCutter::feed_piece(std::string_view piece) {
    const bool ends = piece.ends_with('\n');
    if (passed_on_) {
        if (in_message_) sink_.content(piece);
    } else if (ends && line_.empty()) {
        take_beginning(piece);
    } else {
        line_ += piece;
        if (!ends && line_.size() <= kLongestSeparator) return;
        take_beginning(line_);
        line_.clear();
        passed_on_ = true;
    }
    if (!ends) return;
    passed_on_ = false;
    line_start_ = position_;
}

void MailboxCutter::take_beginning(std::string_view line) {
    if (take_separator(line)) return;
    if (!in_message_ && is_blank(line)) return;
    if (!in_message_) {
        in_message_ = true;
        sink_.begin({}, line_start_);
    }
    take_text(line);
}

bool MailboxCutter::take_separator(std::string_view line) {
    if (!is_separator(line)) return false;
    end_message();
    in_message_ = true;
    sink_.begin(line, line_start_);
    if (options_.keep_separator) sink_.content(line);
    return true;
}

void MailboxCutter::take_text(std::string_view line) {
    if (!waiting_.empty()) sink_.content(waiting_);
    waiting_ = {};
    const std::string_view blank = blank_line(line);
    if (!blank.empty() && met_blank_ && !options_.keep_separator) {
        waiting_ = blank;
        return;
    }
    met_blank_ = met_blank_ || !blank.empty();
    sink_.content(options_.unquote ? unquoted(line) : line);
}

// The blank line that waits belongs to the mailbox.
void MailboxCutter::end_message() {
    if (in_message_) sink_.end();
    in_message_ = met_blank_ = false;
    waiting_ = {};
}

void MailboxCutter::finish() {
    if (!line_.empty()) take_beginning(line_);
    line_.clear();
    end_message();
}

}  // namespace vel::command
