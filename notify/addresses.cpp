#include "notify/addresses.h"

#include <cstring>

#include "build/envelope_address.h"
#include "build/texts.h"
#include "frame/settings.h"
#include "rfc822/address_list.h"

namespace vel {
namespace {

constexpr Setting<256> kBounceSender{"Options", "BounceSender", "postmaster"};
constexpr Setting<128> kReportSender{"Options", "BounceSender", "postmaster"};

std::string at_gateway(const char* local) { return std::string(local).append("@").append(gateway_name()); }

}  // namespace

std::string postmaster() { return at_gateway("postmaster"); }

bool is_somebody_else(const std::string& text) {
    const Addresses parsed(text);
    return parsed.count() == 1 && !ascii::equals_ignoring_case(or_empty(parsed.first()->canon), postmaster());
}

std::string bounce_sender() {
    const SettingText<256> text = read(kBounceSender);
    if (!*text.data()) return postmaster();
    const bool is_whole = std::strcmp(text.data(), "<>") == 0 || std::strchr(text.data(), '@');
    return is_whole ? text.data() : at_gateway(text.data());
}

std::string report_sender() {
    const SettingText<128> text = read(kReportSender);
    const Addresses parsed(text.data());
    if (parsed.count() != 1) return postmaster();
    const recipient& address = *parsed.first();
    if (is_empty(address.domain)) return at_gateway(or_empty(address.local));
    return std::string(or_empty(address.local)).append("@").append(address.domain);
}

}  // namespace vel
