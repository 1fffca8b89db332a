#include "tools/report/fate.h"

#include <array>

#include "tools/report/status_code.h"
#include "tools/text/ascii.h"

namespace vel::command {
namespace {

struct Action {
    std::string_view beginning;
    Fate fate;
};

constexpr std::array kActions{
    Action{"delivered", Fate::delivered}, Action{"relay", Fate::relayed},          Action{"expand", Fate::expanded},
    Action{"delay", Fate::delayed},       Action{"fail", Fate::permanent_failure},
};

Fate by_action(std::string_view action) {
    for (const Action& row : kActions) {
        if (begins(action, row.beginning)) return row.fate;
    }
    return Fate::unknown;
}

// The class of the first code; NUL: there is none.
char class_of(std::string_view status, std::string_view reason) {
    for (const std::string_view code :
         {enhanced_code_in(status), reply_code_in(status), enhanced_code_in(reason), reply_code_in(reason)}) {
        if (!code.empty()) return code.front();
    }
    return '\0';
}

}  // namespace

const char* name_of(Fate fate) {
    switch (fate) {
        case Fate::delivered: return "delivered";
        case Fate::relayed: return "relayed";
        case Fate::expanded: return "expanded";
        case Fate::delayed: return "delayed";
        case Fate::temporary_failure: return "temporary failure";
        case Fate::permanent_failure: return "permanent failure";
        case Fate::unknown: break;
    }
    return "unknown";
}

Fate fate_of(std::string_view action, std::string_view status, std::string_view reason) {
    const Fate told = by_action(action);
    const char code_class = class_of(status, reason);
    if (told == Fate::permanent_failure && code_class == '4') return Fate::temporary_failure;
    if (told != Fate::unknown) return told;
    switch (code_class) {
        case '2': return Fate::delivered;
        case '4': return Fate::temporary_failure;
        case '5': return Fate::permanent_failure;
        default: return Fate::unknown;
    }
}

}  // namespace vel::command
