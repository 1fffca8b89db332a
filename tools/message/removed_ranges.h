// What a copy of a file lacks: from offsets of the copy to offsets of the file.
#ifndef VEL_TOOLS_MESSAGE_REMOVED_RANGES_H
#define VEL_TOOLS_MESSAGE_REMOVED_RANGES_H

#include <cstdint>
#include <vector>

#include "tools/io/library_owned.h"

namespace vel::command {

class RemovedRanges {
  public:
    // Takes ranges away from the copy, in order and given by its offsets so far.
    void remove(const std::vector<Range>& from_copy);

    // Where a byte of the copy stands in the file. With nothing removed, that is the same offset.
    uint32_t in_file(uint32_t offset) const;
    Range in_file(Range range) const;

  private:
    // The copy has, from an offset on, so many bytes less before it.
    struct Cut {
        uint32_t offset;
        uint32_t missing;
    };
    std::vector<Range> ranges_;  // of the file, in order, without overlaps
    std::vector<Cut> cuts_;
};

}  // namespace vel::command

#endif
