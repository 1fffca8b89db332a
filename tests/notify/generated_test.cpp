// Messages of the gateway's own, and the mailing of old logs.
#include <cstring>

#include "tests/notify/notified.h"
#include "vel/magic.h"

namespace {

std::string asked;  // the extensions that were looked up, each with a blank behind it

}  // namespace

// The table of types, in which ".pic" has a type and ".odd" one without an encoding.
extern "C" int GetMagicFromExtension(const char* extension, MagicRecord* record) {
    const vel::test::PlentyOfMemory plenty;
    asked.append(extension).append(" ");
    const bool is_odd = std::strcmp(extension, "odd") == 0;
    if (!is_odd && std::strcmp(extension, "pic") != 0) return -1;
    std::strcpy(record->contentType, "image");
    std::strcpy(record->contentSubtype, "pict");
    std::strcpy(record->secondContentType, is_odd ? "" : "BASE64");
    return 0;
}

namespace vel::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class GeneratedTest : public NotifyTest {
  protected:
    // Texts as "a|b".
    int generate(const char* lines, const char* files, const char* to = "joe@x.y") {
        Chain to_chain(to), line_chain(lines), file_chain(files);
        return GenerateMimeMessage("me@x.y", "out", to_chain, "s", 7, line_chain, file_chain, 9);
    }

    // An attached file as the builder writes it.
    static std::string attached(const std::string& type, const std::string& name, const std::string& encoding,
                                const std::string& body) {
        return entity(type + "; name=\"" + name + "\"", encoding, "attachment; filename=\"" + name + "\"", body);
    }

    const std::string binary_ = "\x80\xff";
    const std::string ascii_file_ = file("report \"1\".txt", std::string_view("abc\r\nd\0e\r\n", 10));
    const std::string none_ = (directory() / "none.txt").string();
};

TEST_F(GeneratedTest, kept_ascii_files_are_text_basic) {
    const std::string files = ascii_file_ + "|" + file("a.pic", binary_) + "|" + file("data.bin", binary_);
    EXPECT_EQ(generate("one||two", files.c_str(), "joe@x.y|ann@x.y"), 0);
    EXPECT_EQ(sent(),
              multipart("From: me@x.y\nTo: joe@x.y, ann@x.y\nSubject: s\n", "mixed",
                        {text_part("one\n\ntwo\n"), attached("text/basic", R"(report \"1\".txt)", "7bit", "abc\nd"),
                         attached("image/pict", "a.pic", "BASE64", "gP8=\n"),
                         attached("application/x-unknown", "data.bin", "base64", "gP8=\n")}));
    EXPECT_THAT(take_envelopes(), ElementsAre(envelope_of("me@x.y", {"joe@x.y", "ann@x.y"}, "out")));
    EXPECT_EQ(generate(nullptr, nullptr, nullptr), 0) << "what has no parts is the builder's affair";
    EXPECT_EQ(sent(), multipart("From: me@x.y\nSubject: s\n", "mixed", {}));
    EXPECT_THAT(take_envelopes(), ElementsAre(envelope_of("me@x.y", {}, "out")));
}

TEST_F(GeneratedTest, kept_types_are_looked_up_by_what_follows_the_last_dot) {
    std::filesystem::create_directory(directory() / "folder.d");
    const std::pair<const char*, const char*> rows[] = {
        {"a.b.TXT", "TXT "}, {"x.abcdefghijk", "abcdefghi "}, {"x.a b", "a "}, {"x. b", ""},
        {"x.", ""},          {"folder.d/data", "d/data "},
    };
    for (const auto& [name, extension] : rows) {
        asked = "";
        EXPECT_EQ(generate(nullptr, file(name, binary_).c_str()), 0) << name;
        EXPECT_EQ(asked, extension) << name;
    }
}

TEST_F(GeneratedTest, bytes_above_127_are_found_wherever_they_stand) {
    for (const std::size_t place : {0u, 1023u, 1024u, 2048u}) {
        const std::string text(place, '\x7f');
        EXPECT_EQ(IsFileAscii(file("text", text).c_str()), 1) << place;
        EXPECT_EQ(IsFileAscii(file("text", text + '\x80').c_str()), 0) << place;
        EXPECT_THAT(take_log(6), ElementsAre("file is ASCII", "IsFileAscii: file contains binary data - using base64"));
    }
}

TEST_F(GeneratedTest, kept_a_file_that_cannot_be_read_counts_as_text) {
    EXPECT_EQ(IsFileAscii(directory().c_str()), 1);
    EXPECT_THAT(take_log(6), ElementsAre("file is ASCII"));
    const std::string long_path = "/" + std::string(300, 'x');
    EXPECT_EQ(IsFileAscii(long_path.c_str()), 1);
    EXPECT_EQ(take_log(1).back(), "IsFileAscii: failed to open file " + long_path.substr(0, 256));
    EXPECT_EQ(IsFileAscii(nullptr), 1);
    EXPECT_EQ(take_log(1).back(), "IsFileAscii: failed to open file ");
}

TEST_F(GeneratedTest, kept_a_refused_submission_is_not_told) {
    queue_.fails = "close";
    EXPECT_EQ(outcome(generate("one", nullptr)), "0");
}

TEST_F(GeneratedTest, every_failure_is_told_in_its_words) {
    const std::string line(500, 'x'), odd_file = file("a.odd", binary_);
    const auto told = [&](std::size_t disk, const std::string& path) {
        const SmallDisk small(disk);
        EXPECT_EQ(generate(line.c_str(), path.c_str()), -1);
        EXPECT_THAT(take_envelopes(), IsEmpty());
        return replaced(take_log(1).back(), "GenerateMimeMessage failed: ", "");
    };
    EXPECT_EQ(told(kEndless, odd_file), "MimeBuildMessage failed.");
    EXPECT_EQ(told(kEndless, none_), "MimeBuildMessage failed.");
    EXPECT_EQ(told(100, ascii_file_), "putline failed.");
    EXPECT_EQ(told(510, ascii_file_), "MimeBuildMessage failed.");
    EXPECT_EQ(told(700, ascii_file_), "MimeBuildMultipartMessage failed.");
    set("Gateway", "TemporaryDirectory", none_.c_str());
    EXPECT_EQ(told(kEndless, ascii_file_), "out of memory.");
}

TEST_F(GeneratedTest, old_logs_go_to_the_postmaster) {
    const std::string log = file("ostra.log.1", "a line\r\n"), address = "postmaster@gw.corp";
    set("Log", "Target", log.substr(0, log.size() - 2).c_str());
    for (const char* path : {log.c_str(), static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(SendOldLogfile(path, 7), 0);
        EXPECT_EQ(sent(),
                  multipart("From: " + address + "\nTo: " + address + "\nSubject: old log file ostra.log.1\n", "mixed",
                            {text_part("The old log file ostra.log.1 is attached.\n"),
                             attached("text/basic", "ostra.log.1", "7bit", "a line\n")}));
        EXPECT_THAT(take_envelopes(), ElementsAre(envelope_of(address, {address})));
    }
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(directory());
    for (const char* target : {"Stderr", "SYSLOG", "", "none"}) {
        set("Log", "Target", target);
        if (std::strcmp(target, "none") != 0) file(std::string(target) + ".1", "no log\r\n");
        EXPECT_EQ(SendOldLogfile(nullptr, 0), -1) << target;
        EXPECT_EQ(take_log(1).back(), "SendOldLogfile failed: fileopen failed.") << target;
    }
    std::filesystem::current_path(before);
    EXPECT_EQ(SendOldLogfile(directory().c_str(), 0), -1);
    EXPECT_EQ(take_log(1).back(), "SendOldLogfile failed: GenerateMimeMessage failed.");
    EXPECT_THAT(take_envelopes(), IsEmpty());
}

}  // namespace
}  // namespace vel::test
