#include <sys/ioctl.h>

#include <chrono>
#include <thread>

#include "codec/byte_buffer.h"
#include "codec/handle_io.h"
#include "codec/limited_input.h"
#include "tests/codec/codec_calls.h"

namespace vel::test {
namespace {

// Every call that goes from handle to handle, and its result when it fails.
struct Named {
    std::string name;
    std::function<int(int in, int out)> call;
    int failed;
};

const Named kCalls[] = {
    {"to64", to64, -1},
    {"textToQp", textToQp, -1},
    {"binaryToQp", binaryToQp, -1},
    {"uuencode", [](int in, int out) { return uuencode(in, out, nullptr, nullptr); }, -1},
    {"from64", [](int in, int out) { return from64(in, 300, out); }, -1},
    {"fromqp", [](int in, int out) { return fromqp(in, 300, out); }, -1},
    {"uudecode", [](int in, int out) { return uudecode(in, 0, out, nullptr); }, 0},
};

const std::string kBegin = "begin 644 n\r\n";

class HandleIo : public CodecTest {};

TEST_F(HandleIo, failures_are_told) {
    const std::string text = file("text", kBegin + std::string(300, 'A') + "\r\n`\r\nend\r\n");
    const int out = CreateFile(file("out", "").c_str(), 2);
    const int full = CreateFile("/dev/full", 2);
    const int folder = CreateFile(directory().c_str(), 1);
    for (const auto& [name, call, failed] : kCalls) {
        SCOPED_TRACE(name);
        EXPECT_EQ(call(folder, out), failed) << "a read that fails";
        EXPECT_EQ(call(-1, out), failed) << "no input";
        for (const int no_output : {-1, full}) {
            const int in = CreateFile(text.c_str(), 1);
            if (name != "uudecode") SetFilePointer(in, static_cast<int>(kBegin.size()), nullptr, SEEK_SET);
            EXPECT_EQ(call(in, no_output), name == "uuencode" ? 0 : failed) << no_output;
            CloseHandle(in);
        }
    }
    EXPECT_EQ(take_log(1).size(), 1U) << "the line reader tells of the folder";
    for (const int handle : {folder, out, full}) CloseHandle(handle);
}

TEST_F(HandleIo, uuencode_tells_a_failed_begin_line_from_other_failures) {
    const auto encode = [](int in, int out) { return uuencode(in, out, "n", "644"); };
    EXPECT_EQ(run(encode, "Cat", 5).result, 0);
    EXPECT_EQ(run(encode, "Cat", 14).result, -1);
}

TEST_F(HandleIo, no_bytes_are_read_of_an_empty_stretch) {
    const int in = CreateFile(file("in", "text").c_str(), 1);
    EXPECT_TRUE(CountedInput(in, 0).next().empty());
    EXPECT_TRUE(LimitedInput(in, 0).next().empty());
    EXPECT_EQ(SetFilePointer(in, 0, nullptr, SEEK_CUR), 0);
    CloseHandle(in);
}

TEST_F(HandleIo, pipes_are_read_by_256_bytes) {
    const std::string path = file("out", "");
    const int out = CreateFile(path.c_str(), 2);
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const std::string text = "QUI=" + std::string(1196, 'A');
    ASSERT_EQ(::write(ends[1], text.data(), text.size()), 1200);
    ::close(ends[1]);
    EXPECT_EQ(from64(ends[0], 600, out), 1) << "ends in the first block";
    EXPECT_EQ(from64(ends[0], 600, out), 1);
    EXPECT_EQ(content(path).size(), 2U + 450);
    int left = 0;
    EXPECT_EQ(::ioctl(ends[0], FIONREAD, &left), 0);
    EXPECT_EQ(left, 1200 - 4 * 256);
    EXPECT_EQ(textToQp(ends[0], out), -1) << "there is no size to take the count from";
    EXPECT_EQ(from64(ends[0], left + 1, out), -1);
    ::close(ends[0]);
    CloseHandle(out);
}

TEST_F(HandleIo, short_reads_are_no_end) {
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    std::thread writer([&] {
        for (int i = 0; i < 400; ++i) {
            EXPECT_EQ(::write(ends[1], i % 2 ? "JD\r\n" : "QUJDQU", i % 2 ? 4 : 6), i % 2 ? 4 : 6);
            std::this_thread::sleep_for(std::chrono::microseconds(20));
        }
        ::close(ends[1]);
    });
    const std::string path = file("out", "");
    const int out = CreateFile(path.c_str(), 2);
    EXPECT_EQ(from64(ends[0], 1000, out), 1);
    EXPECT_EQ(content(path).size(), 600U);
    EXPECT_EQ(to64(ends[0], out), 0);
    writer.join();
    ::close(ends[0]);
    CloseHandle(out);
}

TEST_F(HandleIo, bytes_through_a_buffer) {
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    uint8_t buffer[4] = {};
    int count = 0;
    for (const char c : std::string("abcdef")) EXPECT_EQ(writeonechar(ends[1], c, buffer, sizeof buffer, &count), 0);
    EXPECT_EQ(count, 2) << "written when a byte finds it full";
    EXPECT_EQ(flushallchar(ends[1], buffer, &count), 0);
    EXPECT_EQ(flushallchar(-1, buffer, &count), 0) << "nothing to do";
    EXPECT_EQ(count, 0);
    int index = 0;
    std::string got;
    const auto read = [&] { return getonechar(ends[0], buffer, sizeof buffer, &index); };
    got += static_cast<char>(read());
    EXPECT_EQ(index, 1);
    for (int i = 1; i < 6; ++i) got += static_cast<char>(read());
    ::close(ends[1]);
    EXPECT_EQ(read(), -1) << "nothing of the block before is read";
    EXPECT_EQ(got, "abcdef");
    count = 4;
    EXPECT_EQ(writeonechar(-1, 'x', buffer, sizeof buffer, &count), -1);
    ::close(ends[0]);
}

TEST_F(HandleIo, outenc_writes_a_group) {
    const std::string path = file("group", "");
    const int out = CreateFile(path.c_str(), 2);
    EXPECT_EQ(outenc('C', 'a', 't', out), 0);
    EXPECT_EQ(outenc(0, 0, 0xFF, out), 0);
    EXPECT_EQ(getfpos(out), 8);
    CloseHandle(out);
    EXPECT_EQ(content(path), "0V%T``#_");
    EXPECT_EQ(outenc(0, 0, 0, -1), -1);
}

}  // namespace
}  // namespace vel::test
