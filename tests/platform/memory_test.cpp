#include <cstdlib>
#include <new>

#include "tests/platform/scratch.h"
#include "vel/platform/log.h"

namespace {

thread_local bool starved = false;

void* allocate(std::size_t size) { return starved ? nullptr : std::malloc(size ? size : 1); }

}  // namespace

// Serve the whole program, the libraries under test too. Releasing is kept out of line: GCC 12, where
// it sees only one half of a pair, takes it for a mismatch.
void* operator new(std::size_t size) {
    if (void* memory = allocate(size)) return memory;
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete[](void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

namespace vel::test {
namespace {

struct OutOfMemory : Scratch {};

template <class Call>
auto without_memory(Call call) {
    starved = true;
    const auto result = call();
    starved = false;
    return result;
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
