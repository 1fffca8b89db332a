#include "tools/message/draw_tree.h"

#include "tools/io/table.h"
#include "tools/message/entity.h"
#include "tools/message/part_name.h"
#include "tools/text/text_forms.h"

namespace vel::command {
namespace {

// Deeper entities are not moved further to the right but told their depth, so that a row's length does
// not grow with the nesting.
constexpr int kDeepestDrawn = 12;

constexpr const char* kNothing = "-";

std::string plural(int number, const std::string& noun, const std::string& ending) {
    return std::to_string(number) + " " + noun + (number == 1 ? "" : ending);
}

std::string range_text(uint32_t start, uint32_t end) { return std::to_string(start) + "-" + std::to_string(end); }

std::string or_nothing(std::string_view text) { return text.empty() ? kNothing : visible(text); }

// Draws the lines that lead to an entity. Rows come in drawing order.
class Branches {
  public:
    explicit Branches(const Tree& tree) : tree_(tree) {}

    std::string lead_to(int index) {
        const int depth = tree_.depth(index);
        if (depth == 0) return {};
        const bool last = tree_.children(tree_.parent(index)).back() == index;
        if (depth > kDeepestDrawn) return open_ + "(depth " + std::to_string(depth) + ") ";
        open_.resize(static_cast<std::size_t>(depth - 1) * kStep.size());
        const std::string lead = open_ + (last ? "`-- " : "|-- ");
        open_ += last ? "    " : kStep;
        return lead;
    }

  private:
    static constexpr std::string_view kStep = "|   ";

    const Tree& tree_;
    std::string open_;  // the branches that go on below the rows drawn so far
};

void add_row(Table& table, const ParsedMessage& message, int index, Branches& branches) {
    const MimeMsg& record = message.record(index);
    const std::optional<Readable> name = given_name(record);
    table.add({std::to_string(index), branches.lead_to(index) + visible(type_of(record)),
               or_nothing(text_of(record.contentTransferEncoding)), std::to_string(record.headerStart),
               range_text(record.bodyStart, record.bodyEnd), std::to_string(size_of_body(record)),
               name ? shown(*name) : kNothing});
}

}  // namespace

std::string heading_of(const ParsedMessage& message) {
    std::string heading = visible(message.name) + ": " + (message.mime ? "MIME" : "not MIME") + ", " +
                          plural(message.tree.count(), "entit", "") + (message.tree.count() == 1 ? "y" : "ies");
    heading +=
        ", " + (message.tree.leaves() == 1 ? std::string("1 leaf") : std::to_string(message.tree.leaves()) + " leaves");
    if (message.input.normalized) heading += ", CR LF copy";
    if (message.fallback != Fallback::none) heading.append(", ").append(name_of(message.fallback));
    return heading;
}

void draw_tree(const ParsedMessage& message, Output& output) {
    using enum Table::Align;
    output.write(heading_of(message).append("\n"));
    Table table(
        {{"part", right}, {"type"}, {"encoding"}, {"header", right}, {"body", right}, {"size", right}, {"name"}});
    Branches branches(message.tree);
    for (const int index : message.tree.drawing_order()) add_row(table, message, index, branches);
    table.print(output);
    for (const Range& range : message.uncovered) {
        output.write("uncovered: bytes " + range_text(range.start, range.end) + " belong to no entity\n");
    }
}

}  // namespace vel::command
