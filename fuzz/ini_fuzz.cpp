// The configuration file: any bytes are read; what is written reads back, and leaves the rest alone.
// The input is section, key, value, each a line, and then the file.
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "vel/platform/config.h"

namespace {

// The file's own directory is removed when the program ends.
struct Scratch {
    std::string directory = (std::filesystem::temp_directory_path() / "vel-fuzz-XXXXXX").string();
    std::string path = std::string(::mkdtemp(directory.data())) + "/f.ini";
    ~Scratch() { std::filesystem::remove_all(directory); }
};

std::string take_line(std::string& rest) {
    const auto line = rest.substr(0, rest.find('\n'));
    rest.erase(0, line.size() + 1);
    return line.c_str();
}

std::string read(const std::string& section, const std::string& key, const std::string& path) {
    static char buffer[1 << 16];
    const int count = GetPrivateProfileString(section.c_str(), key.c_str(), "\n", buffer, sizeof buffer, path.c_str());
    return std::string(buffer, static_cast<std::size_t>(count));
}

void require(bool holds) {
    if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const Scratch scratch;
    std::string rest(reinterpret_cast<const char*>(data), size);
    const auto section = take_line(rest), key = take_line(rest), value = take_line(rest);
    std::ofstream(scratch.path, std::ios::binary) << rest;
    const auto before = read(section, key, scratch.path);
    const auto other = read("Other", "key", scratch.path);
    if (WritePrivateProfileString(section.c_str(), key.c_str(), value.c_str(), scratch.path.c_str())) {
        require(read(section, key, scratch.path) == value);
        require(WritePrivateProfileString(section.c_str(), key.c_str(), nullptr, scratch.path.c_str()));
        require(read(section, key, scratch.path) == "\n");
    } else {
        require(read(section, key, scratch.path) == before);
    }
    require(key == "key" || read("Other", "key", scratch.path) == other);
    return 0;
}
