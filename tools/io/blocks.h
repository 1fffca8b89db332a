// Reading a file block by block.
#ifndef VEL_TOOLS_IO_BLOCKS_H
#define VEL_TOOLS_IO_BLOCKS_H

#include <cerrno>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <string_view>

#include "tools/io/descriptor.h"
#include "tools/io/exit_code.h"

namespace vel::command {

// The library's positions are 32 bits.
constexpr bool is_too_large(uint64_t size) { return size > uint64_t{std::numeric_limits<int32_t>::max()}; }
[[noreturn]] void throw_too_large();

// Throws Failure.
Descriptor open_for_reading(const std::string& path);

// Calls on_block(text) for each block of a file until that answers false or the file ends.
template <class OnBlock>
void for_each_block(int fd, OnBlock&& on_block) {
    const auto buffer = std::make_unique<char[]>(kBlock);
    for (;;) {
        const ssize_t got = read_block(fd, buffer.get(), kBlock);
        if (got < 0)
            throw Failure::of_system_call(errno == EISDIR || errno == EBADF ? Exit::no_input : Exit::io_error, "");
        if (got == 0 || !on_block(std::string_view(buffer.get(), static_cast<std::size_t>(got)))) return;
    }
}

}  // namespace vel::command

#endif
