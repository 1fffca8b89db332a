// How the command ends: the exit codes of sysexits.h, and the failure of one file.
#ifndef VEL_TOOLS_IO_EXIT_CODE_H
#define VEL_TOOLS_IO_EXIT_CODE_H

#include <stdexcept>
#include <string>

namespace vel::command {

enum class Exit {
    success = 0,
    usage = 64,
    bad_data = 65,
    no_input = 66,
    unavailable = 69,
    cannot_create = 73,
    io_error = 74,
    temporary = 75,
    config = 78,
};

// Of several files the worst code counts.
constexpr Exit worse(Exit a, Exit b) { return a < b ? b : a; }

// Ends the work on one file; the text says why.
class Failure : public std::runtime_error {
  public:
    Failure(Exit exit, const std::string& text) : std::runtime_error(text), exit_(exit) {}
    Exit exit() const { return exit_; }

    // "what: No such file or directory", from errno.
    static Failure of_system_call(Exit exit, const std::string& what);

  private:
    Exit exit_;
};

// Has a failure of some work say what it is about.
template <class Work>
auto under_name(const std::string& name, Work&& work) {
    try {
        return work();
    } catch (const Failure& failure) {
        throw Failure(failure.exit(), name + ": " + failure.what());
    }
}

}  // namespace vel::command

#endif
