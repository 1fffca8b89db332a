#include "tools/text/facts.h"

#include <algorithm>

#include "tools/text/text_forms.h"

namespace vel::command {

void Facts::add(std::string_view label, std::string_view text) {
    if (!text.empty()) add_shown(label, visible(text));
}

void Facts::add_shown(std::string_view label, std::string text) { facts_.push_back({label, std::move(text)}); }

std::string Facts::text() const {
    constexpr std::size_t kBetween = 2;
    std::size_t width = 0;
    for (const Fact& fact : facts_) width = std::max(width, fact.label.size() + kBetween);
    std::string result;
    std::string_view before;
    for (const Fact& fact : facts_) {
        const std::string_view label = fact.label == before ? std::string_view() : fact.label;
        result.append(label).append(width - label.size(), ' ').append(fact.text).append("\n");
        before = fact.label;
    }
    return result;
}

}  // namespace vel::command
