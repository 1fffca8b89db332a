#include <cerrno>
#include <cstdarg>
#include <sstream>
#include <thread>

#include <syslog.h>
#include <unistd.h>

#include "tests/platform/scratch.h"
#include "vel/platform/log.h"

namespace {

std::vector<std::string> syslog_lines;  // priority and text

void remember(int priority, const char* format, va_list arguments) {
    char text[256];
    std::vsnprintf(text, sizeof text, format, arguments);
    syslog_lines.push_back(std::to_string(priority) + " " + text);
}

}  // namespace

// Stand before the C library's calls (the second is the first in builds that check formats).
extern "C" VEL_API void syslog(int priority, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    remember(priority, format, arguments);
    va_end(arguments);
}
extern "C" VEL_API void __syslog_chk(int priority, int, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    remember(priority, format, arguments);
    va_end(arguments);
}

namespace vel::test {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;

// Standard error goes to a file while a test runs.
struct Log : Scratch {
    Log() : stderr_(::dup(STDERR_FILENO)) {
        const int fd = ::open(path("stderr").c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
        ::dup2(fd, STDERR_FILENO);
        ::close(fd);
    }
    ~Log() override {
        ::dup2(stderr_, STDERR_FILENO);
        ::close(stderr_);
    }

    // The records of a file, the fields up to the process cut off.
    std::vector<std::string> records(std::string_view name) const {
        std::vector<std::string> all;
        std::istringstream lines(content(name));
        for (std::string line; std::getline(lines, line);) {
            std::string shape = line.substr(0, 30);
            for (char& c : shape) c = c >= '0' && c <= '9' ? '0' : c == '-' ? '+' : c;
            EXPECT_EQ(shape, "0000+00+00T00:00:00.000+00:00 ");
            const auto process = line.find(' ', 30);
            EXPECT_EQ(line.substr(30, process - 30), std::to_string(::getpid()));
            all.push_back(line.substr(process + 1));
        }
        return all;
    }

    void log_to(const std::string& target) const { configure("[Log]\nTarget=" + target + "\n"); }

    const int stderr_;
};
struct LogThreads : Log {};

TEST_F(Log, writes_one_record_that_no_text_can_forge) {
    struct Row {
        const char* application;
        const char* text;
        std::string record;
    };
    const Row rows[] = {
        {"app", "%s%n%d", "1 app %s%n%d"},
        {"app", "LF\n", "1 app LF"},
        {"app", "CR LF\r\n", "1 app CR LF"},
        {"app", "two\n\n", "1 app two\\n"},
        {"app", "a\nb\rc\td\x1b[1m\x7f\x01", "1 app a\\nb\\x0Dc\\x09d\\x1B[1m\\x7F\\x01"},
        {"app", "back\\slash \\n", "1 app back\\\\slash \\\\n"},
        {"app", "\xC3\xA4\x80\xFF", "1 app \xC3\xA4\x80\xFF"},
        {"app", nullptr, "1 app "},
        {"", "x", "1 - x"},
        {nullptr, "\n", "1 - "},
        {"my app\n1", "x", "1 my\\x20app\\n1 x"},
    };
    for (const Row& row : rows) {
        errno = EXDEV;
        LogMessage(1, row.application, row.text);
        EXPECT_EQ(errno, EXDEV);
        EXPECT_EQ(records("stderr").back(), row.record);
    }
    EXPECT_EQ(records("stderr").size(), std::size(rows));
}

TEST_F(Log, keeps_long_texts_whole) {
    for (const std::size_t length : {1900u, 2000u, 2048u, 5000u, 300'000u}) {
        LogMessage(6, "app", std::string(length, 'x').c_str());
        LogMessage(6, "app", std::string(length, '\x01').c_str());
        const auto all = records("stderr");
        ASSERT_GE(all.size(), 2u);
        EXPECT_EQ(all[all.size() - 2], std::string("6 app ") + std::string(length, 'x'));
        EXPECT_EQ(all.back().size(), 6 + 4 * length);
        EXPECT_THAT(all.back(), EndsWith("\\x01\\x01"));
    }
}

TEST_F(Log, tells_the_local_time) {
    const char* zone = ::getenv("TZ");
    const std::string before = zone ? zone : "";
    for (const auto& [name, offset] : {std::pair{"UTC0", "+00:00"}, {"XST3:30", "-03:30"}, {"YST-5:45", "+05:45"}}) {
        ::setenv("TZ", name, 1);
        ::tzset();
        std::filesystem::resize_file(path("stderr"), 0);
        LogMessage(1, "app", name);
        const std::string line = content("stderr");
        EXPECT_EQ(line.substr(23, 6), offset);
        std::tm parsed{};
        ASSERT_TRUE(::strptime(line.c_str(), "%Y-%m-%dT%H:%M:%S", &parsed));
        EXPECT_LE(std::abs(std::difftime(std::mktime(&parsed), std::time(nullptr))), 2.0) << name;
    }
    zone ? ::setenv("TZ", before.c_str(), 1) : ::unsetenv("TZ");
    ::tzset();
}

TEST_F(Log, writes_the_levels_that_are_wanted) {
    const std::pair<const char*, const char*> rows[] = {{"", "1 3 6 16 "},
                                                        {"Levels=all", "1 3 6 16 "},
                                                        {"Levels=", "1 3 6 16 "},
                                                        {"Levels=errors", "1 3 6 16 "},
                                                        {"Levels=3, 1 ,x,,", "1 3 "},
                                                        {"Levels=1x,16", "16 "},
                                                        {"Levels=7,99999999999", ""}};
    for (const auto& [setting, expected] : rows) {
        std::filesystem::resize_file(path("stderr"), 0);
        configure(std::string("[log]\n") + setting + "\n");
        std::string written;
        for (const int level : {1, 3, 6, 16}) LogMessage(level, "", "");
        for (const std::string& record : records("stderr")) written += record.substr(0, record.find('-'));
        EXPECT_EQ(written, expected) << setting;
    }
}

TEST_F(Log, follows_its_target) {
    LogMessage(1, "a", "no configuration");
    log_to(path("one.log"));
    LogMessage(1, "a", "one");
    log_to(std::string("\"") + path("two.log") + "\"");
    LogMessage(1, "a", "two");
    std::filesystem::rename(path("two.log"), path("two.log.1"));
    LogMessage(1, "a", "made anew");
    std::filesystem::rename(path("two.log"), path("two.log.2"));
    write("two.log", "");
    LogMessage(1, "a", "another");
    std::filesystem::resize_file(path("two.log"), 0);
    LogMessage(1, "a", "cut");
    for (const char* target : {"StdErr", ""}) {
        log_to(target);
        LogMessage(1, "a", "stderr again");
    }
    syslog_lines.clear();
    log_to("SysLog");
    for (const int level : {1, 3, 6}) LogMessage(level, "a", "100%s\n");
    EXPECT_THAT(records("stderr"), ElementsAre("1 a no configuration", "1 a stderr again", "1 a stderr again"));
    EXPECT_THAT(records("one.log"), ElementsAre("1 a one"));
    EXPECT_THAT(records("two.log.1"), ElementsAre("1 a two"));
    EXPECT_THAT(records("two.log.2"), ElementsAre("1 a made anew"));
    EXPECT_THAT(records("two.log"), ElementsAre("1 a cut"));
    const auto sent = [](int priority, const char* level) {
        return std::to_string(LOG_MAIL | priority) + " " + std::to_string(::getpid()) + " " + level + " a 100%s";
    };
    EXPECT_THAT(syslog_lines, ElementsAre(sent(LOG_ERR, "1"), sent(LOG_NOTICE, "3"), sent(LOG_INFO, "6")));
}

TEST_F(Log, a_line_that_its_file_does_not_take_goes_to_stderr) {
    ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0600), 0);
    for (const std::string& target : {path(""), path("pipe"), path("missing/log"), std::string("/dev/full")}) {
        log_to(target);
        LogMessage(1, "a", target.c_str());
        EXPECT_EQ(records("stderr").back(), "1 a " + target);
    }
    log_to("/dev/null");
    LogMessage(1, "a", "gone");
    EXPECT_EQ(records("stderr").size(), 4u);
}

// A program that closes all descriptors, as a daemon does when it starts, and opens its own.
TEST_F(Log, never_writes_into_a_file_that_took_over_its_descriptor) {
    log_to(path("log"));
    LogMessage(1, "a", "before");
    const int mail = ::open(write("mail", "From: a\r\n").c_str(), O_RDWR | O_APPEND);
    struct stat log, found;
    ASSERT_EQ(::stat(path("log").c_str(), &log), 0);
    int taken = -1;
    for (int fd = 3; fd < mail; ++fd) {
        if (::fstat(fd, &found) == 0 && found.st_ino == log.st_ino) taken = ::dup2(mail, fd);
    }
    ASSERT_NE(taken, -1);
    LogMessage(1, "a", "after");
    EXPECT_EQ(content("mail"), "From: a\r\n");
    EXPECT_THAT(records("log"), ElementsAre("1 a before", "1 a after"));
    EXPECT_EQ(::close(taken), 0) << "still the program's own";
    ::close(mail);
}

TEST_F(Log, hands_the_threads_lines_to_its_capture) {
    configure("[Log]\nLevels=1\n");
    std::string lines, others;
    const LogCaptureSink sink = [](void* context, int level, const char* application, const char* text) {
        errno = EDOM;
        static_cast<std::string*>(context)->append(std::to_string(level)).append(application).append(text).append("|");
    };
    EXPECT_EQ(LogCaptureStart(nullptr, &lines), 0);
    EXPECT_EQ(LogCaptureStart(sink, &lines), 1);
    EXPECT_EQ(LogCaptureStart(nullptr, nullptr), 0) << "changes nothing";
    errno = EXDEV;
    LogMessage(6, "a", "raw\n\\");
    LogMessage(1, nullptr, nullptr);
    EXPECT_EQ(errno, EXDEV);
    std::thread([] { LogMessage(1, "a", "another thread"); }).join();
    LogCaptureStart(sink, &others);
    LogMessage(1, "b", "c");
    EXPECT_EQ(LogWatchStart(nullptr, &lines), 0);
    EXPECT_EQ(LogWatchStart(sink, &others), 1);
    LogMessage(1, "b", "watched");
    LogMessage(6, "b", "of a level that is not written");
    for (int i = 0; i < 2; ++i) LogCaptureStop();
    LogMessage(1, "a", "stopped");
    EXPECT_EQ(lines, "6araw\n\\|1|");
    EXPECT_EQ(others, "1bc|1bwatched|6bof a level that is not written|");
    EXPECT_THAT(records("stderr"), ElementsAre("1 a another thread", "1 b watched", "1 a stopped"));
}

TEST_F(LogThreads, write_whole_lines_while_the_file_is_rotated) {
    constexpr int kThreads = 4;
    constexpr int kLines = 300;
    log_to(path("log"));
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([text = std::string(3000, static_cast<char>('a' + t))] {
            for (int i = 0; i < kLines; ++i) LogMessage(3, "app", text.c_str());
        });
    }
    for (int i = 0; i < 5; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        std::error_code not_yet_there;
        std::filesystem::rename(path("log"), path(std::string("log.") + std::to_string(i)), not_yet_there);
    }
    for (auto& thread : threads) thread.join();
    int lines = 0;
    for (const auto& name : names()) {
        if (!name.starts_with("log")) continue;
        for (const auto& record : records(name)) {
            ++lines;
            ASSERT_EQ(record, std::string("3 app ") + std::string(3000, record.back()));
        }
    }
    EXPECT_EQ(lines, kThreads * kLines);
    EXPECT_THAT(content("stderr"), IsEmpty());
}

}  // namespace
}  // namespace vel::test
