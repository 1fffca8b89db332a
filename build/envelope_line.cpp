#include "build/envelope_line.h"

#include <array>
#include <string_view>

#include "build/gateway.h"
#include "build/texts.h"

namespace vel {
namespace {

constexpr Setting<16> kUsesHostName{"Options", "useHostname", "YES"};

// Indexed by the bits; a set that makes no sense says nothing.
constexpr std::array<std::string_view, 16> kNotify = {
    "",      "NEVER", "SUCCESS",       "", "FAILURE",       "", "SUCCESS,FAILURE",       "",
    "DELAY", "",      "SUCCESS,DELAY", "", "FAILURE,DELAY", "", "SUCCESS,FAILURE,DELAY", "",
};
static_assert(kNotify[VEL_NOTIFY_SUCCESS | VEL_NOTIFY_DELAY] == "SUCCESS,DELAY");

constexpr std::array<std::string_view, 3> kReturn = {"", "HDRS", "FULL"};
static_assert(kReturn[VEL_RET_HDRS] == "HDRS" && kReturn[VEL_RET_FULL] == "FULL");

template <std::size_t Size>
std::string_view name_of(const std::array<std::string_view, Size>& names, int32_t value) {
    return value >= 0 && static_cast<std::size_t>(value) < Size ? names[static_cast<std::size_t>(value)] : "";
}

void add(std::string& line, std::string_view parameter, std::string_view value) {
    if (!value.empty()) line.append(" ").append(parameter).append("=").append(value);
}

std::string completed_sender(std::string_view sender) {
    std::string result(sender);
    const std::size_t at = sender.find('@');
    if (sender == "<>" || (at != sender.npos && sender.find('.', at) != sender.npos)) return result;
    result.append(at == sender.npos ? "@" : ".");
    if (at == sender.npos && is(read(kUsesHostName), "YES")) {
        result.append(read(kGatewayHostName).data()).append(".");
    }
    return result.append(read(kGatewayDomain).data());
}

}  // namespace

std::string line_of(const _envFrom& sender) {
    std::string line = "#F" + completed_sender(or_empty(sender.address));
    add(line, "ENVID", or_empty(sender.envelopeId));
    add(line, "RET", name_of(kReturn, sender.returnType));
    return line;
}

std::string line_of(const _envRecip& recipient) {
    std::string line("#R");
    line.append(or_empty(recipient.address));
    add(line, "ORCPT", or_empty(recipient.originalRecipient));
    add(line, "NOTIFY", name_of(kNotify, recipient.notify));
    return line;
}

}  // namespace vel
