#include "tests/support/fixture.h"

#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <ostream>
#include <stdexcept>

#include "tests/support/memory.h"
#include "vel/frame.h"
#include "vel/platform/config.h"
#include "vel/platform/log.h"

namespace vel::test {
namespace {

// The zone of every test: two offsets, neither of them zero.
const int kZoneIsFixed = [] {
    ::setenv("TZ", "EST5EDT", 1);
    ::tzset();
    return 0;
}();

// Asked once: start-up sets TMP to a test's own directory.
const std::filesystem::path kTemporaryRoot = std::filesystem::temp_directory_path();

std::filesystem::path make_directory() {
    std::string pattern = (kTemporaryRoot / "vel-test-XXXXXX").string();
    if (!::mkdtemp(pattern.data())) throw std::runtime_error("no temporary directory");
    return pattern;
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const LogLine& line) {
    return out << line.level << ' ' << line.application << ": " << line.text;
}

VelTest::VelTest() : directory_(make_directory()) {
    std::strcpy(iniFileName, "ostra.ini");
    std::strcpy(appName, "test");
    InitLineIO();
    set("Gateway", "TemporaryDirectory", directory_.c_str());
    LogCaptureStart(capture, this);
}

VelTest::~VelTest() {
    LogCaptureStop();
    ProfileOverlayClear();
    for (const LogLine& line : log_) {
        if (line.level == 1) ADD_FAILURE() << "a log line that the test does not expect: " << line;
    }
    std::error_code ignored;
    std::filesystem::remove_all(directory_, ignored);
}

std::string VelTest::file(const std::string& name, std::string_view content) const {
    const std::filesystem::path path = directory_ / name;
    std::filesystem::remove(path);  // Cheaper than truncating: file systems sync a file that is written over.
    std::ofstream(path, std::ios::binary) << content;
    return path.string();
}

std::string VelTest::content(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    EXPECT_TRUE(in) << path;
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::vector<std::string> VelTest::left_behind(std::string_view prefix) const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(directory_)) {
        const std::string name = entry.path().filename().string();
        if (name.starts_with(prefix)) names.push_back(name);
    }
    return names;
}

void VelTest::set(const char* section, const char* key, const char* value) { ProfileOverlaySet(section, key, value); }

std::vector<LogLine> VelTest::take_log() { return std::exchange(log_, {}); }

std::vector<std::string> VelTest::take_log(int level) {
    std::vector<std::string> texts;
    for (const LogLine& line : std::exchange(log_, {})) {
        if (line.level == level) {
            texts.push_back(line.text);
        } else {
            log_.push_back(line);
        }
    }
    return texts;
}

void VelTest::capture(void* self, int level, const char* application, const char* text) {
    const PlentyOfMemory plenty;
    static_cast<VelTest*>(self)->log_.push_back({level, application, text});
}

QuietLog::QuietLog() {
    LogCaptureStart([](void*, int, const char*, const char*) {}, nullptr);
}

QuietLog::~QuietLog() { LogCaptureStop(); }

std::unique_ptr<char[]> exact(std::string_view text) {
    auto copy = std::make_unique<char[]>(text.size() + 1);
    std::copy(text.begin(), text.end(), copy.get());
    return copy;
}

std::string crlf(std::string_view text) {
    std::string result;
    for (const char c : text) {
        if (c == '\n') result += '\r';
        result += c;
    }
    return result;
}

std::vector<std::string> split(std::string_view text) {
    std::vector<std::string> pieces(1);
    for (const char c : text) c == '|' ? void(pieces.emplace_back()) : pieces.back().push_back(c);
    return pieces;
}

uint32_t Random::below(uint32_t bound) {
    state_ = state_ * 6364136223846793005u + 1442695040888963407u;
    return static_cast<uint32_t>((state_ >> 33) % bound);
}

}  // namespace vel::test
