// Where a verb's one result goes: standard output, or a file that appears whole or not at all.
#ifndef VEL_TOOLS_IO_TARGET_H
#define VEL_TOOLS_IO_TARGET_H

#include <sys/types.h>

#include <optional>
#include <string>

#include "tools/io/descriptor.h"
#include "tools/io/session.h"

namespace vel::command {

class Target {
  public:
    // The path "-" is standard output. A regular file is replaced in the end and keeps its mode; what is none,
    // such as a device or a pipe, is written to. Throws Failure for a path that can be told to be impossible now.
    Target(const std::string& path, Session& session);

    // Where a file is made that becomes the result.
    Scratch& scratch() { return *scratch_; }

    // What the result is written to, step by step; finish() puts it into its place. Throws Failure.
    int descriptor();
    void finish();

    // Has a finished file in scratch() be the result. Throws Failure and BrokenOutput.
    void take(const std::string& file);

    // Whether an error of the system (errno) is one of writing, and what is thrown then: BrokenOutput for
    // standard output, Failure otherwise.
    bool is_to_blame_for(int error) const;
    [[noreturn]] void fail(int error);

  private:
    bool is_standard_output() const { return path_.empty(); }
    void choose_place(const std::string& path, Session& session);
    void place(const std::string& file);

    std::string path_;  // empty: standard output
    Output& output_;
    Scratch* scratch_;
    mode_t mode_ = 0;
    std::string prepared_;           // the file that descriptor() writes
    std::optional<Descriptor> out_;  // of the prepared file, or of what is no regular one
    bool streams_ = true;            // what is written is out of hand
    bool hands_out_ = false;         // descriptor() was asked for
};

}  // namespace vel::command

#endif
