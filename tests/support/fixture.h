// What every test of the library stands on: settings, a temporary directory and a log of its own.
#ifndef VEL_TESTS_SUPPORT_FIXTURE_H
#define VEL_TESTS_SUPPORT_FIXTURE_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vel::test {

struct LogLine {
    int level;
    std::string application;
    std::string text;
    bool operator==(const LogLine&) const = default;
};
std::ostream& operator<<(std::ostream& out, const LogLine& line);

// Starts the line I/O; gives the test a private directory that is its temporary directory too;
// captures the thread's log. Lines at level 1 that the test does not take fail it.
class VelTest : public testing::Test {
  protected:
    VelTest();
    ~VelTest() override;

    const std::filesystem::path& directory() const { return directory_; }

    // Writes a file into the directory and returns its path.
    std::string file(const std::string& name, std::string_view content) const;
    static std::string content(const std::string& path);

    // The names in the directory that start with a prefix: what a call left behind.
    std::vector<std::string> left_behind(std::string_view prefix) const;

    // Sets a setting of ostra.ini for this test's thread.
    static void set(const char* section, const char* key, const char* value);

    // The captured lines since the last call, all of them or the texts of one level.
    std::vector<LogLine> take_log();
    std::vector<std::string> take_log(int level);

  private:
    static void capture(void* self, int level, const char* application, const char* text);

    std::filesystem::path directory_;
    std::vector<LogLine> log_;
};

// Drops the calling thread's log lines: for the threads that a test starts.
class QuietLog {
  public:
    QuietLog();
    ~QuietLog();
};

// A copy on the heap of exactly the text's size and its NUL, so that a read past the end is caught.
std::unique_ptr<char[]> exact(std::string_view text);

// "a\nb" with CR LF line ends.
std::string crlf(std::string_view text);

// The pieces of "a|b".
std::vector<std::string> split(std::string_view text);

// A fixed, portable sequence of numbers for random tests.
class Random {
  public:
    explicit Random(uint64_t seed) : state_(seed) {}
    uint32_t below(uint32_t bound);

  private:
    uint64_t state_;
};

}  // namespace vel::test

#endif
