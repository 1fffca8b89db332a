// Another program, as a child of this process.
#ifndef VEL_TOOLS_IO_CHILD_H
#define VEL_TOOLS_IO_CHILD_H

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/io/descriptor.h"

namespace vel::command {

struct Launch {
    std::string program;                   // its path
    std::vector<std::string> arguments;    // the name that it is called by, then the others
    std::vector<std::string> environment;  // "NAME=value"
    std::vector<int> descriptors;          // what become its 0, 1, 2...; none is lower than what it becomes
    void (*confine)() = nullptr;           // called in the child before the program; may not allocate
};

// A program that cannot be run says why on its descriptor 2 and ends with this code, as a shell's child does.
constexpr int kCannotRun = 127;

// It has a session and a process group of its own, the signals' default actions and no descriptor but those it was
// given. It is killed with the thread that started it, and with this object.
class Child {
  public:
    explicit Child(const Launch& launch);  // throws Failure when there can be no further process
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;
    ~Child();

    // How it ended, as waitpid has it; nothing while it runs. Not to be asked again after the end.
    std::optional<int> ended();

    // A descriptor that can be read, as poll has it, when it has ended; -1 where the system has none.
    int end() const { return end_.get(); }

    // Has a signal end it, and its group. What is left of the group when it has ended is killed then.
    void signal(int number);

  private:
    pid_t process_;
    Descriptor end_;
    bool is_told_ = false;  // to end
};

struct Pipe {
    Descriptor reading, writing;
};

Pipe new_pipe();  // throws Failure

// The path of a program in a directory that $PATH names from the root; nothing when there is none.
std::optional<std::string> find_program(std::string_view name);

}  // namespace vel::command

#endif
