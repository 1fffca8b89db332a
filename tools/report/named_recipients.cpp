#include "tools/report/named_recipients.h"

#include <utility>

#include "tools/text/ascii.h"

namespace vel::command {

std::optional<std::size_t> NamedRecipients::place_of(std::string_view address, std::string_view action) {
    std::string key = lower(address);
    if (all_.is_full() && !places_.contains(key)) {
        all_.add({});
        return std::nullopt;
    }
    const auto [place, is_new] = places_.emplace(std::move(key), all_.kept().size());
    if (is_new) {
        ReportedRecipient added;
        append_report_text(added.address, address);
        added.action = action;
        all_.add(std::move(added));
    }
    return place->second;
}

std::optional<std::size_t> NamedRecipients::known(std::string_view address) const {
    const auto place = places_.find(lower(address));
    return place == places_.end() ? std::nullopt : std::optional(place->second);
}

void add_reason(std::string& reason, std::string_view more) {
    if (!reason.empty() && !more.empty()) append_report_text(reason, " ");
    append_report_text(reason, more);
}

}  // namespace vel::command
