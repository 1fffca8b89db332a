// A Japanese file in its place.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "codec/japanese_lines.h"
#include "codec/japanese_settings.h"
#include "frame/access.h"
#include "frame/at_boundary.h"
#include "frame/line_file.h"
#include "frame/log.h"
#include "frame/open_handle.h"
#include "vel/japanese.h"

namespace vel {
namespace {

constexpr Setting<128> kScan{"Options", "ScanForJIS", "NO"};
constexpr Setting<128> kScanJapanese{"Options", "ScanForJIS", "YES"};
constexpr Setting<128> kRepair{"Options", "RepairDamagedJIS", "YES"};
constexpr const char* kOutOfMemory = "out of memory";
constexpr const char* kPrefix = "MIME";
constexpr std::size_t kPiece = 65536;  // bytes copied at once

struct Removed {
    void operator()(char* path) const {
        std::remove(path);
        std::free(path);
    }
};
using TemporaryFile = std::unique_ptr<char, Removed>;

bool is_wanted() { return !is(read(is_locally_japanese() ? kScanJapanese : kScan), "NO"); }

bool fail(const char* message) {
    log_text(kLogError, message);
    return false;
}

// A file takes another one's place when all of it is on the disk.
bool is_stored(int fd) { return ::fsync(fd) == 0; }

bool copy(int in, int out) {
    const auto piece = std::make_unique_for_overwrite<char[]>(kPiece);
    ssize_t got = 0;
    while ((got = read_again(in, piece.get(), kPiece)) > 0) {
        if (!write_all(out, piece.get(), static_cast<std::size_t>(got))) return false;
    }
    return got == 0 && is_stored(out);
}

// Across file systems: by a copy beside the target, so that no moment is without a whole file.
bool replace_by_copy(const char* source, const char* target) {
    std::string beside = std::string(target) + ".XXXXXX";
    const Descriptor in(::open(source, O_RDONLY | O_CLOEXEC));
    const Descriptor out(::mkostemp(beside.data(), O_CLOEXEC));
    if (!out) return false;
    if (in && copy(in.get(), out.get()) && std::rename(beside.c_str(), target) == 0) return true;
    std::remove(beside.c_str());
    return false;
}

bool replace(TemporaryFile source, const char* target) {
    if (std::rename(source.get(), target) != 0) return errno == EXDEV && replace_by_copy(source.get(), target);
    std::free(source.release());  // Others may have that name now.
    return true;
}

bool convert(const char* path, int out) {
    const OpenHandle in(fileopen(path, kForReading, kUnbuffered));
    if (!in) return fail("fileopen failed.");
    const bool converted = convert_jis(in.get(), out, is(read(kRepair), "YES")) && is_stored(out);
    return converted || fail("JIS2ShiftJIS conversion failed.");
}

bool convert_in_place(const char* path) {
    COwned<char> name(_veltempnam(nullptr, kPrefix));
    if (!name) return fail(kOutOfMemory);
    const OpenHandle out(filecreate(name.get(), kForWriting, kUnbuffered));
    if (!out) return fail("filecreate failed.");
    TemporaryFile converted(name.release());
    return convert(path, out.get()) && (replace(std::move(converted), path) || fail("rename failed."));
}

}  // namespace
}  // namespace vel

extern "C" int CheckJapanese(const char* path) {
    if (!vel::is_wanted()) return 0;
    return vel::at_boundary(
        -1, [] { vel::fail(vel::kOutOfMemory); }, [=] { return vel::convert_in_place(path) ? 0 : -1; });
}
