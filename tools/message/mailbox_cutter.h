// Cuts a mailbox into messages at its separator lines, in a stream of any length.
#ifndef VEL_TOOLS_MESSAGE_MAILBOX_CUTTER_H
#define VEL_TOOLS_MESSAGE_MAILBOX_CUTTER_H

#include <cstdint>
#include <string>
#include <string_view>

namespace vel::command {

// A separator is a line of at most 1023 bytes for which the library's isNextMsgHeader is true, wherever it
// stands: as for ParseBody, no blank line need stand before it. Lines may be longer; no more than a block
// of one is held in memory.
class MailboxCutter {
  public:
    struct Options {
        bool keep_separator = false;  // each piece is the mailbox's very bytes, separator and blank line
        bool unquote = false;         // one ">" off lines that begin with ">"s and "From "
    };

    // Receives the pieces. What it throws ends the cutting.
    class Sink {
      public:
        virtual ~Sink() = default;
        // A message begins; its separator line, with its line end, stands at the offset. An empty line: text
        // that no separator stands before begins there, blank lines aside.
        virtual void begin(std::string_view separator, uint64_t offset) = 0;
        virtual void content(std::string_view bytes) = 0;
        virtual void end() = 0;
    };

    MailboxCutter(const Options& options, Sink& sink) : options_(options), sink_(sink) {}

    void feed(std::string_view block);
    void finish();

  private:
    void feed_piece(std::string_view piece);
    void take_beginning(std::string_view line);
    bool take_separator(std::string_view line);
    void take_text(std::string_view line);
    void end_message();

    const Options options_;
    Sink& sink_;
    uint64_t line_start_ = 0;
    uint64_t position_ = 0;     // behind what was fed
    std::string line_;          // the beginning of a line that goes on in the next block
    bool passed_on_ = false;    // so is the beginning of the line that is being fed
    bool in_message_ = false;   // or in the text before the first one
    bool met_blank_ = false;    // the message has a blank line: its header block has ended
    std::string_view waiting_;  // a blank line that belongs to the mailbox if the message ends behind it
};

}  // namespace vel::command

#endif
