#include "tools/settings/gateway_name.h"

#include "tools/io/exit_code.h"
#include "tools/settings/effective.h"

namespace vel::command {

std::string gateway_name() {
    const std::string host = value_of(row_of("Connection", "GatewayHostName"));
    const std::string domain = value_of(row_of("Connection", "GatewayDomain"));
    if (host.empty() || domain.empty())
        throw Failure(Exit::config,
                      "the gateway has no name: [Connection] GatewayHostName or GatewayDomain is not set");
    return std::string(host).append(".").append(domain);
}

}  // namespace vel::command
