// What a sender wants to hear of the delivery, as the command line says it (RFC 3461).
#ifndef VEL_TOOLS_COMPOSE_DELIVERY_WISHES_H
#define VEL_TOOLS_COMPOSE_DELIVERY_WISHES_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vel::command {

// All of these throw Failure (usage) for what is none.

// "success,failure,delay" or "never", as bits of NOTIFY; 0 for an empty text.
int32_t notify_bits(const std::string& list);

// "full" or "hdrs" as RET; 0 for an empty text.
int32_t return_type(const std::string& word);

// An ENVID: xtext of 100 characters at most.
void expect_envelope_id(const std::string& id);

// The ORCPT of each recipient, empty where there is none: "TYPE;XTEXT", without a type that of mail. Those given as
// "ADDRESS=ORCPT" belong to that recipient, the others to the recipients in order.
std::vector<std::string> original_recipients(const std::vector<std::string>& given,
                                             const std::vector<std::string>& recipients);

}  // namespace vel::command

#endif
