// Japanese texts in memory, by way of temporary files.
#include <algorithm>
#include <cstring>

#include "codec/japanese_lines.h"
#include "codec/japanese_settings.h"
#include "frame/access.h"
#include "frame/at_boundary.h"
#include "frame/line_file.h"
#include "frame/new_file.h"
#include "frame/open_handle.h"
#include "vel/japanese.h"

namespace vel {
namespace {

constexpr Setting<128> kRepairInHeaders{"Options", "RepairDamagedJISinHeaders", "YES"};
constexpr const char* kPrefix = "MIME";

// All of a file, or null when there is nothing in it.
COwned<char> content(const char* path) {
    const OpenHandle file(CreateFile(path, kForReading));
    const uint32_t size = file ? GetFileSize(file.get(), nullptr) : 0;
    if (size == 0) return nullptr;
    COwned<char> text(static_cast<char*>(std::malloc(std::size_t{size} + 1)));
    uint32_t got = 0;
    if (!text || !ReadFile(file.get(), text.get(), size, &got, nullptr) || got != size) return nullptr;
    text.get()[size] = '\0';
    return text;
}

template <class Convert>
char* converted(const char* text, Convert convert) {
    if (!text) return nullptr;
    return at_boundary<char*>(nullptr, [=]() -> char* {
        const auto source = NewFile::create(kPrefix, NewFile::Writes::direct);
        if (!source || !write_all(source->handle(), text, std::strlen(text))) return nullptr;
        const OpenHandle in(CreateFile(source->path(), kForReading));
        const auto target = NewFile::create(kPrefix, NewFile::Writes::direct);
        return in && target && convert(in.get(), target->handle()) ? content(target->path()).release() : nullptr;
    });
}

bool is_configured() { return is_locally_japanese() && !is(read(kDisableJisInHeaders), "YES"); }

}  // namespace
}  // namespace vel

extern "C" {

char* bufShiftJIS2JIS(const char* text) {
    return vel::converted(text, [](int in, int out) { return ShiftJIS2JIS(in, out, nullptr) == 0; });
}

char* bufJIS2ShiftJIS(const char* text) { return vel::is_configured() ? bufJIS2ShiftJIS_wmc(text) : nullptr; }

char* bufJIS2ShiftJIS_wmc(const char* text) {
    const bool repairs = vel::is(vel::read(vel::kRepairInHeaders), "YES");
    return vel::converted(text, [=](int in, int out) { return vel::convert_jis(in, out, repairs); });
}

char* EliminateCntrlChars(char* text) {
    if (text) *std::remove_if(text, text + std::strlen(text), vel::ascii::is_control) = '\0';
    return text;
}

}  // extern "C"
