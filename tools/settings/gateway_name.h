// The name of the gateway.
#ifndef VEL_TOOLS_SETTINGS_GATEWAY_NAME_H
#define VEL_TOOLS_SETTINGS_GATEWAY_NAME_H

#include <string>

namespace vel::command {

// "mx.example.com", from [Connection] GatewayHostName and GatewayDomain: without both its notices would be from nobody
// and for nobody. Throws Failure (config) when one is not set.
std::string gateway_name();

}  // namespace vel::command

#endif
