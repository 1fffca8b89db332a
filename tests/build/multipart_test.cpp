// Messages of several parts.
#include <array>
#include <atomic>
#include <ctime>
#include <set>
#include <thread>

#include "tests/build/built.h"
#include "tests/support/small_disk.h"

namespace vel::test {
namespace {

class MultipartTest : public BuildTest {
  protected:
    // Builds a message of the parts' files; "(none)" passes no array.
    char* build(const Values& v, std::vector<std::string> paths) {
        std::vector<char*> parts;
        for (std::string& path : paths) parts.push_back(path.data());
        parts.push_back(nullptr);
        const bool has_array = paths != std::vector<std::string>{"(none)"};
        Chain to(v.to), cc(v.cc), bcc(v.bcc), parameters(v.parameters), extra(v.extra);
        char* const* const array = has_array ? parts.data() : nullptr;
        const Starved starved(granted_);
        if (bcc) {
            return MimeBuildMultipartMessageWithBCC(v.from, to, v.subject, cc, bcc, array, v.subtype, parameters, extra,
                                                    v.flags);
        }
        return MimeBuildMultipartMessage(v.from, to, v.subject, cc, array, v.subtype, parameters, extra, v.flags);
    }

    // What stands in the message, with "B" for the boundary.
    std::string built(const Values& values, std::vector<std::string> paths) {
        const std::string text = taken(build(values, std::move(paths)));
        const std::string boundary = boundary_of(text);
        return boundary.empty() ? text : replaced(text, boundary, "B");
    }

    const std::string one_ = file("one", "A: b\r\n\r\none");
    const std::string two_ = file("two", "\r\ntwo\r\n");
};

TEST_F(MultipartTest, parts_stand_between_delimiters) {
    const std::string parts = "\n--B\nA: b\n\none\n--B\n\ntwo\n\n--B--\n";
    const std::string type = "Content-type: multipart/mixed; boundary=\"B\"\n";
    EXPECT_EQ(built({.from = "me"}, {one_, two_}), crlf("From: me\n" + type + kPreamble + parts));
    EXPECT_EQ(
        built({.from = "me", .bcc = "a@b.c", .subtype = "Report", .parameters = "x=y||odd", .extra = "X: y"}, {one_}),
        crlf("From: me\nBcc: a@b.c\nX: y\nContent-type: multipart/Report; boundary=\"B\"; x=\"y\"; odd\n" +
             std::string(kPreamble) + "\n--B\nA: b\n\none\n--B--\n"));
    for (const char* no_part : {"(none)", ""}) {
        const auto paths = *no_part ? std::vector<std::string>{no_part} : std::vector<std::string>{};
        EXPECT_EQ(built({.from = ""}, paths), crlf(type + kPreamble + "\n--B--\n"));
    }
    EXPECT_EQ(built({.from = "me", .extra = "X: y", .flags = 2}, {one_, two_}),
              crlf("From: me\nX: y\nA: b\n\none\ntwo\n"));
}

TEST_F(MultipartTest, kept_a_message_without_from_to_cc_and_subject_is_a_part) {
    EXPECT_EQ(built({.bcc = "a@b.c", .extra = "X: y"}, {two_}),
              crlf("Bcc: a@b.c\nX: y\nContent-type: multipart/mixed; boundary=\"B\"\n\n--B\n\ntwo\n\n--B--\n"));
    EXPECT_EQ(built({.subject = "s", .cc = "a@b.c", .flags = 1}, {two_}), crlf("Cc: a@b.c\nSubject: s\n\ntwo\n"));
    for (const Values& values : {Values{.from = ""}, {.to = "|"}, {.subject = ""}, {.cc = "|"}}) {
        EXPECT_THAT(built(values, {two_}), testing::HasSubstr(crlf(kPreamble)));
    }
}

TEST_F(MultipartTest, kept_a_preamble_file_that_cannot_be_read_leaves_none) {
    const std::string type = "From: me\nContent-type: multipart/mixed; boundary=\"B\"\n";
    const auto preamble = [&](const std::string& path) {
        set("Options", "mimePreambleFile", path.c_str());
        const std::string text = built({.from = "me"}, {"(none)"});
        EXPECT_EQ(text.substr(0, type.size() + 2), crlf(type));
        EXPECT_TRUE(text.ends_with("\r\n--B--\r\n")) << text;
        take_log();
        return text.substr(type.size() + 2, text.size() - type.size() - 2 - 9);
    };
    EXPECT_EQ(preamble(file("preamble", "one\r\ntwo\r\n")), "\r\none\r\ntwo\r\n");
    EXPECT_EQ(preamble((directory() / "none").string()), crlf(kPreamble));
    EXPECT_EQ(preamble("NONE"), crlf(kPreamble));
    EXPECT_EQ(preamble(directory()), "\r\n") << "can be opened, and not read";
    const std::string huge = file("huge", "x");
    std::filesystem::resize_file(huge, std::uintmax_t{1} << 31);
    EXPECT_EQ(preamble(huge), "") << "may be read, and not be opened";
}

TEST_F(MultipartTest, a_part_that_cannot_be_read_leaves_no_file) {
    for (const std::string& path : {(directory() / "none").string(), directory().string(), std::string()}) {
        for (const int flags : {0, 1}) EXPECT_EQ(built({.flags = flags}, {one_, path}), "(null)") << path;
        take_log();
    }
}

TEST_F(MultipartTest, a_disk_full_at_any_byte_leaves_no_file) {
    const std::string long_part = file("long", std::string(5000, 'x') + "\r\n");
    for (const auto& paths : {std::vector<std::string>{one_}, {one_, long_part}}) {
        const std::size_t whole = taken(build({.from = "me"}, paths)).size();
        for (std::size_t size = whole > 4096 ? 4000 : 4; size <= whole;
             size += size > 4100 && whole - size > 9 ? 7 : 1) {
            const SmallDisk full(size);
            EXPECT_EQ(taken(build({.from = "me"}, paths)) == "(null)", size < whole) << size;
        }
    }
    take_log();
}

TEST_F(MultipartTest, without_memory_no_message_is_built) {
    expect_whole_or_nothing([&] {
        return built({.from = "me", .to = "joe", .subject = "\xe4", .parameters = "name=a", .extra = "X: y"},
                     {one_, two_});
    });
}

TEST_F(MultipartTest, kept_one_thread_gets_the_same_boundary_within_a_second) {
    const auto boundary = [this] { return boundary_of(taken(build({}, {}))); };
    std::string first, second;
    std::time_t before{}, after{};
    do {
        before = std::time(nullptr);
        first = boundary();
        second = boundary();
        after = std::time(nullptr);
    } while (before != after);
    EXPECT_EQ(first, second);
    char seconds[9];
    std::snprintf(seconds, sizeof seconds, "%08X", static_cast<unsigned>(before));
    EXPECT_EQ(first.substr(13, 8), seconds);
    EXPECT_EQ(first.find_first_not_of("0123456789ABCDEF", 13), std::string::npos) << first;
}

class BuildThreads : public MultipartTest {};

TEST_F(BuildThreads, threads_build_at_once_with_boundaries_of_their_own) {
    std::array<std::string, 4> boundaries;
    std::atomic<std::size_t> ready = 0;
    std::vector<std::thread> threads;
    for (std::string& boundary : boundaries) {
        threads.emplace_back([&] {
            const QuietLog quiet;
            set("Gateway", "TemporaryDirectory", directory().c_str());
            for (++ready; ready < boundaries.size();) std::this_thread::yield();
            for (int i = 0; i < 20; ++i) {
                char* path = build({.from = "me"}, {one_, two_});
                boundary = path ? boundary_of(content(path)) : "none";
                std::free(path);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    std::set<std::string> numbers;
    for (const std::string& boundary : boundaries) numbers.insert(boundary.substr(21));
    EXPECT_EQ(numbers.size(), boundaries.size());
}

}  // namespace
}  // namespace vel::test
