#include "platform/config/overlay.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "frame/ascii.h"

namespace vel {
namespace {

struct Laid {
    std::string section;
    std::string key;
    std::string value;
};
using Overlay = std::vector<Laid>;

// A plain pointer costs a read no more than a test, and is still there, null, when settings are read
// while the thread ends.
thread_local Overlay* overlay = nullptr;

Overlay& own_overlay() {
    struct Owner {
        ~Owner() { take_all_away(); }
    };
    thread_local const Owner owner;
    if (!overlay) overlay = new Overlay;
    return *overlay;
}

Overlay::iterator find(std::string_view section, std::string_view key) {
    return std::find_if(overlay->begin(), overlay->end(), [=](const Laid& laid) {
        return laid.key == key && ascii::equals_ignoring_case(laid.section, section);
    });
}

}  // namespace

const std::string* overlaid(std::string_view section, std::string_view key) {
    if (!overlay) return nullptr;
    const auto laid = find(section, key);
    return laid == overlay->end() ? nullptr : &laid->value;
}

void lay_over(std::string_view section, std::string_view key, std::string_view value) {
    auto& all = own_overlay();
    const auto laid = find(section, key);
    if (laid != all.end()) {
        laid->value = value;
    } else {
        all.push_back(Laid{std::string(section), std::string(key), std::string(value)});
    }
}

void take_away(std::string_view section, std::string_view key) {
    if (!overlay) return;
    const auto laid = find(section, key);
    if (laid != overlay->end()) overlay->erase(laid);
}

void take_all_away() { delete std::exchange(overlay, nullptr); }

}  // namespace vel
