// The message that a notice is about, in the queue.
#ifndef VEL_NOTIFY_ORIGINAL_H
#define VEL_NOTIFY_ORIGINAL_H

#include <string>

#include "notify/parts.h"

namespace vel {

// The file of a message whose path is given without ".msg".
std::string message_file(const char* path);

// What stands behind the last "/" of a path; all of it when there is none.
const char* last_part(const char* path);

// Adds a message's header block as a part: its lines up to the first one that begins with CR LF.
enum class EnvelopeLines { kept, dropped };
Trouble add_header_block(Parts& parts, const std::string& message, EnvelopeLines which);

}  // namespace vel

#endif
