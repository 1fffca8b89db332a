#include "build/envelope_address.h"

#include <string_view>

#include "build/gateway.h"
#include "build/texts.h"
#include "rfc822/address_list.h"

namespace vel {
namespace {

constexpr Setting<128> kRelay{"Routing", "PrimaryRelayHostName", ""};

}  // namespace

std::string gateway_name() {
    return std::string(read(kGatewayHostName).data()).append(".").append(read(kGatewayDomain).data());
}

Sender envelope_sender(const char* given) {
    const Addresses parsed(or_empty(given));
    if (parsed.count() != 1) return {or_empty(given), gateway_name()};
    const std::string domain = or_empty(parsed.first()->domain);  // No address has one of more than 255 characters.
    return {or_empty(parsed.first()->canon), domain.empty() ? gateway_name() : domain};
}

std::string envelope_recipient(const char* given) {
    const Addresses parsed(or_empty(given));
    if (parsed.count() == 0) return or_empty(given);
    std::string address(or_empty(parsed.first()->local));
    address.append("@");
    const std::string_view domain = or_empty(parsed.first()->domain);
    if (!domain.empty()) return address.append(domain);
    const SettingText<128> relay = read(kRelay);
    return *relay.data() ? address.append(relay.data()) : address.append(gateway_name());
}

}  // namespace vel
