// Names for files that are made from what a message says, which may be anything.
#ifndef VEL_TOOLS_TEXT_SAFE_NAME_H
#define VEL_TOOLS_TEXT_SAFE_NAME_H

#include <cstddef>
#include <string>
#include <string_view>

namespace vel::command {

// Room is left for a suffix that tells equal names apart; file systems take 255 bytes.
constexpr std::size_t kLongestName = 200;

// A name that is safe in a directory of any system: what stands behind the last slash of either kind;
// control characters, bytes that are not UTF-8 and the characters <>:"|?* become "_"; no dots or blanks
// at its ends, no "-" or "~" at its start, no device name of DOS (an "_" is put before "con.txt"); at most
// kLongestName bytes, whole characters, the extension kept. Empty when nothing is left.
std::string safe_name(std::string_view wanted);

// "report.pdf" and 2 make "report-2.pdf".
std::string numbered(std::string_view name, unsigned number);

}  // namespace vel::command

#endif
