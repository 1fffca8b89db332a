// A text of a message, of any size, for a terminal.
#ifndef VEL_TOOLS_TEXT_PLAIN_TEXT_H
#define VEL_TOOLS_TEXT_PLAIN_TEXT_H

#include <string>
#include <string_view>

namespace vel::command {

// Lines end in LF; so does the text, unless it is empty. Tabulators stay; other characters that steer a
// terminal, and bytes that are not UTF-8, become escapes (\x1b, \u202e, \xff). A backslash stays as it is.
class PlainText {
  public:
    // What these make they append.
    void more(std::string_view bytes, std::string& plain);
    void finish(std::string& plain);

  private:
    void take(std::size_t lookahead, std::string& plain);

    std::string waiting_;  // for what follows it
    char last_ = '\n';     // that was made
};

}  // namespace vel::command

#endif
