// The numbers of the lines in which bytes of a file stand.
#ifndef VEL_TOOLS_IO_LINE_NUMBERS_H
#define VEL_TOOLS_IO_LINE_NUMBERS_H

#include <cstdint>
#include <string>
#include <vector>

namespace vel::command {

// Reads a file once and gives each offset's line, the first one being 1. An offset behind the end counts
// as the end. Throws Failure.
std::vector<uint64_t> line_numbers(const std::string& path, const std::vector<uint32_t>& offsets);

}  // namespace vel::command

#endif
