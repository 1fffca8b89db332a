// Lines, bytes and positions, through both sets of calls.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "frame/file_pool.h"
#include "frame/line_file.h"
#include "tests/support/fixture.h"

namespace vel::test {
namespace {

using testing::ElementsAre;

// An open file, used through its descriptor or through its record, so that each case runs with both.
struct Calls {
    int handle = -1;
    VEL_FILE* file = nullptr;

    int line(char** text) const { return file ? GetLine(file, text) : ::getline(handle, text); }
    int put(const char* text) const { return file ? PutLine(file, text) : putline(handle, text); }
    int in() const { return file ? InCh(file) : inch(handle); }
    int back() const { return file ? UninCh(file, 'x') : uninch('x', handle); }
    int out(char c) const { return file ? OutCh(file, c) : outch(c, handle); }
    int seek(int32_t position) const { return file ? SetFilePos(file, position) : setfpos(handle, position); }
    int tell() const { return file ? GetFilePos(file) : getfpos(handle); }
    int close() const { return file ? FileClose(file) : fileclose(handle); }
};

class LineFileTest : public VelTest, public testing::WithParamInterface<bool> {
  protected:
    static Calls open(const std::string& path) {
        return GetParam() ? Calls{-1, FileOpen(path.c_str(), 1)} : Calls{fileopen(path.c_str(), 1, 0)};
    }

    // All lines of a content from a position on.
    std::vector<std::string> lines(std::string_view text, int32_t from = 0) {
        const Calls calls = open(file("lines", text));
        if (from) calls.seek(from);
        std::vector<std::string> result;
        char* line = nullptr;
        int outcome = 0;
        while ((outcome = calls.line(&line)) == 1) result.emplace_back(line);
        EXPECT_EQ(outcome, 0);
        EXPECT_EQ(calls.tell(), static_cast<int>(text.size()));
        EXPECT_EQ(calls.line(&line), 0) << "the end stays the end";
        EXPECT_EQ(calls.close(), 1);
        return result;
    }
};

INSTANTIATE_TEST_SUITE_P(BothSets, LineFileTest, testing::Bool());

TEST_P(LineFileTest, hands_out_lines_with_their_ends) {
    EXPECT_THAT(lines(""), ElementsAre());
    EXPECT_THAT(lines("a\r\nb\n\n\rc\nno end"), ElementsAre("a\r\n", "b\n", "\n", "\rc\n", "no end"));
    EXPECT_THAT(lines("skipped\nread\n", 8), ElementsAre("read\n"));
    EXPECT_THAT(lines(std::string(1029, 'x') + "\n"), ElementsAre(std::string(1024, 'x'), "xxxxx\n"));
    EXPECT_THAT(lines(std::string(1023, 'x') + "\n!"), ElementsAre(std::string(1023, 'x') + "\n", "!"));
}

TEST_P(LineFileTest, lines_span_blocks) {
    std::string text;
    std::vector<std::string> expected;
    for (std::size_t i = 0; i < 3000; ++i) text += expected.emplace_back(std::string(i % 1500 % 1024, 'a') + "\n");
    EXPECT_EQ(lines(text), expected);
}

// Blocks are counted from the last positioning; a piece of 1024 bytes that ends with one is not dropped.
TEST_P(LineFileTest, kept_partial_last_line_at_a_block_end_is_dropped) {
    const std::string last(95, 'b');
    const std::string block = std::string(4000, 'a') + "\n" + last;
    EXPECT_EQ(lines(block).size(), 4u) << "the line of a in pieces, no b";
    EXPECT_EQ(lines(block + "c").back(), last + "c");
    EXPECT_EQ(lines("\n" + block, 1).size(), 4u);
    EXPECT_EQ(lines("\n" + block).back(), last);
    EXPECT_EQ(lines(std::string(4096, 'x')).size(), 4u);
}

TEST_P(LineFileTest, kept_stepping_back_writes_no_character) {
    const Calls calls = open(file("bytes", std::string(4095, 'a') + "bc\xFF"));
    const auto walk = [&](std::string_view steps) {
        std::string read;
        for (const char step : steps) step == '<' ? calls.back() : (read += static_cast<char>(calls.in()), 0);
        return read;
    };
    EXPECT_EQ(walk("<."), "a") << "there is nothing before the start";
    EXPECT_EQ(walk(std::string(4094, '.')), std::string(4094, 'a'));
    EXPECT_EQ(walk(".<..<<<"), "bbc") << "over the border of two blocks";
    EXPECT_EQ(calls.tell(), 4094);
    EXPECT_EQ(walk("....<."), "abc\xFF\xFF");
    EXPECT_EQ(calls.in(), -1);
    calls.back();
    EXPECT_EQ(calls.in(), 0xFF);
    EXPECT_EQ(calls.seek(3), 3);
    EXPECT_EQ(calls.back(), 1);
    EXPECT_EQ(calls.tell(), 2);
    EXPECT_EQ(calls.seek(-1), -1);
    EXPECT_THAT(take_log(1), ElementsAre("setfpos: Internal file I/O error"));
    calls.close();
}

TEST_P(LineFileTest, kept_creating_does_not_truncate) {
    const std::string path = file("old", "0123456789");
    const Calls calls = GetParam() ? Calls{-1, FileCreate(path.c_str())} : Calls{filecreate(path.c_str(), 2, 0)};
    EXPECT_EQ(calls.put("ab"), 1);
    EXPECT_EQ(calls.out('c'), 1);
    EXPECT_EQ(calls.tell(), 3);
    EXPECT_EQ(calls.put(nullptr), -1);
    calls.close();
    EXPECT_EQ(content(path), "abc3456789");
}

TEST_P(LineFileTest, fails_on_what_cannot_be_read) {
    const Calls calls = open(directory().string());
    char* line = nullptr;
    EXPECT_EQ(calls.line(&line), -1);
    EXPECT_EQ(calls.in(), -1);
    EXPECT_EQ(calls.line(nullptr), -1);
    EXPECT_THAT(take_log(1), ElementsAre("ReadFile failed.", "inch: ReadFile failed."));
    calls.close();
}

class FileTest : public VelTest {};

TEST_F(FileTest, buffered_output_goes_out_in_blocks) {
    const std::string path = (directory() / "new").string();
    const int handle = filecreate(path.c_str(), 2, 1);
    std::string expected;
    for (const std::size_t size : {1u, 4094u, 1u, 4096u, 9000u, 3000u, 0u}) {
        const std::string text(size, static_cast<char>('a' + size % 26));
        EXPECT_EQ(putline(handle, text.c_str()), 1);
        expected += text;
        EXPECT_EQ(getfpos(handle), static_cast<int>(expected.size()));
        EXPECT_EQ(std::filesystem::file_size(path), expected.size() / 4096 * 4096);
    }
    EXPECT_EQ(fileclose(handle), 1);
    EXPECT_EQ(content(path), expected);
}

// A block that is flushed behind the last position fails, and a pipe, which has no offset, just counts.
TEST_F(FileTest, buffered_output_takes_the_real_offset) {
    const std::string block_and_more(5000, 'x');
    int handle = filecreate((directory() / "new").c_str(), 2, 7);
    SetFilePointer(handle, 100, nullptr, SEEK_SET);
    EXPECT_EQ(putline(handle, block_and_more.c_str()), 1);
    EXPECT_EQ(getfpos(handle), 5100);
    SetFilePointer(handle, 0x7FFFFFFF, nullptr, SEEK_SET);
    EXPECT_EQ(putline(handle, block_and_more.c_str()), -1);
    fileclose(handle);
    take_log();

    const std::string pipe = (directory() / "pipe").string();
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const int reader = ::open(pipe.c_str(), O_RDONLY | O_NONBLOCK);
    handle = filecreate(pipe.c_str(), 2, 1);
    for (int i = 0; i < 2; ++i) EXPECT_EQ(putline(handle, block_and_more.c_str()), 1);
    EXPECT_EQ(getfpos(handle), 10000);
    fileclose(handle);
    ::close(reader);
}

// The buffer's count means one thing to readers and another to writers.
TEST_F(FileTest, one_file_is_read_or_written) {
    const std::string path = file("f", "line\nnext\n");
    char* line = nullptr;
    int handle = fileopen(path.c_str(), 1, 1);
    EXPECT_EQ(VELGetLine(handle, &line), 1);
    EXPECT_EQ(putline(handle, std::string(4000, 'x').c_str()), -1);
    EXPECT_EQ(outch('x', handle), -1);
    EXPECT_EQ(inch(handle), 'n');
    fileclose(handle);
    handle = filecreate(path.c_str(), 2, 1);
    EXPECT_EQ(putline(handle, "12345"), 1);
    EXPECT_EQ(VELGetLine(handle, &line), -1);
    EXPECT_EQ(inch(handle), -1);
    fileclose(handle);
    EXPECT_EQ(content(path), "12345next\n");
    EXPECT_THAT(take_log(1), ElementsAre("ReadFile failed.", "inch: ReadFile failed."));
}

TEST_F(FileTest, kept_outch_counts_a_flushed_block_twice) {
    const std::string path = (directory() / "new").string();
    const int handle = filecreate(path.c_str(), 2, 1);
    for (int i = 0; i < 4097; ++i) EXPECT_EQ(outch(i < 4096 ? 'x' : 'y', handle), 1);
    EXPECT_EQ(getfpos(handle), 8193);
    fileclose(handle);
    EXPECT_EQ(content(path), std::string(4096, 'x') + 'y');
}

TEST_F(FileTest, kept_closing_prints_errno_and_positioning_drops_what_is_buffered) {
    int handle = filecreate("/dev/full", 2, 0);
    EXPECT_EQ(putline(handle, "x"), -1);
    EXPECT_EQ(outch('x', handle), -1);
    EXPECT_EQ(fileclose(handle), 1);
    EXPECT_THAT(take_log(1), ElementsAre());

    handle = filecreate("/dev/full", 2, 1);
    EXPECT_EQ(putline(handle, "x"), 1) << "the buffer takes it";
    EXPECT_EQ(putline(handle, std::string(5000, 'x').c_str()), -1);
    testing::internal::CaptureStdout();
    EXPECT_EQ(fileclose(handle), 1);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), std::to_string(ENOSPC) + "\n");

    handle = filecreate("/dev/full", 2, 1);
    for (int i = 0; i <= 4096; ++i) EXPECT_EQ(outch('x', handle), i < 4096 ? 1 : -1);
    setfpos(handle, 0);
    EXPECT_EQ(fileclose(handle), 1);
    EXPECT_THAT(take_log(1),
                ElementsAre("putline: WriteFile failed.", "fileclose: WriteFile failed.", "outch: WriteFile failed."));
}

TEST_F(FileTest, a_failed_open_says_why) {
    const std::string missing = (directory() / "missing").string();
    EXPECT_EQ(fileopen(missing.c_str(), 1, 0), -1);
    EXPECT_EQ(fileopen("", 1, 0), -1);
    EXPECT_EQ(fileopen(nullptr, 1, 0), -1);
    EXPECT_EQ(FileOpen(missing.c_str(), 1), nullptr);
    EXPECT_EQ(filecreate(nullptr, 2, 0), -1);
    EXPECT_EQ(FileCreate(""), nullptr);
    EXPECT_EQ(filecreate((missing + "/x").c_str(), 2, 0), -1);
    EXPECT_EQ(FileCreate((missing + "/x").c_str()), nullptr);
    EXPECT_THAT(take_log(), ElementsAre(LogLine{1, "test", "CreateFile failed: " + missing + ", error 2"},
                                        LogLine{1, "test", "CreateFile failed."}, LogLine{1, "test", "open failed"}));
}

// Positions have 31 bits: such a file is refused, and writing stops before they end.
TEST_F(FileTest, files_of_two_gigabytes_are_refused) {
    const std::string path = file("huge", "");
    std::filesystem::resize_file(path, 0x7FFFFFFF);
    int handle = fileopen(path.c_str(), 1, 0);
    EXPECT_EQ(setfpos(handle, 0x7FFFFFFE), 0x7FFFFFFE);
    EXPECT_EQ(inch(handle), 0);
    EXPECT_EQ(inch(handle), -1);
    EXPECT_EQ(setfpos(handle, 0x7FFFFFFF), 0x7FFFFFFF);
    char* line = nullptr;
    EXPECT_EQ(VELGetLine(handle, &line), 0) << "the end is no error";
    EXPECT_EQ(SetFilePointer(handle, 0x7FFFFFFF, nullptr, SEEK_CUR), -1);
    fileclose(handle);

    handle = fileopen(path.c_str(), 2, 0);
    setfpos(handle, 0x7FFFFFFE);
    EXPECT_EQ(putline(handle, "xy"), -1);
    EXPECT_EQ(outch('x', handle), 1);
    EXPECT_EQ(outch('x', handle), -1);
    EXPECT_EQ(getfpos(handle), 0x7FFFFFFF);
    fileclose(handle);

    std::filesystem::resize_file(path, 0x80000000);
    EXPECT_EQ(fileopen(path.c_str(), 1, 0), -1);
    EXPECT_EQ(FileOpen(path.c_str(), 1), nullptr);
    EXPECT_THAT(take_log(1),
                ElementsAre("CreateFile failed: " + path + ", error " + std::to_string(EFBIG), "CreateFile failed."));
}

TEST_F(FileTest, traces_opens_and_closes_when_asked) {
    set("Debug", "LogFileIO", "true");
    const std::string path = file("traced", "");
    const int handle = fileopen(path.c_str(), 1, 0);
    fileclose(handle);
    FileClose(FileCreate(path.c_str()));  // takes the number that has become free
    const std::string number = "FileHandle #" + std::to_string(handle);
    EXPECT_THAT(take_log(1), ElementsAre("fileopen: " + path + ", " + number, "fileclose: " + number,
                                         "filecreate: " + path + ", " + number, "fileclose: " + number));
}

// One step on a file, the fast way or the plain one; what it comes to.
//   target  of a move
std::string step(LineFile file, uint32_t choice, int32_t target, bool fast) {
    std::string_view line;
    LineResult result{};
    int answer = 0;
    const auto wanted = [](std::string_view text) { return text.starts_with('d'); };
    switch (choice) {
        case 0: answer = fast ? file.return_to(target) : file.set_position(target); break;
        case 1:
            if (fast) {
                result = file.next_where(wanted, line);
            } else {
                do result = file.next(line);
                while (result == LineResult::line && !wanted(line));
            }
            break;
        case 2: answer = file.in(); break;
        case 3: file.step_back(); break;
        default: result = file.next(line);
    }
    return std::to_string(answer) + " " + std::to_string(static_cast<int>(result)) +
           (result == LineResult::line ? std::string(line) : "") + " at " + std::to_string(file.position());
}

// Also in what depends on the blocks: a last line that ends where one ends is dropped.
TEST_F(FileTest, the_fast_ways_through_a_file_lead_where_the_plain_ones_do) {
    Random random(1);
    for (int round = 0; round < 300; ++round) {
        std::string text;
        const std::size_t size = 4096 * random.below(4) + random.below(3) * random.below(3000);
        while (text.size() < size) {
            text.append(random.below(10) == 0 ? random.below(2100) : random.below(90), "abcd"[random.below(4)]);
            text += random.below(20) == 0 ? "" : "\r\n";
        }
        text.resize(size, 'e');
        const std::string path = file("both", text);
        const OpenFile fast(FileOpen(path.c_str(), 1)), plain(FileOpen(path.c_str(), 1));
        LineFile(fast.get()).take_descriptor();
        for (int steps = 0; steps < 400; ++steps) {
            const uint32_t choice = random.below(6);
            const auto back = static_cast<int32_t>(random.below(2) ? random.below(5000) : random.below(120));
            const auto whole_blocks_before_end = static_cast<int32_t>(size % kBlock);
            const int32_t target = back < 20 ? whole_blocks_before_end : std::max(plain->pos - back, 0);
            ASSERT_EQ(step(LineFile(fast.get()), choice, target, true),
                      step(LineFile(plain.get()), choice, target, false))
                << "round " << round << ", step " << steps << ", choice " << choice;
        }
    }
}

TEST_F(FileTest, unknown_handles_fail_in_silence) {
    char* line = nullptr;
    for (const int handle : {-1, 0, 12345, 2000000}) {
        EXPECT_EQ(VELGetLine(handle, &line), -1);
        EXPECT_EQ(putline(handle, "x"), -1);
        EXPECT_EQ(inch(handle), -1);
        EXPECT_EQ(outch('x', handle), -1);
        EXPECT_EQ(setfpos(handle, 0), -1);
        EXPECT_EQ(getfpos(handle), -1);
        EXPECT_EQ(fileclose(handle), 0);
        EXPECT_EQ(CloseHandle(handle), 0);
        EXPECT_EQ(DelFromFilePool(thread_file_pool, handle), 0);
    }
    EXPECT_EQ(GetLine(nullptr, &line), -1);
    EXPECT_EQ(GetFilePos(nullptr), -1);
    EXPECT_EQ(DelFromFilePool(nullptr, 3), -1);
    EXPECT_THAT(take_log(), ElementsAre());
}

TEST_F(FileTest, the_pool_reuses_its_nodes) {
    const std::string path = file("f", "");
    std::vector<int> handles(10);
    int linked = 0;
    for (int round = 0; round < 2; ++round) {
        for (int& handle : handles) handle = fileopen(path.c_str(), 1, 0);
        EXPECT_EQ(thread_file_pool->head.load()->file->fd, handles[0]) << "the first free node is taken first";
        EXPECT_EQ(GetFromFilePool(thread_file_pool, handles[1])->fd, handles[1]);
        EXPECT_GE(thread_file_pool->count, 10);
        if (round == 0) linked = thread_file_pool->count;
        for (const int handle : handles) EXPECT_EQ(fileclose(handle), 1);
        EXPECT_EQ(GetFromFilePool(thread_file_pool, handles[1]), nullptr);
    }
    EXPECT_EQ(thread_file_pool->count, linked);
}

// Shut-down closes what is open and drops what is buffered.
TEST_F(FileTest, the_end_of_the_pool_closes_its_files) {
    const std::string path = (directory() / "left").string();
    const int handle = filecreate(path.c_str(), 2, 1);
    putline(handle, "never written");
    TerminateLineIO();
    EXPECT_EQ(::fcntl(handle, F_GETFD), -1);
    EXPECT_EQ(fileopen(path.c_str(), 1, 0), -1) << "there is no pool";
    TerminateLineIO();
    EXPECT_EQ(InitLineIO(), 0);
    EXPECT_EQ(InitLineIO(), 0);
    EXPECT_EQ(content(path), "");
}

TEST_F(FileTest, kept_windows_shaped_calls_truncate_nothing) {
    const std::string path = (directory() / "w").string();
    uint32_t moved = 77;
    const int out = CreateFile(path.c_str(), 2);
    EXPECT_EQ(WriteFile(out, "hello", 5, &moved, nullptr), 1);
    EXPECT_EQ(moved, 5u);
    EXPECT_EQ(SetFilePointer(out, 1, nullptr, SEEK_SET), 1);
    EXPECT_EQ(SetEndOfFile(out), 1);
    EXPECT_EQ(GetFileSize(out, nullptr), 5u) << "cut to the size that it has";
    EXPECT_EQ(CloseHandle(out), 1);

    const int in = CreateFile(path.c_str(), 1);
    char buffer[16] = {};
    char* line = nullptr;
    EXPECT_EQ(SetFilePointer(in, -4, nullptr, SEEK_END), 1);
    EXPECT_EQ(ReadFile(in, buffer, sizeof buffer, &moved, nullptr), 1);
    EXPECT_EQ(std::string(buffer, moved), "ello");
    EXPECT_EQ(WriteFile(in, "x", 1, &moved, nullptr), 0);
    EXPECT_EQ(moved, 0u);
    EXPECT_EQ(GetLastError(), EBADF);
    SetFilePointer(in, 0, nullptr, SEEK_SET);
    EXPECT_EQ(VELGetLine(in, &line), 1) << "the handle is one of the pool";
    EXPECT_STREQ(line, "hello");
    CloseHandle(in);

    moved = 77;
    EXPECT_EQ(ReadFile(-1, buffer, 1, &moved, nullptr), 0);
    EXPECT_EQ(moved, 77u);
    EXPECT_EQ(ReadFile(in, buffer, 1, &moved, nullptr), 0);
    EXPECT_EQ(moved, 0u);
    EXPECT_EQ(WriteFile(-1, "x", 1, &moved, nullptr), 0);
    EXPECT_EQ(SetFilePointer(-1, 0, nullptr, 0), 0);
    EXPECT_EQ(SetEndOfFile(-1), 0);
}

}  // namespace
}  // namespace vel::test
