// Labelled lines for people, one fact a line.
#ifndef VEL_TOOLS_TEXT_FACTS_H
#define VEL_TOOLS_TEXT_FACTS_H

#include <string>
#include <string_view>
#include <vector>

namespace vel::command {

class Facts {
  public:
    // A text of a message or of the command line, shown through visible(); an empty one leaves no line.
    void add(std::string_view label, std::string_view text);

    // A text in the form in which it is shown. Equal labels in a row are written once.
    void add_shown(std::string_view label, std::string text);

    // The labels in one column, the texts in another.
    std::string text() const;

  private:
    struct Fact {
        std::string_view label;
        std::string text;
    };
    std::vector<Fact> facts_;
};

}  // namespace vel::command

#endif
