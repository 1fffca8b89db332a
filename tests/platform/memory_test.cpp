#include "tests/support/memory.h"
#include "tests/platform/scratch.h"
#include "vel/platform/log.h"

namespace vel::test {
namespace {

struct OutOfMemory : Scratch {};

template <class Call>
auto without_memory(Call call) {
    const Starved starved;
    return call();
}

TEST_F(OutOfMemory, settings_fall_back_and_stay_as_they_were) {
    configure("[A]\nk=v\n");
    char buffer[16];
    const auto read = [&] { return GetPrivateProfileString("A", "k", "fallback", buffer, sizeof buffer, "ostra.ini"); };
    EXPECT_EQ(without_memory(read), 8);
    EXPECT_STREQ(buffer, "fallback");
    EXPECT_EQ(without_memory([] { return ProfileOverlaySet("A", "k", "laid"); }), 0);
    EXPECT_EQ(without_memory([] { return WritePrivateProfileString("A", "k", "new", "ostra.ini"); }), 0);
    EXPECT_EQ(read(), 1);
    EXPECT_STREQ(buffer, "v");
}

TEST_F(OutOfMemory, log_lines_are_cut_but_not_lost) {
    configure("[Log]\nTarget=" + path("log") + "\n");
    const std::string text(1'000'000, '\x1b');
    testing::internal::CaptureStderr();
    without_memory([&] {
        LogMessage(1, "app", "Call: out of memory.");
        LogMessage(1, "app", text.c_str());
        return true;
    });
    const std::string written = testing::internal::GetCapturedStderr();
    EXPECT_THAT(written, testing::HasSubstr(" 1 app Call: out of memory.\n"));
    EXPECT_THAT(written, testing::HasSubstr(" 1 app \\x1B\\x1B"));
    EXPECT_THAT(written, testing::EndsWith("\\x1B\n"));
}

}  // namespace
}  // namespace vel::test
