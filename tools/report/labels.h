// What mailers write before what they tell: "Reason: mailbox full".
#ifndef VEL_TOOLS_REPORT_LABELS_H
#define VEL_TOOLS_REPORT_LABELS_H

#include <string_view>

namespace vel::command {

enum class Label {
    none,
    address,
    reason,      // or the beginning of one that needs no label
    diagnostic,  // a reason, with its type: "smtp;550 no"
    host,        // with its type
    aside,       // what is told elsewhere, too
};

struct Labelled {
    Label label;
    std::string_view text;  // behind the label
};

Labelled labelled(std::string_view line);

}  // namespace vel::command

#endif
