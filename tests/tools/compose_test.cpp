// vel build and vel send: what they write, queue and refuse, and what comes back.
#include <unistd.h>

#include "tests/tools/sending_place.h"
#include "vel/mime.h"
#include "vel/rfc822.h"

namespace vel::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

using Texts = std::vector<std::string>;

class ComposeTest : public SendingTest {
  protected:
    ComposeTest() { Init822Parser(); }
    ~ComposeTest() override { Terminate822Parser(); }

    Ended build(const Texts& options, const std::string& standard_input = "") const {
        Texts arguments{"build", "--from", "me@example.com", "--to", "ann@example.com"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return run(arguments, standard_input);
    }

    Ended send(const Texts& options, const std::string& standard_input) const {
        Texts arguments{"send", "-", "--from", "me@example.com", "--to", "ann@example.com"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return run(arguments, standard_input);
    }

    // The bodies of a message's leaves, in order.
    static Texts bodies(const std::string& path) {
        mime_msg_pool* pool = nullptr;
        Texts texts;
        for (int i = 0, count = MimeParseMessage(path.c_str(), 1, &pool); i < count; ++i) {
            MimeMsg* record = MimeGetMsg(pool, i);
            if (record->boundary) continue;
            char* body = MimeGetBody(record, 0, -1);
            texts.push_back(body ? content(body) : "");
            MimeFreeFile(body);
        }
        MimeFreeMessage(&pool);
        return texts;
    }

    // The value of a field, unfolded.
    static std::string field(const std::string& message, const std::string& name) {
        std::size_t at = message.find("\r\n" + name + ": ");
        if (at == std::string::npos) return "none";
        std::string value;
        for (at += name.size() + 4; message.compare(at, 2, "\r\n") != 0 || message[at + 2] == ' '; ++at) {
            if (message[at] != '\r' && message[at] != '\n') value += message[at];
        }
        return value;
    }

    static std::string line_of(std::string said) {
        said.resize(std::min(said.size(), said.find('\n')));
        return said;
    }
};

TEST_F(ComposeTest, texts_and_files_come_back_byte_by_byte) {
    const Texts texts{"",
                      "a",
                      "a\nb\r\n\n\n",
                      "From me\nFrom you\n. \n",
                      "ends\nFrom",
                      "a\rb\nc\r",
                      std::string("a\0b\n", 4),
                      std::string(3000, 'x') + "\n",
                      std::string(4096, 'y'),
                      "Gr\xc3\xbc\xc3\x9f"
                      "e = \t\n",
                      "begin 644 x\n#0V%T\n`\nend\n",
                      std::string(73, 'x') + "begin 644 x\n#0V%T\n`\nend\n",
                      "(This file must be converted with BinHex 4.0)\n\n:a:\n",
                      "--VEL.Boundary.0\n--VEL\n"};
    Random random(1);
    std::string binary;
    for (int i = 0; i < 5000; ++i) binary += static_cast<char>(random.below(256));
    for (const std::string& text : texts) {
        std::string mail_text;
        for (const char c : text) mail_text.append(c == '\n' && !mail_text.ends_with('\r') ? "\r" : "") += c;
        if (!text.empty() && !text.ends_with('\n')) mail_text += "\r\n";
        const std::string given = file("text.txt", text), other = file("other.txt", mail_text);
        ASSERT_EQ(build({"--text", given, "-o", target()}).exit, 0) << text;
        EXPECT_THAT(bodies(target()), ElementsAre(mail_text));
        ASSERT_EQ(build({"--text", given, "--attach", file("b", binary), given, other, "-o", target()}).exit, 0);
        EXPECT_THAT(bodies(target()), ElementsAre(mail_text, binary, text, mail_text));
    }
}

TEST_F(ComposeTest, a_message_is_built_where_it_is_to_stand) {
    const std::string other = "/dev/shm/vel-compose-" + std::to_string(::getpid());
    if (::access("/dev/shm", W_OK) != 0) GTEST_SKIP() << "no other file system";
    for (const char* option : {"--text", "--attach"}) {
        const Ended ended = build({option, file("text", "Hello\n"), "-o", other});
        EXPECT_EQ(ended.exit, 0) << ended.err;
        EXPECT_TRUE(std::filesystem::remove(other)) << option;
    }
}

struct HeaderRow {
    Texts options;
    std::string name, value;
};

TEST_F(ComposeTest, header_lines_say_what_was_given) {
    const std::string zoe = "Zo\xc3\xab";
    const std::vector<HeaderRow> rows{
        {{"--subject", "Plain (a) (b)"}, "Subject", "Plain (a) (b)"},
        {{"--subject", zoe + " (a)  (b)"}, "Subject", "=?UTF-8?Q?Zo=C3=AB?= (a)  (b)"},
        {{"--subject", "to " + zoe + " " + zoe + " x"}, "Subject", "to =?UTF-8?Q?Zo=C3=AB_Zo=C3=AB?= x"},
        {{"--subject", std::string(60, 'x') + " " + std::string(60, 'y')},
         "Subject",
         std::string(60, 'x') + " " + std::string(60, 'y')},
        {{"--subject", std::string(50, 'x') + "\xc3\xab" + "y"},
         "Subject",
         "=?UTF-8?Q?" + std::string(50, 'x') + "?= =?UTF-8?Q?=C3=ABy?="},
        {{"--cc", zoe + " <z@example.com>", "z@example.com (" + zoe + ")"},
         "Cc",
         "=?UTF-8?Q?Zo=C3=AB?= <z@example.com>,    z@example.com (=?UTF-8?Q?Zo=C3=AB?=)"},
        {{"--cc", "\"" + zoe + " \\\"Q\\\", Dr.\" <z@host>"}, "Cc", "=?UTF-8?Q?Zo=C3=AB_=22Q=22=2C_Dr=2E?= <z@host>"},
        {{"--cc", "\"a@b, c\" <joe@host>"}, "Cc", "\"a@b, c\" <joe@host>"},
        {{"--bcc", "eve@example.com"}, "Bcc", "eve@example.com"},
        {{"--header", "X-Y: a (" + zoe + ")"}, "X-Y", "a =?UTF-8?Q?=28Zo=C3=AB=29?="},
        {{"--header", "date: never"}, "Date", "none"},
        {{}, "Mime-version", "1.0"},
        {{}, "Subject", "none"},
        {{}, "Content-type", "text/plain; charset=\"us-ascii\""},
        {{"--text", file("j", std::string(999, 'x')), "--charset", "iso-2022-jp"},
         "Content-transfer-encoding",
         "quoted-printable"},
        {{"--text", file("t", zoe)}, "Content-type", "text/plain; charset=\"utf-8\""},
        {{"--text", file("s", "\xe9\n"), "--charset", "iso-8859-1"},
         "Content-type",
         "text/plain; charset=\"iso-8859-1\""},
    };
    for (const HeaderRow& row : rows) {
        const Ended ended = build(row.options);
        EXPECT_EQ(field(ended.out, row.name), row.value) << testing::PrintToString(row.options);
        EXPECT_EQ(ended.exit, 0) << ended.err;
    }
    EXPECT_THAT(field(build({}).out, "Message-ID"),
                testing::MatchesRegex("<[0-9a-f]+\\.[0-9a-f]+\\.VEL@example\\.com>"));
}

struct FileRow {
    std::string name, content, type, value;  // of the name parameter, in the message
};

TEST_F(ComposeTest, attachments_have_a_type_and_their_name) {
    const std::string message = "From: a@b.c\nDate: x\n\nbody\n", utf8 = "\xc3\xbc";
    const std::vector<FileRow> rows{
        {"a b.PDF", "x", "application/pdf; ", "a b.PDF"},
        {"q\"\\.csv", "x", "text/csv; charset=\"us-ascii\"; ", "q\\\"\\\\.csv"},
        {"\"x\"", utf8, "text/plain; charset=\"utf-8\"; ", "\\\"x\\\""},
        {"bin.txt", "\xff", "application/octet-stream; ", "bin.txt"},
        {utf8 + " \n", "%PDF-1", "text/plain; charset=\"us-ascii\"; ", "=?UTF-8?Q?=C3=BC_=0A?="},
        {"=?x?Q?y?=", "GIF8\xff", "image/gif; ", "=?UTF-8?Q?=3D=3Fx=3FQ=3Fy=3F=3D?="},
        {"mail", message, "message/rfc822; ", "mail"},
        {"no.eml", "text", "application/octet-stream; ", "no.eml"},
        {"8bit.eml", message + utf8, "application/octet-stream; ", "8bit.eml"},
        {"cut.eml",
         message.substr(0, 20) + "MIME-Version: 1.0\nContent-Type: multipart/mixed; boundary=b\n\n--b\n\nx\n",
         "application/octet-stream; ", "cut.eml"},
    };
    for (const FileRow& row : rows) {
        const Ended ended = build({"--attach", file(row.name, row.content)});
        EXPECT_THAT(ended.out, HasSubstr("\r\nContent-type: " + row.type + "name=\"" + row.value + "\"\r\n"));
        EXPECT_THAT(ended.out, HasSubstr("; filename=\"" + row.value + "\"\r\n")) << ended.err;
    }
}

struct Refusal {
    Texts arguments;
    int exit;
    std::string said;
};

TEST_F(ComposeTest, build_refuses_what_would_be_lost_or_forged) {
    const std::string invalid = file("invalid", "a\nb\xe9\n");
    const std::vector<Refusal> rows{
        {{"--subject", "a\nBcc: b"}, kUsage, "--subject: a line break in the value"},
        {{"--cc", "a@b.c\rX: y"}, kUsage, "--cc: a line break in the value"},
        {{"--cc", "a@b.c, d@e.f"}, kBadData, "--cc: \"a@b.c, d@e.f\" is not one address; each has a value of its own"},
        {{"--cc", "joe"}, kBadData, "--cc: \"joe\" has no domain"},
        {{"--cc", R"("a\"b"@c.d)"}, kBadData, R"(--cc: ""a\\"b"@c.d" has \\" in its local part, which would be lost)"},
        {{"--cc", "<@r.x:a@b.c>"}, kBadData, "--cc: \"<@r.x:a@b.c>\" is no mailbox"},
        {{"--cc", "a@@b"}, kBadData, "--cc: \"a@@b\" is no address"},
        {{"--cc", "\xc3\xbc@b.c"}, kBadData, "--cc: \"\xc3\xbc@b.c\" has an address that is not ASCII"},
        {{"--header", "X Y: z"}, kUsage, "--header: \"X Y: z\" is no header line, NAME: VALUE"},
        {{"--header", "bcc: z"}, kUsage, "--header: bcc is written anyway"},
        {{"--text", invalid}, kBadData, invalid + ": line 2 is no text in UTF-8; --charset tells another"},
        {{"--text", invalid, "--charset", "iso-2022-jp"}, kBadData, invalid + ": line 2 is no text in iso-2022-jp"},
        {{"--text", invalid, "--charset", "utf-16"},
         kUsage,
         invalid + ": --charset: utf-16 does not have ASCII in it, as texts in mail must"},
        {{"--text", "-", "--attach", "-"}, kUsage, "standard input can be read once"},
        {{"--attach", "no file"}, kNoInput, "no file: No such file or directory"},
        {{"--send", "-o", "-"}, kUsage, "--send prints the identifier, so -o needs a file"},
    };
    for (const Refusal& row : rows) {
        const Ended ended = build(row.arguments);
        EXPECT_EQ(line_of(ended.err), "vel: " + row.said);
        EXPECT_EQ(ended.exit, row.exit) << row.said;
        EXPECT_EQ(ended.out, "");
    }
}

TEST_F(ComposeTest, a_message_arrives_in_the_queue_with_its_envelope) {
    const Ended ended = send({"joe@example.net", "--notify", "success,DELAY", "--ret", "hdrs", "--envid", "a+2Bb",
                              "--orcpt", "joe@example.net=j+40x", "x400;ann", "--channel", "x.400"},
                             "bCC : eve@example.org,\n mallory@example.org\nSubject: x\rBcc: y\n\n");
    EXPECT_EQ(ended.exit, kBadData) << "a CR in the header block";
    const Ended sent = send({"joe@example.net", "--notify", "success,DELAY", "--ret", "hdrs", "--envid", "a+2Bb",
                             "--orcpt", "joe@example.net=j+40x", "x400;ann", "--channel", "x.400"},
                            "Date: Mon, 1 Feb 1999 10:20:30 -0500\nbCC : eve@example.org,\n mallory@example.org\n"
                            "Message-ID: <1@x>\nRESENT-BCC: eve\r\n\nBcc: stays\na\rb\n" +
                                std::string(2000, 'x'));
    EXPECT_EQ(sent.exit, 0) << sent.err;
    const OwnedEntry found = entry(line_of(sent.out));
    ASSERT_TRUE(found);
    EXPECT_THAT(content(found->path), testing::EndsWith("\r\nDate: Mon, 1 Feb 1999 10:20:30 -0500\r\nMessage-ID: <1@x>"
                                                        "\r\n\r\nBcc: stays\r\na\rb\r\n" +
                                                        std::string(2000, 'x') + "\r\n"));
    EXPECT_STREQ(found->channel, "x.400");
    EXPECT_STREQ(found->sender.address, "me@example.com");
    EXPECT_STREQ(found->sender.envelopeId, "a+2Bb");
    EXPECT_EQ(found->sender.returnType, VEL_RET_HDRS);
    ASSERT_EQ(found->recipientCount, 2);
    EXPECT_STREQ(found->recipients[0].address, "ann@example.com");
    EXPECT_STREQ(found->recipients[0].originalRecipient, "x400;ann");
    EXPECT_STREQ(found->recipients[1].originalRecipient, "rfc822;j+40x");
    EXPECT_EQ(found->recipients[1].notify, VEL_NOTIFY_SUCCESS | VEL_NOTIFY_DELAY);
    EXPECT_EQ(files(), 1u) << "the message is not locked";
    const Ended nobody = run({"send", "-", "--from", "<>", "--to", "a@b.c", "--json"}, "A: b\n");
    EXPECT_THAT(nobody.out, HasSubstr(".msg\",\"channel\":\"smtp\",\"sender\":\"\",\"recipients\":[\"a@b.c\"]}\n"));
    take_log();
}

TEST_F(ComposeTest, send_refuses_what_would_be_lost_or_forged) {
    const std::string good = "A: b\n\nc\n";
    const std::vector<std::pair<std::string, Refusal>> rows{
        {"Hello\n", {{}, kBadData, "-: line 1 is no header field, so this is no message"}},
        {std::string("A: b\n\nc\0d\n", 10), {{}, kBadData, "-: line 3 holds a NUL byte"}},
        {"", {{}, kBadData, "-: is empty"}},
        {good, {{"--notify", "never,delay"}, kUsage, "--notify: \"never,delay\" has never beside others"}},
        {good, {{"--notify", "delay,"}, kUsage, "--notify: \"delay,\" is not success,failure,delay or never"}},
        {good, {{"--ret", "all"}, kUsage, "--ret: \"all\" is not full or hdrs"}},
        {good, {{"--envid", "a b"}, kUsage, "--envid: \"a b\" is no xtext"}},
        {good,
         {{"--envid", std::string(101, 'x')},
          kUsage,
          "--envid: \"" + std::string(101, 'x') + "\" is longer than 100 characters"}},
        {good, {{"--orcpt", "a+2b"}, kUsage, "--orcpt: \"a+2b\" is no TYPE;ADDRESS in xtext"}},
        {good, {{"--orcpt", "a", "b"}, kUsage, "--orcpt: \"b\" belongs to no recipient"}},
        {good,
         {{"--orcpt", "a", "ann@example.com=b"},
          kUsage,
          "--orcpt: \"ann@example.com=b\" is the second one of its recipient"}},
        {good, {{"--channel", "a\nb"}, kUsage, "--channel: a line break in the value"}},
    };
    for (const auto& [message, row] : rows) {
        const Ended ended = send(row.arguments, message);
        EXPECT_EQ(line_of(ended.err), "vel: " + row.said);
        EXPECT_EQ(ended.exit, row.exit) << row.said;
    }
    file("ostra.ini", "");
    EXPECT_EQ(send({}, good).exit, 69);
    EXPECT_THAT(ids(), testing::IsEmpty());
    EXPECT_EQ(files(), 0u);
}

TEST_F(ComposeTest, what_is_built_sent_and_delivered_is_taken_apart_as_the_same_bytes) {
    std::string binary(std::size_t{1} << 20, '\0');
    Random random(1);
    for (char& byte : binary) byte = static_cast<char>(random.below(256));
    const std::string japanese = "\x93\xfa\x96\x7b\r\n", latin =
                                                             "Gr\xc3\xbc\xc3\x9f"
                                                             "e\r\n";
    const Ended ended = build({"--bcc", "eve@example.org", "--text", file("sjis.txt", japanese), "--charset",
                               "iso-2022-jp", "--attach", file("b.bin", binary), file("t.txt", latin),
                               file("sjis.txt", japanese), "--send", "-o", (directory() / "copy").string()});
    ASSERT_EQ(ended.exit, 0) << ended.err;
    const std::string id = line_of(ended.out), stored = (directory() / "stored").string();
    EXPECT_THAT(run({"queue", "list"}).out, HasSubstr(id));
    EXPECT_THAT(run({"queue", "show", id}).out, HasSubstr("recipient  eve@example.org\n"));
    const Ended delivered = run({"queue", "run", "--channel", "smtp", "--once", "--batch", "--", "sh", "-c",
                                 "cat > " + stored + " && echo stored"});
    EXPECT_EQ(delivered.out, "delivered 2, deferred 0, failed 0, held 0\n");
    EXPECT_EQ(delivered.err, "vel: " + id + ": stored\n");
    EXPECT_EQ(files(), 0u);
    const std::string message = content(stored);
    EXPECT_TRUE(message.ends_with(content((directory() / "copy").string())));
    EXPECT_THAT(message.substr(0, 5000), Not(HasSubstr("eve@")));
    EXPECT_EQ(run({"extract", stored, "-o", target()}).exit, 0);
    Files parts = extracted();
    EXPECT_TRUE(parts["b.bin"] == binary);
    EXPECT_EQ(parts["t.txt"], latin);
    EXPECT_EQ(parts["sjis.txt"], japanese);
    // In 7 bits the line end before the delimiter is the text's for the parser.
    EXPECT_EQ(run({"japanese", "to-sjis", target() + "/part-1.txt"}).out, japanese + "\r\n");
    ASSERT_EQ(build({"--text", file("sjis.txt", japanese), "--charset", "iso-2022-jp", "-o", target() + "/alone"}).exit,
              0);
    EXPECT_THAT(bodies(target() + "/alone"), ElementsAre("\x1b$BF|K\\\x1b(J\r\n"));
}

}  // namespace
}  // namespace vel::test
