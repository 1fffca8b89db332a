// Start-up and shut-down, against a double of the queue.
#include <cstdlib>
#include <string>

#include "frame/file_pool.h"
#include "tests/support/fixture.h"
#include "vel/platform/queue.h"

namespace {

struct QueueDouble {
    unsigned char answer = 1;
    int calls = 0;
    std::string host;
    std::string module;
} queue;

}  // namespace

extern "C" unsigned char MQInit(const char* host, const char* module) {
    ++queue.calls;
    queue.host = host;
    queue.module = module;
    return queue.answer;
}

namespace vel::test {
namespace {

using testing::ElementsAre;

class StartupTest : public VelTest {
  protected:
    StartupTest() {
        queue = {};
        TerminateVELDll();
    }
    ~StartupTest() override {
        TerminateVELDll();
        UseINI();
        ::setenv("TZ", "EST5EDT", 1);
        ::tzset();
    }
    static std::string environment(const char* name) { return ::getenv(name) ? ::getenv(name) : "(none)"; }
};

TEST_F(StartupTest, reads_the_settings_and_connects) {
    set("Gateway", "TimeZone", "JST-9");
    set("Gateway", "QueueDirectory", "/queue");
    set("Config", "InstallDirectory", "/install");
    for (const char* module : {"a module's name of forty characters long.", "again: nothing is done twice"}) {
        EXPECT_EQ(InitVELDll(module), 1);
        EXPECT_STREQ(appName, "a module's name of forty charac");
        EXPECT_EQ(queue.calls, 1);
    }
    EXPECT_STREQ(iniFileName, "ostra.ini");
    EXPECT_STREQ(GetQueueDir(), "/queue");
    EXPECT_STREQ(GetTempDir(), directory().c_str());
    EXPECT_STREQ(GetInstallDir(), "/install");
    EXPECT_EQ(environment("TZ"), "JST-9");
    EXPECT_EQ(::timezone, -9 * 3600) << "the C library knows it";
    EXPECT_EQ(environment("TMP"), directory().string());
    EXPECT_EQ(queue.host + " " + queue.module, std::string("localhost ") + appName);
    EXPECT_NE(thread_file_pool, nullptr);
}

TEST_F(StartupTest, a_queue_that_refuses_fails_the_start_until_it_does_not) {
    queue.answer = 0;
    set("Ldap", "HostName", "directory.example.com");
    EXPECT_EQ(InitVELDll("m"), 0);
    EXPECT_EQ(queue.host, "directory.example.com");
    EXPECT_THAT(take_log(), ElementsAre(LogLine{1, "m", "MQInit failed."}));
    const int handle = fileopen(file("f", "").c_str(), 1, 0);
    queue.answer = 1;
    EXPECT_EQ(InitVELDll("m"), 1);
    EXPECT_EQ(fileclose(handle), 1) << "the live pool and its locks were left alone";
}

TEST_F(StartupTest, kept_starting_without_the_queue_repeats_everything) {
    VELLogFileName[0] = '\0';
    EXPECT_EQ(InitVELDll_NOMQ("one"), 1);
    EXPECT_STREQ(VELLogFileName, "ostra.log");
    set("Gateway", "QueueDirectory", "/later");
    EXPECT_EQ(InitVELDll_NOMQ("two"), 1);
    EXPECT_STREQ(appName, "two");
    EXPECT_STREQ(GetQueueDir(), "/later");
    EXPECT_EQ(bCalledInitVELDll_NOMQ, 0);
    EXPECT_EQ(queue.calls, 0);
}

TEST_F(StartupTest, a_time_zone_may_be_left_alone_or_empty) {
    ::setenv("TZ", "UTC0", 1);
    for (const auto& [setting, zone] : {std::pair("XxX5", "UTC0"), {"", ""}, {nullptr, "PST8PDT"}}) {
        set("Gateway", "TimeZone", setting);
        InitVELDll_NOMQ("m");
        EXPECT_EQ(environment("TZ"), zone);
    }
}

TEST_F(StartupTest, numbers_are_leading_digits) {
    struct {
        const char* stored;
        int expected;
    } const rows[] = {{"12ab", 12}, {"ab", 0}, {"-7", -7}, {"", 0}, {" 5", 5}, {nullptr, 42}};
    for (const auto& row : rows) {
        set("S", "n", row.stored);
        EXPECT_EQ(VELGetPrivateProfileInt("S", "n", 42, iniFileName), row.expected) << (row.stored ? row.stored : "-");
    }
}

TEST_F(StartupTest, both_modes_read_the_file_and_others_nothing) {
    set("S", "k", "value");
    const std::string ini = (directory() / "w.ini").string();
    for (const int mode : {5, 0, 1}) {
        const bool reads = mode != 5;
        char buffer[16] = "untouched";
        INI_MODE = mode;
        EXPECT_EQ(VELGetPrivateProfileString("S", "k", "", buffer, sizeof buffer, iniFileName), reads ? 5 : 0);
        EXPECT_STREQ(buffer, reads ? "value" : "untouched");
        EXPECT_EQ(VELGetPrivateProfileInt("S", "none", 3, iniFileName), reads ? 3 : 0);
        EXPECT_EQ(VELGetPrivateProfileStringOld("S", "k", "", buffer, sizeof buffer, iniFileName), 5);
        EXPECT_EQ(VELWritePrivateProfileString("S", "k", "v", ini.c_str()), reads ? 1 : 0);
    }
    UseINI();
    EXPECT_EQ(INI_MODE, 0);
    UseConfigAPI();
    EXPECT_EQ(INI_MODE, 1);
}

}  // namespace
}  // namespace vel::test
