// The gateway's own name, which completes addresses that have none.
#ifndef VEL_BUILD_GATEWAY_H
#define VEL_BUILD_GATEWAY_H

#include "frame/settings.h"

namespace vel {

constexpr Setting<128> kGatewayHostName{"Connection", "GatewayHostName", ""};
constexpr Setting<128> kGatewayDomain{"Connection", "GatewayDomain", ""};

}  // namespace vel

#endif
