#include "tools/io/caller_zone.h"

#include <cstdlib>

namespace vel::command {

const std::string& caller_zone() {
    static const std::string zone = [] {
        const char* set = std::getenv("TZ");
        return std::string(set ? set : "");
    }();
    return zone;
}

}  // namespace vel::command
