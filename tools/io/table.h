// Columns of text for people.
#ifndef VEL_TOOLS_IO_TABLE_H
#define VEL_TOOLS_IO_TABLE_H

#include <string>
#include <string_view>
#include <vector>

#include "tools/io/output.h"

namespace vel::command {

class Table {
  public:
    enum class Align { left, right };

    struct Column {
        std::string_view heading;
        Align align = Align::left;
    };

    explicit Table(std::vector<Column> columns) : columns_(std::move(columns)) {}

    // One cell a column, already in the form in which it is shown.
    void add(std::vector<std::string> row) { rows_.push_back(std::move(row)); }
    bool empty() const { return rows_.empty(); }

    // Writes the headings and the rows.
    void print(Output& output) const;

  private:
    std::vector<std::size_t> widths() const;

    std::vector<Column> columns_;
    std::vector<std::vector<std::string>> rows_;
};

}  // namespace vel::command

#endif
