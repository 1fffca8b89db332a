#include "tools/io/blocks.h"

#include <fcntl.h>

namespace vel::command {

void throw_too_large() { throw Failure(Exit::bad_data, "2 GiB or more: too large"); }

Descriptor open_for_reading(const std::string& path) {
    Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file) throw Failure::of_system_call(Exit::no_input, "");
    return file;
}

}  // namespace vel::command
