// Whom notices are from, and the postmaster of this gateway.
#ifndef VEL_NOTIFY_ADDRESSES_H
#define VEL_NOTIFY_ADDRESSES_H

#include <string>

namespace vel {

// "postmaster@host.domain".
std::string postmaster();

// Whether a text is one address, and not the postmaster's.
bool is_somebody_else(const std::string& text);

// From of every bounce: as [Options] BounceSender has it when that is "<>" or has an "@".
std::string bounce_sender();

// From of every report: the one address of [Options] BounceSender, or the postmaster.
std::string report_sender();

}  // namespace vel

#endif
