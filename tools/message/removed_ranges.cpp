#include "tools/message/removed_ranges.h"

#include <algorithm>

namespace vel::command {
namespace {

// In order, and with those joined that touch or overlap.
std::vector<Range> joined(std::vector<Range> ranges) {
    std::sort(ranges.begin(), ranges.end(), [](Range a, Range b) { return a.start < b.start; });
    std::vector<Range> result;
    for (const Range& range : ranges) {
        if (!result.empty() && range.start <= result.back().end) {
            result.back().end = std::max(result.back().end, range.end);
        } else {
            result.push_back(range);
        }
    }
    return result;
}

}  // namespace

void RemovedRanges::remove(const std::vector<Range>& from_copy) {
    std::vector<Range> all = ranges_;
    for (const Range& range : from_copy) all.push_back(in_file(range));
    ranges_ = joined(std::move(all));
    cuts_.clear();
    uint32_t missing = 0;
    for (const Range& range : ranges_) {
        const uint32_t offset = range.start - missing;
        missing += range.end - range.start;
        cuts_.push_back({offset, missing});
    }
}

uint32_t RemovedRanges::in_file(uint32_t offset) const {
    const auto behind = std::upper_bound(cuts_.begin(), cuts_.end(), offset,
                                         [](uint32_t value, const Cut& cut) { return value < cut.offset; });
    return behind == cuts_.begin() ? offset : offset + (behind - 1)->missing;
}

// The end is that of the range's last byte, so that nothing is counted that was removed behind it.
Range RemovedRanges::in_file(Range range) const {
    const uint32_t start = in_file(range.start);
    return {start, range.end > range.start ? in_file(range.end - 1) + 1 : start};
}

}  // namespace vel::command
