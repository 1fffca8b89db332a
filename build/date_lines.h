// The date lines of a message on its way into the queue.
#ifndef VEL_BUILD_DATE_LINES_H
#define VEL_BUILD_DATE_LINES_H

#include <string>
#include <string_view>

namespace vel {

// Writes the Date and Resent-date lines of a header block anew, for copy_lines.
class WithDatesRewritten {
  public:
    bool is_over() const { return !in_header_; }
    std::string_view operator()(std::string_view line, bool begins);

  private:
    bool rewrite(std::string_view line, std::string_view field);

    bool in_header_ = true;
    bool is_rewritten_ = false;  // the line that the last pieces belong to
    std::string text_;
};

}  // namespace vel

#endif
