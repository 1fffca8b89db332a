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
        ::setenv("TZ", "EST5EDT", 1);
        ::tzset();
    }
    static std::string environment(const char* name) { return ::getenv(name) ? ::getenv(name) : "(none)"; }
};

TEST_F(StartupTest, reads_the_settings_and_connects) {
    set("Gateway", "TimeZone", "JST-9");
    set("Gateway", "QueueDirectory", "/queue");
    set("Config", "InstallDirectory", "/install");
    EXPECT_EQ(InitVELDll("a module's name of forty characters long."), 1);
    EXPECT_STREQ(iniFileName, "ostra.ini");
    EXPECT_STREQ(appName, "a module's name of forty charac");
    EXPECT_STREQ(GetQueueDir(), "/queue");
    EXPECT_STREQ(GetTempDir(), directory().c_str());
    EXPECT_STREQ(GetInstallDir(), "/install");
    EXPECT_EQ(environment("TZ"), "JST-9");
    EXPECT_EQ(::timezone, -9 * 3600) << "the C library knows it";
    EXPECT_EQ(environment("TMP"), directory().string());
    EXPECT_EQ(queue.host, "localhost");
    EXPECT_EQ(queue.module, appName);
    EXPECT_NE(thread_file_pool, nullptr);

    EXPECT_EQ(InitVELDll("again"), 1);
    EXPECT_STREQ(appName, "a module's name of forty charac") << "nothing is done twice";
    EXPECT_EQ(queue.calls, 1);
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
    set("Gateway", "TimeZone", "XxX5");
    InitVELDll_NOMQ("m");
    EXPECT_EQ(environment("TZ"), "UTC0");
    set("Gateway", "TimeZone", "");
    InitVELDll_NOMQ("m");
    EXPECT_EQ(environment("TZ"), "");
    set("Gateway", "TimeZone", nullptr);
    InitVELDll_NOMQ("m");
    EXPECT_EQ(environment("TZ"), "PST8PDT");
}

class SettingsTest : public VelTest {
  protected:
    ~SettingsTest() override { UseINI(); }
};

TEST_F(SettingsTest, numbers_are_leading_digits) {
    struct {
        const char* stored;
        int expected;
    } const rows[] = {{"12ab", 12}, {"ab", 0}, {"-7", -7}, {"", 0}, {" 5", 5}, {nullptr, 42}};
    for (const auto& row : rows) {
        set("S", "n", row.stored);
        EXPECT_EQ(VELGetPrivateProfileInt("S", "n", 42, iniFileName), row.expected) << (row.stored ? row.stored : "-");
    }
}

TEST_F(SettingsTest, both_modes_read_the_file_and_others_nothing) {
    set("S", "k", "value");
    char buffer[16];
    for (const int mode : {0, 1, 5}) {
        INI_MODE = mode;
        std::snprintf(buffer, sizeof buffer, "untouched");
        const int expected = mode == 5 ? 0 : 5;
        EXPECT_EQ(VELGetPrivateProfileString("S", "k", "", buffer, sizeof buffer, iniFileName), expected);
        EXPECT_STREQ(buffer, mode == 5 ? "untouched" : "value");
        EXPECT_EQ(VELGetPrivateProfileInt("S", "none", 3, iniFileName), mode == 5 ? 0 : 3);
        EXPECT_EQ(VELGetPrivateProfileStringOld("S", "k", "", buffer, sizeof buffer, iniFileName), 5);
        const std::string ini = (directory() / "w.ini").string();
        EXPECT_EQ(VELWritePrivateProfileString("S", "k", "v", ini.c_str()), mode == 5 ? 0 : 1);
    }
    UseConfigAPI();
    EXPECT_EQ(INI_MODE, 1);
    UseINI();
    EXPECT_EQ(INI_MODE, 0);
}

}  // namespace
}  // namespace vel::test
