// What the value of a setting may be.
#ifndef VEL_TOOLS_SETTINGS_VALUE_KINDS_H
#define VEL_TOOLS_SETTINGS_VALUE_KINDS_H

#include <string>

namespace vel::command {

// What is wrong with a value, as the rest of a sentence that the value begins; empty: nothing.
using Kind = std::string(const std::string& value);

Kind any_text;
Kind yes_or_no;
Kind true_or_false;
Kind a_number;
Kind a_wait;      // "5d"
Kind some_waits;  // "5m, 1h"
Kind a_host;
Kind a_host_or_nothing;
Kind a_charset;
Kind a_word_encoding;
Kind a_field_name;
Kind a_zone;
Kind log_levels;

// Those that look at the disk.
Kind a_log_target;
Kind a_preamble;
Kind a_queue;
Kind a_temporary_directory;
Kind a_directory_or_nothing;

}  // namespace vel::command

#endif
