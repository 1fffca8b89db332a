#include "tools/io/line_numbers.h"

#include <algorithm>
#include <numeric>

#include "tools/io/blocks.h"

namespace vel::command {

std::vector<uint64_t> line_numbers(const std::string& path, const std::vector<uint32_t>& offsets) {
    std::vector<std::size_t> order(offsets.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return offsets[a] < offsets[b]; });
    std::vector<uint64_t> lines(offsets.size());
    auto next = order.begin();
    uint64_t position = 0;
    uint64_t line = 1;
    if (offsets.empty()) return lines;
    for_each_block(open_for_reading(path).get(), [&](std::string_view block) {
        for (; next != order.end() && offsets[*next] < position + block.size(); ++next) {
            const auto length = static_cast<std::size_t>(offsets[*next] - position);
            const std::string_view before = block.substr(0, length);
            line += static_cast<uint64_t>(std::count(before.begin(), before.end(), '\n'));
            block.remove_prefix(length);
            position += length;
            lines[*next] = line;
        }
        line += static_cast<uint64_t>(std::count(block.begin(), block.end(), '\n'));
        position += block.size();
        return next != order.end();
    });
    for (; next != order.end(); ++next) lines[*next] = line;
    return lines;
}

}  // namespace vel::command
