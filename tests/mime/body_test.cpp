// Bodies and header blocks as files.
#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <thread>

#include "tests/mime/tree.h"
#include "tests/support/fixture.h"
#include "tests/support/small_disk.h"
#include "vel/mime.h"

namespace vel::test {
namespace {

using testing::ElementsAre;

class BodyTest : public VelTest {
  protected:
    ~BodyTest() override { MimeFreeMessage(&pool_); }

    void parse(const std::string& message) {
        MimeFreeMessage(&pool_);
        MimeParseMessage(file("message", message).c_str(), 1, &pool_);
        ASSERT_NE(pool_, nullptr);
    }

    MimeMsg* record(int index) { return MimeGetMsg(pool_, index); }

    // What stands in the file that a call has made, in the shorthand of shown(); the file goes.
    std::string taken(char* path) {
        if (!path) return "(null)";
        const std::string text = shown(content(path));
        MimeFreeFile(path);
        EXPECT_THAT(left_behind("MIME"), ElementsAre());
        EXPECT_THAT(left_behind("mime"), ElementsAre());
        return text;
    }
    std::string body(int index, bool raw = false, int fd = -1) { return taken(MimeGetBody(record(index), raw, fd)); }

    mime_msg_pool* pool_ = nullptr;
};

constexpr const char* kHead = "MIME-Version: 1.0\r\nContent-Type: multipart/mixed; boundary=b\r\n\r\n";

TEST_F(BodyTest, kept_bodies_are_decoded_or_delivered_as_they_stand) {
    struct {
        const char* header;
        const char* body;
        const char* expected;
        const char* true_name = nullptr;
    } const rows[] = {
        {"", "as it is\r\n", "as it is/"},
        {"Content-Transfer-Encoding: BASE64", "QUJD\r\nREU=\r\n", "ABCDE"},
        {"Content-Transfer-Encoding: base64", "QU*D\r\n", "QU*D/"},
        {"Content-Transfer-Encoding: Quoted-Printable", "a=3D=\r\nb\r\nc\r\n", "a=b/c"},
        {"Content-Transfer-Encoding: quoted-printable", "a=4", "a=4"},
        {"Content-Transfer-Encoding: x-UUEncode", "begin 644 a b\r\n#0V%T\r\n`\r\nend\r\n", "Cat", "a b"},
        {"Content-Transfer-Encoding: x-uue", "text\r\n", "text/"},
        {"Content-Transfer-Encoding: uue", "begin 644 a\r\n#0V%T\r\n", "begin 644 a/#0V%T/"},
        {"Content-Transfer-Encoding: x-own", "QUJD\r\n", "QUJD/"},
        {"Content-Type: application/mac-binhex40", ":abc:\r\n", ":abc:/"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.header) + row.body);
        const std::string header = *row.header ? row.header + std::string("\r\n") : "";
        const std::string message = "MIME-Version: 1.0\r\n" + header + "\r\n" + row.body;
        parse(message);
        EXPECT_EQ(body(0), row.expected);
        EXPECT_STREQ(MimeGetTrueName(record(0)), row.true_name);
        EXPECT_EQ(body(0, true), shown(message));
    }
}

TEST_F(BodyTest, kept_only_the_first_u_names_uuencode) {
    for (const auto& [name, expected] : {std::pair("u-uue", "begin 1 f/`/end/"), {"u-Uue", ""}}) {
        parse("MIME-Version: 1.0\r\nContent-Transfer-Encoding: " + std::string(name) +
              "\r\n\r\nbegin 1 f\r\n`\r\nend\r\n");
        EXPECT_EQ(body(0), expected);
    }
}

TEST_F(BodyTest, reads_from_an_open_descriptor_and_leaves_it_open) {
    parse(std::string(kHead) + "--b\r\n\r\none\r\n--b\r\nContent-Transfer-Encoding: base64\r\n\r\nQUJD\r\n--b--\r\n");
    const int fd = ::open(record(0)->fileName, O_RDONLY);
    EXPECT_EQ(body(2, false, fd), "ABC");
    EXPECT_EQ(body(1, false, fd), "one/");
    EXPECT_NE(::fcntl(fd, F_GETFD), -1);
    ::close(fd);
}

TEST_F(BodyTest, empty_backwards_and_missing_bodies) {
    parse(std::string(kHead) + "--b\r\n\r\n--b--\r\n");
    MimeMsg* empty = record(1);
    ASSERT_EQ(empty->bodyStart, empty->bodyEnd);
    EXPECT_EQ(taken(MimeGetBodyWithNoEmbeddedAttachment(empty)), "(null)");
    for (const char* encoding : {"base64", "quoted-printable", "x-uue"}) {
        empty->contentTransferEncoding = const_cast<char*>(encoding);
        EXPECT_EQ(body(1), "") << encoding;
    }
    empty->contentTransferEncoding = nullptr;
    --empty->bodyEnd;
    EXPECT_EQ(body(1), "(null)");
    EXPECT_EQ(taken(MimeGetBodyWithNoEmbeddedAttachment(empty)), "(null)");
    EXPECT_EQ(taken(MimeGetBody(nullptr, 0, -1)), "(null)");
    EXPECT_EQ(taken(MimeGetHeader(nullptr)), "(null)");
    empty->headerStart = empty->bodyEnd;
    EXPECT_EQ(taken(MimeGetHeader(empty)), "(null)");

    const std::string path = record(0)->fileName;
    ::unlink(path.c_str());
    EXPECT_EQ(body(0), "(null)");
    EXPECT_EQ(taken(MimeGetHeader(record(0))), "(null)");
    EXPECT_EQ(take_log(1).size(), 2u) << "the file layer's complaints";
    set("Gateway", "TemporaryDirectory", (directory() / "missing").c_str());
    file("message", "x");
    EXPECT_EQ(body(0), "(null)");
}

// A message file that has been cut since it was parsed ends the copy, not the program.
TEST_F(BodyTest, a_file_cut_behind_the_parser_gives_what_is_left) {
    parse("MIME-Version: 1.0\r\n\r\n0123456789");
    std::filesystem::resize_file(record(0)->fileName, 26);
    EXPECT_EQ(body(0), "01234");
    EXPECT_EQ(taken(MimeGetHeader(record(0))), "MIME-Version: 1.0//");
}

TEST_F(BodyTest, header_blocks) {
    const std::string subject = "Subject: " + std::string(1500, 's');
    parse("#Fsender\r\nMIME-Version: 1.0\r\n#Rrecipient\r\n" + subject +
          "\r\nContent-Type: multipart/mixed; boundary=b\r\n\r\npreamble\r\n--b\r\nX: y\r\n\r\none\r\n--b--\r\n");
    EXPECT_EQ(taken(MimeGetHeader(record(0))),
              "MIME-Version: 1.0/" + subject + "/Content-Type: multipart/mixed; boundary=b//preamble/")
        << "a multipart's runs on to its first delimiter";
    EXPECT_EQ(taken(MimeGetHeader(record(1))), "X: y//");
}

TEST_F(BodyTest, encoded_words_of_header_lines_are_decoded) {
    using namespace std::string_literals;
    set("Gateway", "LocalCharSet", "l1");
    const auto header = [this](const std::string& lines) {
        parse("MIME-Version: 1.0\r\n" + lines + "\r\n\r\nbody =?l1?Q?=3D?=");
        return taken(MimeGetHeader(record(0))).substr(sizeof "MIME-Version: 1.0/" - 1);
    };
    EXPECT_EQ(header("Subject: =?L1?Q?a=3Db?= =?L1?B?\r\n =?L1?B?QUI=?= =?utf-8?B?QQ==?="),
              "Subject: a=b =?L1?B?/ AB =?utf-8?B?QQ==?=//")
        << "each line by itself";
    EXPECT_EQ(header("A: =?l1?Q?=41=00=0D=0A?=\r\nB: =?l1?Q?=41?=\0"s), "A: A/B: =?l1?Q?=41?=\0//"s)
        << "NUL ends a word, and keeps its line";
    const std::string piece = "X: " + std::string(1000, 'x') + "=?l1?Q?=41" + std::string(11, 'y');
    EXPECT_EQ(header(piece + "?= =?l1?Q?=41?="), piece + "?= A//") << "a long line comes in pieces";
    set("Options", "Force1522Decoding", "YES");
    EXPECT_EQ(header("Subject: =?utf-8?Q?=41?="), "Subject: A//");
}

TEST_F(BodyTest, texts_without_the_files_embedded_in_them) {
    parse("MIME-Version: 1.0\r\n\r\na\r\nbegin 644 f\r\n#0V%T\r\n`\r\nend\r\nb\r\nbegin 1 g\r\nend\r\nc");
    EXPECT_EQ(taken(MimeGetBodyWithNoEmbeddedAttachment(record(0))), "a/b/c");
    EXPECT_EQ(body(1), "Cat");
    EXPECT_STREQ(MimeGetTrueName(record(1)), "f");
    parse("MIME-Version: 1.0\r\n\r\nbegin 644 f\r\n`\r\nend\r\n");
    EXPECT_EQ(taken(MimeGetBodyWithNoEmbeddedAttachment(record(0))), "");
}

TEST_F(BodyTest, a_full_disk_leaves_no_file) {
    const std::string text(100, 'A');
    for (const std::string encoding : {"7bit", "base64", "quoted-printable", "x-uue"}) {
        SCOPED_TRACE(encoding);
        const std::string file = "some text\r\nbegin 644 f\r\nM" + text + "\r\n`\r\nend\r\n";
        parse("MIME-Version: 1.0\r\nContent-Transfer-Encoding: " + encoding + "\r\n\r\n" +
              (encoding == "x-uue" ? file : text));
        const SmallDisk full(8);
        EXPECT_EQ(body(0), "(null)");
        EXPECT_EQ(taken(MimeGetHeader(record(0))), "(null)");
        EXPECT_EQ(taken(MimeGetBodyWithNoEmbeddedAttachment(record(0))), "(null)");
    }
    take_log();
}

TEST_F(BodyTest, kept_texts_have_a_prefix_of_their_own) {
    parse("MIME-Version: 1.0\r\n\r\nx");
    for (const auto& [path, prefix] :
         {std::pair(MimeGetBody(record(0), 0, -1), "/MIME"), std::pair(MimeGetHeader(record(0)), "/MIME"),
          std::pair(MimeGetBodyWithNoEmbeddedAttachment(record(0)), "/mime")}) {
        EXPECT_NE(std::string(path).find(directory().string() + prefix), std::string::npos) << path;
        MimeFreeFile(path);
    }
}

TEST_F(BodyTest, leaves_and_containers_are_counted) {
    parse(std::string(kHead) +
          "--b\r\n\r\n1\r\n--b\r\nContent-Type: multipart/x; boundary=c\r\n\r\n--c\r\n\r\n2\r\n"
          "--c\r\n\r\n3\r\n--c--\r\n--b--\r\n");
    int leaves = 1;
    int containers = 0;
    EXPECT_EQ(MimeGetNumLeafBodyParts(record(0), &leaves), 0);
    EXPECT_EQ(MimeGetNumMultipartHeaders(record(0), &containers), 0);
    EXPECT_EQ(leaves, 3);
    EXPECT_EQ(containers, 2);
    EXPECT_EQ(MimeGetNumberOfMessage(pool_), 5);
    EXPECT_STREQ(MimeGetContentType(record(2)), "multipart");
    EXPECT_STREQ(MimeGetContentTypeParams(record(2))->text, "boundary=c");
    EXPECT_EQ(MimeGetNumLeafBodyParts(nullptr, &leaves), -1);
    EXPECT_EQ(MimeGetNumMultipartHeaders(record(0), nullptr), -1);
    EXPECT_EQ(MimeGetNumberOfMessage(nullptr), -1);
    for (const int index : {-1, 5}) EXPECT_EQ(MimeGetMsg(pool_, index), nullptr);
    EXPECT_EQ(MimeGetMsg(nullptr, 0), nullptr);
    EXPECT_EQ(MimeGetContentID(nullptr), nullptr);
    EXPECT_EQ(MimeGetContentDispositionParams(nullptr), nullptr);
    MimeFreeFile(nullptr);
    MimeFreeMessage(nullptr);
}

class MimeThreads : public BodyTest {};

TEST_F(MimeThreads, parses_and_extractions_run_at_once) {
    const std::string path = file("shared", std::string(kHead) +
                                                "--b\r\n\r\none\r\n--b\r\nContent-Transfer-Encoding: base64\r\n\r\n"
                                                "QUJD\r\n--b--\r\n");
    std::atomic<int> good = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, this] {
            const QuietLog quiet;
            set("Gateway", "TemporaryDirectory", directory().c_str());
            for (int i = 0; i < 50; ++i) {
                mime_msg_pool* pool = nullptr;
                if (MimeParseMessage(path.c_str(), 1, &pool) != 3) continue;
                char* body = MimeGetBody(pool->items[2], 0, -1);
                if (body && content(body) == "ABC") ++good;
                MimeFreeFile(body);
                MimeFreeMessage(&pool);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(good, 200);
}

}  // namespace
}  // namespace vel::test
