#include "build/envelope_address.h"

#include <string_view>

#include "build/gateway.h"
#include "build/texts.h"
#include "frame/owned.h"
#include "rfc822/address_list.h"

namespace vel {
namespace {

constexpr Setting<128> kRelay{"Routing", "PrimaryRelayHostName", ""};

// The addresses of a text, parsed from a copy, since parsing changes it.
class Addresses {
  public:
    explicit Addresses(const char* text) { parse_addresses(copy_text(or_empty(text)).get(), table_); }
    Addresses(const Addresses&) = delete;
    Addresses& operator=(const Addresses&) = delete;
    ~Addresses() { Clear_RT(&table_); }

    uint32_t count() const { return table_.count; }
    const recipient* first() const { return table_.first; }

  private:
    RecipTbl table_{};
};

}  // namespace

std::string gateway_name() {
    return std::string(read(kGatewayHostName).data()).append(".").append(read(kGatewayDomain).data());
}

Sender envelope_sender(const char* given) {
    const Addresses parsed(given);
    if (parsed.count() != 1) return {or_empty(given), gateway_name()};
    const std::string domain = or_empty(parsed.first()->domain);  // No address has one of more than 255 characters.
    return {or_empty(parsed.first()->canon), domain.empty() ? gateway_name() : domain};
}

std::string envelope_recipient(const char* given) {
    const Addresses parsed(given);
    if (parsed.count() == 0) return or_empty(given);
    std::string address(or_empty(parsed.first()->local));
    address.append("@");
    const std::string_view domain = or_empty(parsed.first()->domain);
    if (!domain.empty()) return address.append(domain);
    const SettingText<128> relay = read(kRelay);
    return *relay.data() ? address.append(relay.data()) : address.append(gateway_name());
}

}  // namespace vel
