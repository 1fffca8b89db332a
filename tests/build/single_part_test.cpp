// Content fields and bodies.
#include "tests/build/built.h"
#include "tests/support/small_disk.h"
#include "vel/frame.h"

namespace vel::test {
namespace {

using testing::ElementsAre;

class SinglePartTest : public BuildTest {
  protected:
    std::string built(const Values& part, std::string_view body) { return taken(build(part, file("body", body))); }

    // The body of an entity without content fields.
    std::string body(Values part, std::string_view content) {
        part.flags = 2;
        const std::string text = built(part, content);
        EXPECT_TRUE(text.starts_with("\r\n")) << text;
        return text.substr(2);
    }
};

TEST_F(SinglePartTest, content_fields) {
    const struct {
        Values part;
        const char* body;
        const char* expected;
    } rows[] = {
        {{},
         "abc",
         "Content-type: application/x-unknown\nContent-transfer-encoding: base64\nContent-disposition: attachment\n\n"
         "YWJj\n"},
        {{.type = "Text", .subtype = "PLAIN"},
         "a=b\r\n",
         "Content-type: Text/PLAIN\nContent-transfer-encoding: quoted-printable\nContent-disposition: inline\n\n"
         "a=3Db\n\n"},
        {{.type = "text",
          .subtype = "html",
          .parameters = "charset=us-ascii||odd",
          .encoding = "7BIT",
          .id = "<1@b>",
          .description = "A \"page\""},
         "x\r\n",
         "Content-type: text/html; charset=\"us-ascii\"; odd\nContent-transfer-encoding: 7BIT\n"
         "Content-description: A \"page\"\nContent-Id: <1@b>\nContent-disposition: attachment\n\nx\n"},
        {{.type = "message", .subtype = "rfc822", .encoding = "7bit", .id = "", .description = ""},
         "x",
         "Content-type: message/rfc822\nContent-transfer-encoding: 7bit\nContent-disposition: inline\n\nx"},
        {{.parameters = "name=report.doc"},
         "",
         "Content-type: application/x-unknown; name=\"report.doc\"\nContent-transfer-encoding: base64\n"
         "Content-disposition: attachment; filename=\"report.doc\"\n\n\n"},
        {{.type = "audio", .flags = 1}, "Cat", "\nbegin 666 unknown.dat \n#0V%T\n`\nend\n\n"},
        {{.type = "text", .encoding = "7bit", .flags = 1}, "Cat", "\nCat"},
        {{.type = "audio", .flags = 2}, "abc", "\nYWJj\n"},
    };
    for (const auto& row : rows) EXPECT_EQ(built(row.part, row.body), crlf(row.expected));
}

TEST_F(SinglePartTest, kept_the_last_name_is_the_disposition_s_and_the_first_the_uuencoded_file_s) {
    EXPECT_EQ(built({.parameters = "name= \t\"a b\"|NAME=c", .encoding = "x-UUencode"}, ""),
              crlf("Content-type: application/x-unknown; name=\" \t\\\"a b\\\"\"; NAME=\"c\"\n"
                   "Content-transfer-encoding: x-UUencode\nContent-disposition: attachment; fileNAME=\"c\"\n\n"
                   "begin 666 a b \n`\nend\n\n"));
    EXPECT_EQ(body({.parameters = "name=", .encoding = "x-uue"}, ""), crlf("begin 666  \n`\nend\n\n"));
}

TEST_F(SinglePartTest, bodies_are_encoded_as_their_type_wants) {
    EXPECT_EQ(body({.type = "MESSAGE", .encoding = "Quoted-Printable"}, "a b\r\n"), "a b\r\n\r\n");
    EXPECT_EQ(body({.type = "image", .encoding = "quoted-printable"}, "a b\r\n"), "a=20b=0D=0A=\r\n\r\n");
    const std::string lines = "one\ntwo\r\n" + std::string(3000, 'x') + "\r\nlast";
    EXPECT_EQ(body({.type = "text", .encoding = "7bit"}, lines), lines);
}

// What getline and putline make of a file.
std::string line_by_line(const std::string& path) {
    std::string text;
    char* line = nullptr;
    const int in = fileopen(path.c_str(), 1, 0);
    while (VELGetLine(in, &line) == 1) text += line;
    fileclose(in);
    return text;
}

TEST_F(SinglePartTest, bodies_are_copied_as_line_by_line) {
    Random random(1);
    for (int round = 0; round < 200; ++round) {
        const uint32_t nuls = random.below(2);
        std::string lines;
        while (lines.size() < 50000) {
            lines += std::string(random.below(random.below(4) ? 80 : 3000), 'x');
            lines += random.below(9) ? "\r\n" : std::string(random.below(20) * nuls, '\0');
        }
        lines.resize(random.below(3) ? lines.size() : 4096 * random.below(13));
        const std::string path = file("body", lines);
        EXPECT_EQ(taken(build({.encoding = "7bit", .flags = 2}, path)), "\r\n" + line_by_line(path));
    }
}

TEST_F(SinglePartTest, kept_a_copied_line_ends_at_nul_and_a_last_one_may_be_dropped) {
    using namespace std::string_literals;
    EXPECT_EQ(body({.encoding = "7bit"}, "one\0 two\r\nthree\r\n"s), "onethree\r\n");
    EXPECT_EQ(body({.encoding = "7bit"}, "a\n" + std::string(4094, 'x')), "a\n" + std::string(3072, 'x'));
}

TEST_F(SinglePartTest, envelope_lines_in_front_of_a_queued_message_are_dropped) {
    const Values message{.type = "message", .subtype = "RFC822", .encoding = "7bit"};
    const std::string longer = "#R" + std::string(1500, 'r') + "\r\n";
    EXPECT_EQ(body(message, "#Fa\r\n" + longer + "#d\r\nA: b\r\n#Fc\r\n"), "A: b\r\n#Fc\r\n");
    const std::string first = "A: " + std::string(1021, 'a') + "#F\r\n";
    EXPECT_EQ(body(message, first + longer), first + longer) << "a piece of a line does not begin one";
    EXPECT_EQ(body(message, "#\r\n#F\r\n"), "#\r\n#F\r\n");
    EXPECT_EQ(body({.type = "text", .encoding = "7bit"}, "#F\r\n"), "#F\r\n");
}

TEST_F(SinglePartTest, japanese_text_is_converted) {
    const std::string a = "\x82\xa0";
    for (const char* charset : {"charset=ISO-2022-JP", "Charset=\"iso-2022-jp\"|charset=x"}) {
        EXPECT_EQ(body({.parameters = charset, .encoding = "7bit"}, a), "\x1b$B$\"\x1b(J");
        EXPECT_THAT(take_log(6), ElementsAre("Attempting to convert text file in ShiftJIS format.", "...Done."));
    }
    EXPECT_EQ(body({.parameters = "charset=x|charset=iso-2022-jp", .encoding = "7bit"}, a), a);
    set("Options", "InvalidCharacterMark", "<?>");
    EXPECT_EQ(body({.parameters = "charset=iso-2022-jp", .encoding = "7bit"},
                   "a\xff"
                   "b"),
              "a<?>b");
}

TEST_F(SinglePartTest, failures_leave_no_file) {
    const std::string file_there = file("body", "x");
    for (const char* encoding : {"8bit", "binary", ""}) {
        EXPECT_EQ(taken(build({.encoding = encoding}, file_there)), "(null)");
        EXPECT_THAT(take_log(1), ElementsAre("Cannot send unencoded binary via Mime."));
    }
    EXPECT_EQ(taken(build({}, "")), "(null)");
    for (const char* encoding : {"base64", "quoted-printable", "x-uue", "7bit"}) {
        EXPECT_EQ(taken(build({.encoding = encoding}, (directory() / "none").string())), "(null)");
        EXPECT_EQ(take_log(1).size(), 1u) << "the file layer's";
        EXPECT_EQ(taken(build({.encoding = encoding}, directory().string())), "(null)") << "a directory";
        take_log();
    }
    set("Gateway", "TemporaryDirectory", (directory() / "none").c_str());
    EXPECT_EQ(build({}, file_there), nullptr);
}

TEST_F(SinglePartTest, a_disk_full_at_any_byte_leaves_no_file) {
    for (const char* encoding : {"base64", "quoted-printable", "x-uue", "7bit"}) {
        const Values part{.type = "text", .encoding = encoding};
        const std::string path = file("body", "some text\r\nand more\r\n");
        const std::size_t whole = taken(build(part, path)).size();
        for (std::size_t size = 4; size <= whole; ++size) {
            const SmallDisk full(size);
            EXPECT_EQ(taken(build(part, path)) == "(null)", size < whole) << encoding << " at " << size;
        }
    }
}

TEST_F(SinglePartTest, without_memory_no_part_is_built) {
    const std::string path = file("body", "some text");
    const std::pair<const char*, const char*> rows[] = {
        {"base64", "l1"}, {"quoted-printable", "iso-2022-jp"}, {"x-uue", "l1"}, {"7bit", "iso-2022-jp"}};
    for (const auto& [encoding, charset] : rows) {
        set("Gateway", "LocalCharSet", charset);
        const std::string parameters = "name=\"a file's name\"|charset=" + std::string(charset);
        const Values part{
            .to = "J\xf6rg", .subject = "\xe4", .type = "text", .parameters = parameters.c_str(), .encoding = encoding};
        expect_whole_or_nothing([&] { return taken(build(part, path)); });
    }
}

TEST_F(SinglePartTest, a_japanese_text_that_finds_no_place_is_told) {
    const std::string path = file("body", "some text");
    const SmallDisk full(8);
    EXPECT_EQ(taken(build({.parameters = "charset=iso-2022-jp", .encoding = "7bit", .flags = 2}, path)), "(null)");
    EXPECT_THAT(take_log(1), ElementsAre("ShiftJIS2JIS conversion failed."));
}

TEST_F(SinglePartTest, kept_a_file_with_the_rest_of_the_header_is_copied_as_far_as_it_can_be_read) {
    const auto copied = [&](const std::string& path) {
        return taken(MimeBuildMessageV2("a", Chain("b@c.d"), "s", Chain("e@f.g"), "text", "plain", Chain("name=x"),
                                        "8bit", "<i>", "d", path.c_str(), Chain("X: y"), 1));
    };
    const std::string header = "From: a\r\nTo: b@c.d\r\nCc: e@f.g\r\nSubject: s\r\n";
    EXPECT_EQ(copied(file("rest", "Date: now\r\n\r\n#Fbody")), header + "Date: now\r\n\r\n#Fbody");
    EXPECT_EQ(copied(directory()), header);
    EXPECT_THAT(take_log(1), ElementsAre("ReadFile failed."));
    EXPECT_EQ(copied(directory() / "none"), "(null)");
    take_log();
    const std::string path = file("rest", "\r\n");
    const SmallDisk full(header.size() + 1);
    EXPECT_EQ(copied(path), "(null)");
}

}  // namespace
}  // namespace vel::test
