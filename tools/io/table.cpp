#include "tools/io/table.h"

#include <algorithm>

namespace vel::command {
namespace {

constexpr std::size_t kWidest = 60;  // a longer cell moves its row, not the whole table
constexpr std::string_view kBetween = "  ";

// A cell is text, so each byte but those that continue a character begins one (RFC 3629 section 3).
std::size_t width_of(std::string_view cell) {
    std::size_t width = 0;
    for (const char c : cell) width += (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
    return width;
}

void append_cell(std::string& line, std::string_view cell, std::size_t width, Table::Align align) {
    const std::size_t own = width_of(cell);
    const std::string blanks(own < width ? width - own : 0, ' ');
    if (align == Table::Align::right) {
        line.append(blanks).append(cell);
    } else {
        line.append(cell).append(blanks);
    }
}

}  // namespace

std::vector<std::size_t> Table::widths() const {
    std::vector<std::size_t> result;
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        std::size_t width = width_of(columns_[i].heading);
        for (const auto& row : rows_) width = std::max(width, std::min(kWidest, width_of(row[i])));
        result.push_back(width);
    }
    return result;
}

void Table::print(Output& output) const {
    const std::vector<std::size_t> widths = this->widths();
    const auto print_row = [&](auto&& cell_of) {
        std::string line;
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            if (i > 0) line += kBetween;
            append_cell(line, cell_of(i), widths[i], columns_[i].align);
        }
        line.erase(line.find_last_not_of(' ') + 1);
        output.write(line.append("\n"));
    };
    print_row([&](std::size_t i) { return columns_[i].heading; });
    for (const auto& row : rows_) print_row([&](std::size_t i) { return std::string_view(row[i]); });
}

}  // namespace vel::command
