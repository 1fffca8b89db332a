// Kept: a file that may be read, and then cannot be opened, leaves the preamble and the empty line before it out; a
// read that fails ends the preamble.
#include "build/preamble.h"

#include <unistd.h>

#include <string>

#include "build/copy_lines.h"
#include "build/texts.h"
#include "frame/access.h"
#include "frame/open_handle.h"
#include "frame/settings.h"

namespace vel {
namespace {

constexpr Setting<4095> kPreambleFile{"Options", "mimePreambleFile", "none"};

constexpr std::string_view kPreamble =
    "\r\n"
    "This is a Mime message, which your current mail reader\r\n"
    "may not understand. Parts of the message will appear as\r\n"
    "text. To process the remainder, you will need to use a Mime\r\n"
    "compatible mail reader. Contact your vendor for details.\r\n";

}  // namespace

bool write_preamble(NewFile& file) {
    const SettingText<4095> path = read(kPreambleFile);
    if (is(path, kPreambleFile.fallback) || ::access(path.data(), R_OK) != 0) return file.put(kPreamble);
    const OpenHandle in(fileopen(path.data(), kForReading, kUnbuffered));
    if (!in) return true;
    return file.put(kLineEnd) && copy_lines(in.get(), file.handle()) != Copied::unwritten;
}

}  // namespace vel
