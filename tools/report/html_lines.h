// HTML as lines of text, as far as a report needs it: no program is asked, and nothing is fetched.
#ifndef VEL_TOOLS_REPORT_HTML_LINES_H
#define VEL_TOOLS_REPORT_HTML_LINES_H

#include <string>
#include <string_view>

namespace vel::command {

// Blanks are one blank; paragraphs have a blank line between them; cells and other blocks are lines. Scripts, styles
// and comments are left out. Characters beyond ASCII stay as they are.
class HtmlLines {
  public:
    // Adds to the text what some bytes of HTML yield, in pieces of any size.
    void more(std::string_view html, std::string& text);
    void finish(std::string& text);  // with the line's end

  private:
    enum class Phase { text, entity, tag, comment };

    void take(char c, std::string& text);
    void take_in_comment(char c);
    void end_tag(std::string& text);
    void end_entity(bool has_semicolon, std::string& text);
    void put(std::string_view piece, std::string& text);
    void break_line(std::size_t ends, std::string& text);

    Phase phase_ = Phase::text;
    std::string word_;      // of a tag or an entity, as much as tells it
    std::string hidden_;    // the element whose content is left out
    char quote_ = '\0';     // that an attribute stands in
    std::size_t ends_ = 2;  // line ends that the text has now
    bool has_blank_ = false;
};

}  // namespace vel::command

#endif
