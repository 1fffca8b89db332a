// Header blocks of a file, one behind the other, then a mailbox's bodies; and the whole input as one
// field from a heap block of exactly its size.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "frame/owned.h"
#include "vel/frame.h"
#include "vel/platform/log.h"
#include "vel/rfc822.h"

namespace {

// An unnamed file in memory, which the descriptor calls open by its path.
class MemoryFile {
  public:
    MemoryFile(const uint8_t* data, size_t size) : fd_(::memfd_create("fuzz", 0)) {
        if (::write(fd_.get(), data, size) != static_cast<ssize_t>(size)) std::abort();
    }
    std::string path() const { return "/proc/self/fd/" + std::to_string(fd_.get()); }

  private:
    vel::Descriptor fd_;
};

void parse_blocks(const std::string& path) {
    const int handle = fileopen(path.c_str(), 1, 0);
    for (int lines = 1; lines > 0;) {
        addr822* header = New822Header();
        int status = 0;
        if (!ParseHdr(handle, header, &lines, &status) || status > lines) std::abort();
        Free822Header(header);
    }
    fileclose(handle);
}

void skip_bodies(const std::string& path) {
    FILE* stream = std::fopen(path.c_str(), "rb");
    char line[1024];
    long position = 0;
    while (ParseBody(stream, &position, nullptr) == 1 && std::fgets(line, sizeof line, stream)) continue;
    std::fclose(stream);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    LogCaptureStart([](void*, int, const char*, const char*) {}, nullptr);
    InitLineIO();
    Init822Parser();
    const MemoryFile file(data, size);
    parse_blocks(file.path());
    skip_bodies(file.path());
    addr822* header = New822Header();
    ParseLine(vel::copy_text({reinterpret_cast<const char*>(data), size}).get(), header);
    Free822Header(header);
    return 0;
}
