// What a verb says of an option or argument that it has declared.
#ifndef VEL_TOOLS_VERBS_OPTION_H
#define VEL_TOOLS_VERBS_OPTION_H

#include <string>
#include <vector>

namespace CLI {
class Option;
}

namespace vel::command {

// A handle, to be copied: the option itself lives in its CommandLine.
class Option {
  public:
    explicit Option(CLI::Option* option) : option_(option) {}

    Option& required();
    Option& shows_default();  // in the help
    Option& one_each();       // may be repeated, with one value each time
    Option& needs(const Option& other);
    Option& excludes(const Option& other);

    // What values it takes.
    enum class LetterCase { counts, does_not_count };
    Option& one_of(std::vector<std::string> words, LetterCase letter_case = LetterCase::counts);
    Option& between(int lowest, int highest);
    Option& positive();  // not 0; beside one of the next three
    Option& number();    // not negative
    Option& size();      // in bytes, or with K, M, G for powers of 1024
    Option& duration();  // in seconds, from a number with s, m, h or d
    Option& channel();   // a name that is not empty

    bool is_given() const;
    std::string name() const;

  private:
    CLI::Option* option_;
};

}  // namespace vel::command

#endif
