#include <sys/inotify.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <thread>

#include "frame/owned.h"
#include "tests/platform/scratch.h"

namespace vel::test {
namespace {

struct ProfileRead : Scratch {};

TEST_F(ProfileRead, understands_the_syntax) {
    struct Row {
        std::string text;
        const char* section;
        const char* key;
        const char* value;
    };
    const Row rows[] = {
        {"[GateWay]\nk=v\n", "gATEwAY", "k", "v"},
        {"[AB]\nk=v\n", "A", "k", "-"},
        {"[A]\nbounce=1\nBounce=2\n", "A", "Bounce", "2"},
        {"[A]\nx=1\n[B]\nk=0\n[a]\nk=2\nk=3\n", "A", "k", "2"},
        {" \t[ A ] junk\n \t k \t = \t v w \t\n", "A", "k", "v w"},
        {"[A]\r\nk=v\r\nl=w\r\n", "A", "k", "v"},
        {"[A]\nk = \" v \" \n", "A", "k", " v "},
        {"[A]\nk=\"\"v\"\"\n", "A", "k", "\"v\""},
        {"[A]\nk=\"\"\n", "A", "k", ""},
        {"[A]\nk=\"\n", "A", "k", "\""},
        {"[A]\nk= \t \r\n", "A", "k", ""},
        {"[A]\nk=a=b ; w # x\n", "A", "k", "a=b ; w # x"},
        {"[A]\n;k=1\n #k=2\n; [B]\nk\nk=3\n", "A", "k", "3"},
        {"[]\nk=v\n", "", "k", "-"},
        {"[A]\n[B\nk=v\n", "A", "k", "-"},
        {"[A]\n[B\nk=v\n", "B", "k", "-"},
        {"\xEF\xBB\xBF[A]\nk=v\n", "A", "k", "v"},
        {"[\xC4]\nk=\xE4\xFF\n", "\xC4", "k", "\xE4\xFF"},
        {"[\xC4]\nk=v\n", "\xE4", "k", "-"},
        {std::string("[A]\nk=v\0w\n", 10), "A", "k", "v"},
        {std::string("[A\0]\nk\0=v\n", 11), "A", "k", "-"},
        {"", "A", "k", "-"},
        {"[A]\n" + std::string(200'000, 'x') + "\nk=v\n", "A", "k", "v"},
    };
    for (const Row& row : rows) {
        configure(row.text);
        EXPECT_EQ(setting(row.section, row.key), row.value) << row.text.substr(0, 80);
    }
}

TEST_F(ProfileRead, fills_the_buffer_and_no_more) {
    configure("[A]\nk=abcdef\ne=\n");
    for (const auto& [size, value] : {std::pair{8, "abcdef"}, {7, "abcdef"}, {6, "abcde"}, {2, "a"}, {1, ""}}) {
        EXPECT_EQ(setting("A", "k", "ostra.ini", size), value) << size;
    }
    char buffer[4] = "xyz";
    EXPECT_EQ(GetPrivateProfileString("A", "k", "d", buffer, 0, "ostra.ini"), 0);
    EXPECT_EQ(GetPrivateProfileString("A", "k", "d", buffer, -1, "ostra.ini"), 0);
    EXPECT_EQ(GetPrivateProfileString("A", "k", "d", nullptr, 4, "ostra.ini"), 0);
    EXPECT_STREQ(buffer, "xyz");
    EXPECT_EQ(GetPrivateProfileString("A", "none", "fallback", buffer, 4, "ostra.ini"), 3);
    EXPECT_STREQ(buffer, "fal");
    EXPECT_EQ(GetPrivateProfileString("A", "none", buffer + 1, buffer, 4, "ostra.ini"), 2) << "overlapping";
    EXPECT_STREQ(buffer, "al");
    EXPECT_EQ(GetPrivateProfileString("A", "none", nullptr, buffer, 4, "ostra.ini"), 0);
    EXPECT_STREQ(buffer, "");
    for (const auto& [section, key, file] :
         {std::array<const char*, 3>{nullptr, "k", "ostra.ini"}, {"A", nullptr, "ostra.ini"}, {"A", "k", nullptr}}) {
        EXPECT_EQ(setting(section, key, file), "-");
    }
}

TEST_F(ProfileRead, finds_the_file) {
    configure("[A]\nk=bare\n");
    const auto other = write("other.ini", "[A]\nk=path\n");
    EXPECT_EQ(setting("A", "k"), "bare");
    EXPECT_EQ(setting("A", "k", other.c_str()), "path");
    EXPECT_EQ(setting("A", "k", "other.ini"), "path");
    EXPECT_EQ(setting("A", "k", ""), "-");
    ::setenv("OSTRA_CONFIG_DIR", "", 1);
    EXPECT_EQ(setting("A", "k", "other.ini"), "-") << "an empty variable is none";
    ::setenv("OSTRA_CONFIG_DIR", std::string(5000, 'd').c_str(), 1);
    EXPECT_EQ(setting("A", "k"), "-");
    EXPECT_EQ(setting("A", "k", std::string(4096, '/').c_str()), "-") << "longer than any path";
}

TEST_F(ProfileRead, a_file_that_cannot_be_read_holds_nothing) {
    std::filesystem::create_directory(path("directory"));
    ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0600), 0);
    std::filesystem::create_symlink("nowhere", path("dangling"));
    std::filesystem::create_symlink("loop", path("loop"));
    write("huge", "[A]\nk=v\n");
    std::filesystem::resize_file(path("huge"), uint64_t{5} << 30);
    write("big", std::string("[A]\nk=v\n") + std::string(4 * 1024 * 1024 - 7, '\n'));
    for (const char* name : {"missing", "directory", "pipe", "dangling", "loop", "huge", "big", "pipe/below"}) {
        errno = E2BIG;
        EXPECT_EQ(setting("A", "k", name), "-") << name;
        EXPECT_EQ(setting("A", "k", path(name).c_str()), "-") << name;
        EXPECT_EQ(errno, E2BIG) << name;
    }
    EXPECT_EQ(setting("A", "k", "/dev/zero"), "-");
    std::filesystem::resize_file(path("big"), 4 * 1024 * 1024);
    EXPECT_EQ(setting("A", "k", "big"), "v");
}

TEST_F(ProfileRead, time_grows_with_the_size_alone) {
    std::string text;
    for (int i = 0; text.size() < 3'900'000; ++i) text += "[s" + std::to_string(i) + "]\nk=" + std::to_string(i) + "\n";
    configure(text);
    EXPECT_EQ(setting("S200000", "k"), "200000");
    configure(std::string(4'000'000, '['));
    EXPECT_EQ(setting("A", "k"), "-");
}

// In place, same size, within one step of the file system's clock, and with the old time put back.
TEST_F(ProfileRead, sees_every_edit_at_once) {
    const timeval long_ago[2] = {{1'000'000'000, 0}, {1'000'000'000, 0}};
    configure("[A]\nk=0000\n");
    std::fstream file(path("ostra.ini"));
    for (int i = 0; i < 2000; ++i) {
        const std::string value = std::to_string(1000 + i);
        file.seekp(6) << value << std::flush;
        if (i >= 1000) ::utimes(path("ostra.ini").c_str(), long_ago);
        ASSERT_EQ(setting("A", "k"), value);
        ASSERT_EQ(setting("A", "k"), value);
    }
}

// Where the clock of files is coarse, a second edit can leave no trace in the file's times: a file is
// read again until its last change lies back, whatever its time of modification says. From then on it is
// held open.
class SettledProfile : public ProfileRead {
  protected:
    SettledProfile() {
        std::filesystem::create_directory(path("d"));
        for (const char* name : {"a", "b", "d/c"}) write(name, "[A]\nk=v\n");
        const timeval long_ago[2] = {{1'000'000'000, 0}, {1'000'000'000, 0}};
        ::utimes(path("a").c_str(), long_ago);
        EXPECT_NE(::inotify_add_watch(watch_, path("a").c_str(), IN_OPEN), -1);
        EXPECT_TRUE(opened_by_a_read());
        EXPECT_TRUE(opened_by_a_read()) << "the last change lies less than 3 seconds back";
        std::this_thread::sleep_for(std::chrono::milliseconds(3100));
        EXPECT_TRUE(opened_by_a_read());
        EXPECT_FALSE(opened_by_a_read()) << "nothing can have changed unseen";
        EXPECT_EQ(value("b") + value("d/c"), "vv");
    }
    ~SettledProfile() override { ::close(watch_); }

    std::string value(std::string_view name) const { return setting("A", "k", path(name).c_str()); }

    bool opened_by_a_read() const {
        EXPECT_EQ(value("a"), "v");
        char events[4096];
        return ::read(watch_, events, sizeof events) > 0;
    }

    // The number under which a file is open, -1 when it is not.
    int descriptor_of(std::string_view name) const {
        for (int fd = 0; fd < 1024; ++fd) {
            std::error_code failed;
            if (std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(fd), failed) == path(name)) return fd;
        }
        return -1;
    }

  private:
    const int watch_ = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
};

TEST_F(SettledProfile, sees_what_comes_to_stand_at_the_path) {
    std::fstream(path("a")).seekp(6) << 'w';
    EXPECT_EQ(value("a"), "w");
    write("new", "[A]\nk=x\n");
    std::filesystem::rename(path("new"), path("b"));
    EXPECT_EQ(value("b"), "x");
    std::filesystem::remove(path("b"));
    EXPECT_EQ(value("b"), "-");
    for (int i = 0; i < 1000; ++i) ASSERT_EQ(value("d/c"), "v");
    std::filesystem::rename(path("d"), path("e"));
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    for (int i = 0; i < 1000; ++i) ASSERT_EQ(value("d/c"), "-");
    EXPECT_EQ(value("e/c"), "v");
}

// As daemons do, which close all that is open and open files of their own.
TEST_F(SettledProfile, outlives_the_loss_of_its_descriptor) {
    const int held = descriptor_of("b");
    ASSERT_GE(held, 200);
    EXPECT_TRUE(::fcntl(held, F_GETFD) & FD_CLOEXEC);
    const Descriptor other(::open(path("a").c_str(), O_RDONLY | O_CLOEXEC));
    ASSERT_EQ(::dup2(other.get(), held), held);
    EXPECT_EQ(value("b"), "v");
    write("b", "[A]\nk=y\n");
    EXPECT_EQ(value("b"), "y");
    EXPECT_EQ(::close(held), 0) << "it is not the library's any more";
}

TEST_F(ProfileRead, keeps_more_files_apart_than_it_remembers) {
    for (int i = 0; i < 40; ++i) {
        const std::string name = std::to_string(i % 20);
        if (i < 20) write(name, "[A]\nk=" + name + "\n");
        EXPECT_EQ(setting("A", "k", path(name).c_str()), name);
    }
}

TEST_F(ProfileRead, looks_at_the_threads_overlay_first) {
    configure("[A]\nk=file\n");
    EXPECT_EQ(ProfileOverlaySet("a", "k", " \"laid\" "), 1);
    EXPECT_EQ(ProfileOverlaySet("A", "K", "other key"), 1);
    EXPECT_EQ(setting("A", "k"), " \"laid\" ");
    EXPECT_EQ(setting("A", "k", "missing"), " \"laid\" ");
    EXPECT_EQ(setting("A", "k", nullptr), "-");
    EXPECT_EQ(setting("A", "k", "ostra.ini", 4), " \"l");
    std::thread([] {
        EXPECT_EQ(setting("A", "k"), "file");
        ProfileOverlaySet("A", "k", "the thread's own");
        EXPECT_EQ(setting("A", "k"), "the thread's own");
    }).join();
    ProfileOverlaySet("A", "k", "");
    EXPECT_EQ(setting("A", "k"), "");
    EXPECT_EQ(ProfileOverlaySet("A", "k", nullptr), 1);
    EXPECT_EQ(setting("A", "k"), "file");
    EXPECT_EQ(setting("A", "K"), "other key");
    ProfileOverlayClear();
    EXPECT_EQ(setting("A", "K"), "-");
    EXPECT_EQ(ProfileOverlaySet("A", "K", nullptr), 1) << "nothing to take away";
    EXPECT_EQ(ProfileOverlaySet(nullptr, "k", "v"), 0);
    EXPECT_EQ(ProfileOverlaySet("A", nullptr, "v"), 0);
}

}  // namespace
}  // namespace vel::test
