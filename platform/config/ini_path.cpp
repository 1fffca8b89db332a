#include "platform/config/ini_path.h"

#include <cstdlib>
#include <cstring>

namespace vel {
namespace {

constexpr std::string_view kDefaultDirectory = "/etc/ostra";

// A program that runs with rights its caller lacks is not led astray by the caller's environment.
std::string_view directory() {
    const char* set = ::secure_getenv("OSTRA_CONFIG_DIR");
    return set && *set ? std::string_view(set) : kDefaultDirectory;
}

}  // namespace

IniPath::IniPath(std::string_view name) {
    if (name.find('/') == name.npos) {
        append(directory());
        append("/");
    }
    append(name);
    if (length_ >= sizeof path_) length_ = 0;
    path_[length_] = '\0';
}

// A part that does not fit is counted, not stored: the whole is too long then.
void IniPath::append(std::string_view part) {
    if (length_ + part.size() < sizeof path_) std::memcpy(path_ + length_, part.data(), part.size());
    length_ += part.size();
}

}  // namespace vel
