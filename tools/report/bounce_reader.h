// What mailers write for people about recipients, line by line.
#ifndef VEL_TOOLS_REPORT_BOUNCE_READER_H
#define VEL_TOOLS_REPORT_BOUNCE_READER_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "tools/report/bounce_phrases.h"
#include "tools/report/labels.h"
#include "tools/report/line_address.h"
#include "tools/report/named_recipients.h"
#include "tools/report/transcript.h"

namespace vel::command {

// All mailers write alike: a phrase that says what happened, then each recipient at the beginning of a line with the
// reason behind or below it; old ones also what was said between two hosts. Some give one reason for all, and name
// nobody: that makes one recipient without an address.
class BounceReader {
  public:
    // A line, or the beginning of one that is longer than the reader's. False: the returned message begins, with this
    // line or behind it.
    bool take(std::string_view line);
    void finish();

    ReportedRecipients& recipients() { return recipients_.all(); }
    NamedRecipients& named() { return recipients_; }

  private:
    enum class Told { nothing, recipient, all };  // whom the lines tell the reason of

    std::string_view move_window_to(std::string_view line);
    bool ends_report(std::string_view line, bool is_indented) const;
    void take_blank();
    void take_text(std::string_view line);
    bool continues_reason(std::string_view line) const;
    bool take_label(const Labelled& told);
    bool take_phrase(std::string_view line);
    void take_named(const LineAddress& named);
    std::optional<LineAddress> address_around(const FoundPhrase& phrase, std::string_view line) const;
    bool take_recipients(std::string_view line);
    void take_reason(std::string_view line);
    void add_to_reason(std::string_view text);
    std::string& reason() { return told_ == Told::all ? reason_for_all_ : recipients_[*last_].reason; }
    bool select(std::string_view address, std::string_view action);

    NamedRecipients recipients_;
    Transcript transcript_;
    std::string window_;               // the line in lower case, behind the end of the one before
    std::size_t window_line_ = 0;      // where it begins
    std::string_view action_;          // of the phrase that came last; empty: none has come
    std::size_t indent_ = 0;           // of the line
    std::optional<std::size_t> last_;  // recipient; nothing: none, or there was no room for it
    std::size_t last_indent_ = 0;      // of the line that has named it
    Told told_ = Told::nothing;
    bool is_parted_ = false;      // a blank line stands before this one
    bool awaits_reason_ = false;  // a label has announced it
    std::string reason_for_all_;
    std::string action_for_all_;
};

}  // namespace vel::command

#endif
