// Delimiter lines of multiparts (RFC 2046 section 5.1.1).
#ifndef VEL_TOOLS_MESSAGE_DELIMITERS_H
#define VEL_TOOLS_MESSAGE_DELIMITERS_H

#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "tools/text/ascii.h"

namespace vel::command {

constexpr std::string_view kClosingMark = "--";

enum class Delimiter { none, opening, closing };

// A line that is known to begin with a delimiter of this length.
inline Delimiter kind_behind(std::string_view line, std::size_t length) {
    return line.substr(length).starts_with(kClosingMark) ? Delimiter::closing : Delimiter::opening;
}

// The delimiters of the multiparts that are open, "--" and the boundary; several may have the same one.
class OpenDelimiters {
  public:
    void open(std::string delimiter) {
        all_.insert(delimiter);
        levels_.push_back(std::move(delimiter));
    }

    // Leaves the innermost one.
    void close() {
        all_.erase(all_.find(levels_.back()));
        levels_.pop_back();
    }

    bool empty() const { return levels_.empty(); }
    const std::string& innermost() const { return levels_.back(); }

    // What a line is to the innermost multipart. The parser knows it by its beginning, whatever follows.
    Delimiter find_innermost(std::string_view line) const {
        if (empty() || !line.starts_with(innermost())) return Delimiter::none;
        return kind_behind(line, innermost().size());
    }

    // What a line is as a whole to any of them, blanks at its end aside.
    Delimiter find(std::string_view line) const {
        if (!line.starts_with(kClosingMark)) return Delimiter::none;
        std::string text(line.substr(0, line.find_last_not_of(kBlanks) + 1));
        if (all_.contains(text)) return Delimiter::opening;
        if (!text.ends_with(kClosingMark)) return Delimiter::none;
        text.resize(text.size() - kClosingMark.size());
        return all_.contains(text) ? Delimiter::closing : Delimiter::none;
    }

  private:
    std::vector<std::string> levels_;
    std::unordered_multiset<std::string> all_;
};

}  // namespace vel::command

#endif
