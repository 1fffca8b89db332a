// One file through a codec of the library.
#ifndef VEL_TOOLS_IO_TRANSFER_H
#define VEL_TOOLS_IO_TRANSFER_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "tools/io/input.h"
#include "tools/io/target.h"

namespace vel::command {

// Of a call of the library: null when it has done its work, otherwise what its failure means when the system is
// not to blame.
using Wrong = const char*;

constexpr Wrong unless(bool done, const char* wrong = "cannot be read") { return done ? nullptr : wrong; }

// The codecs read handles or files, write handles or files, and hand out no reason when they fail. Here the
// system's errors are told from bad data, and what comes out gets to its place. All functions throw Failure, and
// BrokenOutput for standard output.
class Transfer {
  public:
    Transfer(const std::string& name, Target& target, Session& session)
        : name_(name), target_(target), session_(session) {}

    const std::string& name() const { return name_; }
    Session& session() { return session_; }

    // What is read: a descriptor, from where it stands to its end, perhaps a pipe; or a regular file of less than
    // 2 GiB, and its size, for which a pipe is copied.
    int stream();
    const std::string& path();
    int32_t size();

    // What is written: to a descriptor; to a new file of a given path; to a file that the call has made.
    void write(const std::function<Wrong(int out)>& call);
    void write_new(const std::function<Wrong(const char* path)>& call);
    void write_made(const std::function<Wrong(char** path)>& call);

  private:
    void run(const std::function<Wrong()>& call);

    const std::string name_;
    Target& target_;
    Session& session_;
    std::optional<Descriptor> opened_;
    std::optional<Input> input_;
};

}  // namespace vel::command

#endif
