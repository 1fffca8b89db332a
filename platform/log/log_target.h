// Where log lines go.
#ifndef VEL_PLATFORM_LOG_LOG_TARGET_H
#define VEL_PLATFORM_LOG_LOG_TARGET_H

#include "platform/log/log_record.h"

namespace vel {

// Writes a line to what the settings name, or to nothing when they do not want its level. False when
// the target does not take it.
bool write_to_target(int level, const LogRecord& record);

// Writes a line to where a service manager collects it.
void write_to_stderr(const LogRecord& record);

}  // namespace vel

#endif
