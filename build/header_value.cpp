// Kept: addresses are completed by their text alone, whatever address it stands for (qualified).
// Kept: a value that begins with a double quote loses its last character, whatever that is (process_param).
#include "build/header_value.h"

#include <string>
#include <string_view>

#include "build/gateway.h"
#include "frame/at_boundary.h"
#include "frame/owned.h"
#include "vel/japanese.h"
#include "vel/words.h"

namespace vel {
namespace {

constexpr Setting<256> kRelay{"Routing", "PrimaryRelayHostName", ""};
constexpr Setting<16> kQualifiesHosts{"Options", "QualifyRecipientHosts", "YES"};

std::string qualified(std::string_view address) {
    std::string result(address);
    const std::size_t at = address.find('@');
    if (at == address.npos) {
        const SettingText<256> relay = read(kRelay);
        if (*relay.data()) return result.append("@").append(relay.data());
        return result.append("@").append(read(kGatewayHostName).data()).append(".").append(read(kGatewayDomain).data());
    }
    const bool has_domain = address.find('.', at) != address.npos;
    if (!has_domain && !is(read(kQualifiesHosts), "NO")) result.append(".").append(read(kGatewayDomain).data());
    return result;
}

std::string_view without_quotes(std::string_view value) {
    if (!value.starts_with('"')) return value;
    value.remove_prefix(1);
    return value.substr(0, value.empty() ? 0 : value.size() - 1);
}

std::string escaped(std::string_view value) {
    constexpr std::string_view kSpecial = "\"\\\r\n";
    std::string result;
    result.reserve(value.size());
    for (const char c : value) {
        if (kSpecial.find(c) != kSpecial.npos) result += '\\';
        result += c;
    }
    return result;
}

COwned<char> quoted_parameter(std::string_view parameter) {
    const std::size_t equals = parameter.find('=');
    if (equals == parameter.npos) return nullptr;
    const std::string value = escaped(without_quotes(parameter.substr(equals + 1)));
    const COwned<char> encoded(rfc1522encoding(value.c_str()));
    std::string result(parameter.substr(0, equals + 1));
    result.append("\"").append(encoded ? encoded.get() : value.c_str()).append("\"");
    return copy_text(result);
}

}  // namespace
}  // namespace vel

char* processAddress(const char* address, int is_sender, int jis) {
    if (!address) return nullptr;
    return vel::at_boundary<char*>(nullptr, [=] {
        const std::string text = is_sender ? address : vel::qualified(address);
        const vel::COwned<char> converted(jis ? bufShiftJIS2JIS(text.c_str()) : nullptr);
        return rfc1522encoding(converted ? converted.get() : text.c_str());
    });
}

char* process_param(const char* parameter) {
    if (!parameter) return nullptr;
    return vel::at_boundary<char*>(nullptr, [=] { return vel::quoted_parameter(parameter).release(); });
}
