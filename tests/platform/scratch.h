// What the tests of the local libraries stand on: a directory that holds their "ostra.ini".
#ifndef VEL_TESTS_PLATFORM_SCRATCH_H
#define VEL_TESTS_PLATFORM_SCRATCH_H

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "vel/platform/config.h"

namespace vel::test {

class Scratch : public testing::Test {
  protected:
    Scratch() {
        std::string pattern = (std::filesystem::temp_directory_path() / "vel-platform-XXXXXX").string();
        directory_ = ::mkdtemp(pattern.data());
        ::setenv("OSTRA_CONFIG_DIR", directory_.c_str(), 1);
    }
    ~Scratch() override {
        ProfileOverlayClear();
        std::error_code ignored;
        std::filesystem::remove_all(directory_, ignored);
    }

    std::string path(std::string_view name) const { return (directory_ / name).string(); }

    // Truncates and fills, as an editor that keeps the inode does.
    std::string write(std::string_view name, std::string_view bytes) const {
        std::ofstream(path(name), std::ios::binary) << bytes;
        return path(name);
    }
    void configure(std::string_view text) const { write("ostra.ini", text); }

    std::string content(std::string_view name) const {
        std::ifstream in(path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    }

    std::vector<std::string> names() const {
        std::vector<std::string> all;
        for (const auto& entry : std::filesystem::directory_iterator(directory_))
            all.push_back(entry.path().filename());
        return all;
    }

    // A setting, read into a buffer of exactly that size on the heap; "-" when it is not there.
    static std::string setting(const char* section, const char* key, const char* file = "ostra.ini", int size = 64) {
        const std::vector<char> full(static_cast<std::size_t>(size), '#');
        std::vector<char> buffer = full;
        const int count = GetPrivateProfileString(section, key, "-", buffer.data(), size, file);
        EXPECT_LT(count, size);
        std::string text(buffer.data());
        EXPECT_EQ(text.size(), static_cast<std::size_t>(count));
        return text;
    }

  private:
    std::filesystem::path directory_;
};

}  // namespace vel::test

#endif
