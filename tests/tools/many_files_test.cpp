// Many files at once: which ones are meant, that threads change nothing but the time, and interruption.
#include <fcntl.h>
#include <sched.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <thread>

#include "tests/tools/run_vel.h"
#include "tools/io/find_files.h"
#include "tools/io/progress.h"

namespace vel::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

// While this lives, what the calling thread starts has one core to run on, and so starts no threads.
class OneCore {
  public:
    OneCore() {
        ::sched_getaffinity(0, sizeof before_, &before_);
        int first = 0;
        while (!CPU_ISSET(first, &before_)) ++first;
        cpu_set_t one;
        CPU_ZERO(&one);
        CPU_SET(first, &one);
        ::sched_setaffinity(0, sizeof one, &one);
    }
    ~OneCore() { ::sched_setaffinity(0, sizeof before_, &before_); }

  private:
    cpu_set_t before_;
};

// The suite's name has it run under the thread sanitizer.
class ManyFilesThreads : public CommandTest {
  protected:
    // Messages of all kinds, in names whose order is not that of their sizes; one says more than is kept
    // ahead of its turn, the others have many equal names to give out.
    std::string folder() const {
        std::filesystem::create_directory(directory() / "mail");
        const std::string head = "MIME-Version: 1.0\nContent-Type: multipart/mixed; boundary=b\n\n";
        const std::vector<std::string> kinds{
            crlf(head + "--b\n\ntext\n--b\nContent-Disposition: attachment; filename=a.txt\n\nfile\n--b--\n"),
            "Subject: bare\n\nbody\n",
            crlf("Content-ID: x\n" + head + "--b\n\nrefused\n--b--\n"),
            crlf(head + "--b\nContent-Transfer-Encoding: base64\n\n*\n--b\n\ncut off"),
        };
        std::string many = crlf(head);
        for (int i = 0; i < 4000; ++i) many += "--b\r\n\r\n" + std::to_string(i) + "\r\n";
        file("mail/020", many + "--b--\r\n");
        for (int i = 100; i < 160; ++i) file("mail/" + std::to_string(i).substr(1), kinds[i % kinds.size()]);
        return (directory() / "mail").string();
    }

    void expect_same_on_all_cores(const std::vector<std::string>& arguments, const std::string& input = "") const {
        Ended alone{};
        Files files;
        {
            const OneCore one_core;
            alone = run(arguments, input);
        }
        const bool extracts = std::filesystem::exists(target());
        if (extracts) files = extracted();
        std::filesystem::remove_all(target());
        const Ended together = run(arguments, input);
        EXPECT_EQ(together.exit, alone.exit);
        EXPECT_TRUE(together.out == alone.out) << arguments[0] << ": standard output differs";
        EXPECT_EQ(together.err, alone.err);
        EXPECT_TRUE(!extracts || extracted() == files) << arguments[0] << ": files differ";
        std::filesystem::remove_all(target());
    }
};

TEST_F(ManyFilesThreads, ChangeNothingButTheTime) {
    if (std::thread::hardware_concurrency() < 2) GTEST_SKIP() << "one core: nothing to compare";
    const std::string mail = folder();
    const std::string one = mail + "/01", missing = mail + "/none";
    expect_same_on_all_cores({"parse", "--json", "-v", "-r", mail, missing, mail});
    expect_same_on_all_cores({"parse", one, "-", one, missing, one, "-", one}, "Subject: x\r\n\r\nread once");
    expect_same_on_all_cores({"parse", "-", "-", "-"}, "Subject: x\r\n\r\n" + std::string(10000000, 'x'));
    expect_same_on_all_cores({"extract", "--json", "-r", mail, "-o", target()});
    expect_same_on_all_cores({"check", "-r", mail, missing});
    expect_same_on_all_cores({"headers", "--json", "-r", mail, missing});
    const std::string mailbox = std::string(VEL_SAMPLES) + "/archive.mbox";
    expect_same_on_all_cores({"split", mailbox, missing, mail, mailbox, "-", mailbox, "--json", "-o", target()}, "x");
    for (const char* limit : {"--max-bytes=300", "--max-files=17", "--max-bytes=0"}) {
        expect_same_on_all_cores({"extract", mail + "/00", "-r", mail, "-o", target(), limit});
    }
}

TEST_F(ManyFilesThreads, EndWithTheReaderAndWithTheDisk) {
    const std::string mail = folder();
    int pipe[2];
    ASSERT_EQ(::pipe2(pipe, O_CLOEXEC), 0);
    ::close(pipe[0]);
    const int full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
    EXPECT_EQ(wait_for(start({"parse", "--json", "-r", mail}, -1, pipe[1])), -SIGPIPE);
    EXPECT_EQ(wait_for(start({"parse", "--json", "-r", mail}, -1, full)), 74);
    EXPECT_EQ(wait_for(start({"extract", "-r", mail, "-o", target()}, -1, full)), 74);
    EXPECT_EQ(extracted().size(), 4000u + 15 * 2 + 15 + 15 + 15 * 2) << "the table does not decide what is written";
    for (const int fd : {pipe[1], full}) ::close(fd);
}

TEST_F(ManyFilesThreads, LeaveNoHalfFileWhenInterrupted) {
    constexpr std::size_t kSize = 100000;
    std::vector<std::string> arguments{"extract", "-o", target()};
    arguments.insert(arguments.end(), 2000, file("m.eml", "Subject: x\r\n\r\n" + std::string(kSize, 'x')));
    const pid_t process = start(arguments);
    await("file 3", [&] { return std::filesystem::exists(target() + "/part-0-3.txt"); });
    ::kill(process, SIGINT);
    EXPECT_EQ(wait_for(process), -SIGINT);
    for (const auto& entry : std::filesystem::directory_iterator(target())) {
        EXPECT_THAT(entry.path().filename().string(), StartsWith("part-0"));
        EXPECT_EQ(entry.file_size(), kSize) << entry.path();
    }
    EXPECT_EQ(content((directory() / "stderr").string()), "") << "complained about what was taken away";
}

class FindFilesTest : public VelTest {
  protected:
    void make(const std::vector<std::string>& files) const {
        for (const std::string& name : files) {
            std::filesystem::create_directories((directory() / name).parent_path());
            if (!name.ends_with('/')) file(name, "");
        }
    }

    std::vector<std::string> found(const std::string& name) const {
        std::vector<std::string> names;
        for (const command::FoundFile& found : command::find_files({(directory() / name).string()}, true)) {
            EXPECT_EQ(found.trouble, "");
            names.push_back(found.name.substr(directory().string().size() + 1));
        }
        return names;
    }
};

TEST_F(FindFilesTest, TakesFilesInTheOrderOfTheirBytes) {
    make({"d/b", "d/B", "d/a/z", "d/a/y/x", "d/a-b", "d/\xe9", "d/.hidden", "d/.git/config", "d/cur/m", "d/new/m",
          "d/.Sent/cur/1", "d/.Sent/new/", "d/.Sent/tmp/"});
    std::filesystem::create_symlink(directory() / "d/b", directory() / "d/link");
    std::filesystem::create_symlink(directory() / "d", directory() / "d/loop");
    ASSERT_EQ(::mkfifo((directory() / "d/pipe").c_str(), 0600), 0);
    make({"empty/"});
    EXPECT_THAT(found("d"), testing::ElementsAre("d/.Sent/cur/1", "d/B", "d/a/y/x", "d/a/z", "d/a-b", "d/b", "d/cur/m",
                                                 "d/new/m", "d/\xe9"));
    EXPECT_THAT(found("d/loop/a/"), testing::ElementsAre("d/loop/a/y/x", "d/loop/a/z"));
    const auto empty = command::find_files({(directory() / "empty").string()}, true);
    ASSERT_EQ(empty.size(), 1u);
    EXPECT_EQ(empty[0].trouble, "no files are found in it");
    EXPECT_THAT(found("d/link"), testing::ElementsAre("d/link"));
}

TEST_F(FindFilesTest, TakesOfAMaildirItsMessages) {
    make({"m/cur/2:2,S", "m/cur/1", "m/cur/.nfs1", "m/cur/sub/1", "m/new/3", "m/tmp/cur/4", "m/tmp/new/", "m/tmp/tmp/",
          "m/index.log", "m/.Sent/cur/5", "m/.Sent/new/", "m/.Sent/tmp/6", "m/.Sent/.Old/cur/7", "m/.Sent/.Old/new/",
          "m/.Sent/.Old/tmp/", "m/.cache/8", "m/courierimap/9"});
    EXPECT_THAT(found("m"),
                testing::ElementsAre("m/.Sent/.Old/cur/7", "m/.Sent/cur/5", "m/cur/1", "m/cur/2:2,S", "m/new/3"));
}

// Deeper than a path reaches: the walk says so and goes on.
TEST_F(FindFilesTest, TellsOfADirectoryThatCannotBeRead) {
    make({"d/a/", "d/z"});
    const std::string name(200, 'n');
    int at = ::open((directory() / "d/a").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    for (int depth = 0; depth < 30; ++depth) {
        ASSERT_EQ(::mkdirat(at, name.c_str(), 0700), 0);
        const int below = ::openat(at, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        ::close(at);
        at = below;
    }
    ::close(at);
    const auto found = command::find_files({(directory() / "d").string()}, true);
    ASSERT_EQ(found.size(), 2u);
    EXPECT_EQ(found[0].trouble, "File name too long");
    EXPECT_EQ(found[1].name, (directory() / "d/z").string());
}

TEST(ProgressText, TellsWhatIsLeft) {
    using Unit = command::Progress::Unit;
    constexpr uint64_t kGiB = uint64_t{1} << 30;
    struct {
        Unit unit;
        uint64_t done, total;
        double spent;
        const char* text;
    } const rows[] = {{Unit::files, 1234, 56789, 0.27, "1234 of 56789 files, 13 s left"},
                      {Unit::files, 0, 2, 9, "0 of 2 files"},
                      {Unit::files, 1, 1000, 1, "1 of 1000 files, 17 min left"},
                      {Unit::files, 1, 100000, 1, "1 of 100000 files, 28 h left"},
                      {Unit::files, 1, ~uint64_t{0}, 1, "1 of 18446744073709551615 files, very long left"},
                      {Unit::bytes, kGiB, 4 * kGiB, 2, "1024 of 4096 MiB, 6 s left"},
                      {Unit::bytes, kGiB, 0, 2, "1024 MiB"}};
    for (const auto& row : rows) EXPECT_EQ(progress_text(row.unit, row.done, row.total, row.spent), row.text);
}

}  // namespace
}  // namespace vel::test
