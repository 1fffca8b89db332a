// Addresses as an envelope has them.
#ifndef VEL_BUILD_ENVELOPE_ADDRESS_H
#define VEL_BUILD_ENVELOPE_ADDRESS_H

#include <string>

namespace vel {

// "host.domain" of this gateway.
std::string gateway_name();

struct Sender {
    std::string address;
    std::string domain;  // the sender's, or this gateway's
};

// The sender in its canonical form, or as it is given when that is not one address.
Sender envelope_sender(const char* given);

// The first address of a text, without its phrase, with the gateway's or the relay's name when it has no domain; what
// is no address is taken as it is. Empty for an empty text.
std::string envelope_recipient(const char* given);

}  // namespace vel

#endif
