#include "tools/message/header_texts.h"

#include <algorithm>
#include <map>
#include <utility>

#include "tools/text/ascii.h"
#include "tools/text/utf8.h"

namespace vel::command {
namespace {

constexpr std::string_view kCut = "...";

class Collector {
  public:
    explicit Collector(std::initializer_list<std::string_view> names) : names_(names) {}

    // A line, or a piece of a long one.
    void take(std::string_view line) {
        const bool begins_line = std::exchange(line_ended_, line.ends_with('\n'));
        const bool folded = begins_line && line.find_first_of(" \t") == 0;
        if (begins_line && !folded) line = begin_field(line);
        if (!wanted_) return;
        if (begins_line) line = line.substr(std::min(line.size(), line.find_first_not_of(kBlanks)));
        if (folded) add(" ");
        add(line);
    }

    std::vector<HeaderText> finish() {
        for (HeaderText& field : fields_) field.text.erase(field.text.find_last_not_of(kBlanks) + 1);
        return std::move(fields_);
    }

  private:
    // Returns what stands behind the name.
    std::string_view begin_field(std::string_view line) {
        const std::size_t colon = std::min(line.size(), line.find(':'));
        const std::string_view name = trimmed(line.substr(0, colon));
        const auto* found = std::find_if(names_.begin(), names_.end(), [&](auto wanted) { return same(wanted, name); });
        wanted_ = found != names_.end() && colon < line.size() && sizes_[*found] < kMostHeaderText;
        if (!wanted_) return line;
        ++sizes_[*found];  // an empty one counts, too
        fields_.push_back({*found, {}});
        return line.substr(colon + 1);
    }

    void add(std::string_view text) {
        if (text.ends_with('\n')) text.remove_suffix(1);
        if (text.ends_with('\r')) text.remove_suffix(1);
        HeaderText& field = fields_.back();
        std::size_t& size = sizes_[field.name];
        const std::string_view kept = cut_to(text, kMostHeaderText - std::min(kMostHeaderText, size));
        size += text.size();
        field.text += kept;
        if (kept.size() == text.size()) return;
        field.text += kCut;
        wanted_ = false;
    }

    const std::initializer_list<std::string_view> names_;
    std::vector<HeaderText> fields_;
    std::map<std::string_view, std::size_t> sizes_;  // of all fields of a name
    bool line_ended_ = true;
    bool wanted_ = false;  // the field that the line belongs to
};

}  // namespace

std::vector<HeaderText> header_texts(LineReader& lines, Range block, std::initializer_list<std::string_view> names) {
    lines.go_to(block.start);
    Collector collector(names);
    while (lines.position() < block.end) {
        const auto line = lines.next();
        if (!line) break;
        collector.take(line->text);
    }
    return collector.finish();
}

}  // namespace vel::command
