// Delimiter lines of multiparts (RFC 2046 section 5.1.1).
#ifndef VEL_TOOLS_DELIMITERS_H
#define VEL_TOOLS_DELIMITERS_H

#include <string>
#include <string_view>
#include <unordered_set>

#include "tools/ascii.h"

namespace vel::command {

constexpr std::string_view kClosingMark = "--";

enum class Delimiter { none, opening, closing };

// A line that is known to begin with a delimiter of this length.
inline Delimiter kind_behind(std::string_view line, std::size_t length) {
    return line.substr(length).starts_with(kClosingMark) ? Delimiter::closing : Delimiter::opening;
}

// Delimiters by their whole text, "--" and the boundary; the same one may be in it several times.
class DelimiterSet {
  public:
    void add(std::string delimiter) { all_.insert(std::move(delimiter)); }
    void remove(const std::string& delimiter) {
        if (const auto found = all_.find(delimiter); found != all_.end()) all_.erase(found);
    }

    // What a line is, blanks at its end aside.
    Delimiter find(std::string_view line) const {
        if (!line.starts_with(kClosingMark)) return Delimiter::none;
        std::string text(line.substr(0, line.find_last_not_of(kBlanks) + 1));
        if (all_.contains(text)) return Delimiter::opening;
        if (!text.ends_with(kClosingMark)) return Delimiter::none;
        text.resize(text.size() - kClosingMark.size());
        return all_.contains(text) ? Delimiter::closing : Delimiter::none;
    }

  private:
    std::unordered_multiset<std::string> all_;
};

}  // namespace vel::command

#endif
