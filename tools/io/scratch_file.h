// A file that is written in the private directory, from its start to its end.
#ifndef VEL_TOOLS_IO_SCRATCH_FILE_H
#define VEL_TOOLS_IO_SCRATCH_FILE_H

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "tools/io/descriptor.h"
#include "tools/io/scratch.h"

namespace vel::command {

// What a file gets when it leaves the private directory, as the umask has it.
mode_t mode_of_new_files();

class ScratchFile {
  public:
    explicit ScratchFile(Scratch& scratch);  // throws Failure, as do all of these

    void write(std::string_view bytes);
    uint64_t size() const { return size_; }

    // The whole file; nothing may be written any more.
    PrivateFile finish();

  private:
    void flush();

    PrivateFile file_;
    Descriptor fd_;
    std::string waiting_;
    uint64_t size_ = 0;
};

}  // namespace vel::command

#endif
