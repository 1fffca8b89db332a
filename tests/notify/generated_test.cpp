// Messages of the gateway's own, and the mailing of old logs.
#include <cstring>
#include <functional>

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

    const std::string binary_ = "\x80\xff";
    const std::string ascii_file_ = file("report \"1\".txt", "abc\r\n");
    const std::string none_ = (directory() / "none.txt").string();
};

TEST_F(GeneratedTest, kept_ascii_files_are_text_basic) {
    const std::string files = ascii_file_ + "|" + file("a.pic", binary_) + "|" + file("data.bin", binary_);
    EXPECT_EQ(generate("one||two", files.c_str(), "joe@x.y|ann@x.y"), 0);
    const auto named = [](const std::string& type, const std::string& name) {
        return type + "; name=\"" + name + "\"";
    };
    const auto attachment = [](const std::string& name) { return "attachment; filename=\"" + name + "\""; };
    EXPECT_EQ(
        sent(),
        multipart(
            "From: me@x.y\nTo: joe@x.y, ann@x.y\nSubject: s\n", "mixed",
            {text_part("one\n\ntwo\n"),
             entity(named("text/basic", R"(report \"1\".txt)"), "7bit", attachment(R"(report \"1\".txt)"), "abc\n"),
             entity(named("image/pict", "a.pic"), "BASE64", attachment("a.pic"), "gP8=\n"),
             entity(named("application/x-unknown", "data.bin"), "base64", attachment("data.bin"), "gP8=\n")}));
    EXPECT_THAT(take_envelopes(), ElementsAre(envelope_of("me@x.y", {"joe@x.y", "ann@x.y"}, "out")));
    EXPECT_THAT(left_behind("0entry1.lck"), IsEmpty()) << "the identifier is released";
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
    constexpr std::size_t kNone = 9999;
    for (const std::size_t size : {0u, 1u, 1024u, 1025u, 2048u}) {
        for (const std::size_t place :
             {std::size_t{0}, std::size_t{1023}, std::size_t{1024}, std::size_t{2047}, kNone}) {
            std::string text(size, '\x7f');
            if (place < size) text[place] = '\x80';
            EXPECT_EQ(IsFileAscii(file("text", text).c_str()), place < size ? 0 : 1) << size << ' ' << place;
            EXPECT_THAT(take_log(6), ElementsAre(place < size ? "IsFileAscii: file contains binary data - using base64"
                                                              : "file is ASCII"));
        }
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
    EXPECT_EQ(generate("one", none_.c_str()), -1) << "and is not found when the part is built";
    EXPECT_EQ(take_log(1).back(), "GenerateMimeMessage failed: MimeBuildMessage failed.");
}

TEST_F(GeneratedTest, kept_a_refused_submission_is_not_told) {
    queue_.fails = "close";
    EXPECT_EQ(generate("one", nullptr), 0);
    EXPECT_THAT(take_envelopes(), IsEmpty());
    EXPECT_THAT(take_log(), IsEmpty());
}

TEST_F(GeneratedTest, every_failure_is_told_in_its_words) {
    const auto told = [this](std::size_t disk, const char* lines, const std::string& path) {
        const SmallDisk small(disk);
        EXPECT_EQ(generate(lines, path.c_str()), -1);
        EXPECT_THAT(take_envelopes(), IsEmpty());
        return take_log(1).back();
    };
    const std::string long_line(500, 'x'), call = "GenerateMimeMessage failed: ";
    EXPECT_EQ(told(kEndless, nullptr, file("a.odd", binary_)), call + "MimeBuildMessage failed.");
    EXPECT_EQ(told(100, long_line.c_str(), ascii_file_), call + "putline failed.");
    EXPECT_EQ(told(510, long_line.c_str(), ascii_file_), call + "MimeBuildMessage failed.");
    EXPECT_EQ(told(700, long_line.c_str(), ascii_file_), call + "MimeBuildMultipartMessage failed.");
    set("Gateway", "TemporaryDirectory", none_.c_str());
    EXPECT_EQ(told(kEndless, "one", ascii_file_), call + "out of memory.");
}

TEST_F(GeneratedTest, without_memory_all_is_generated_or_nothing) {
    const std::string picture = file("a.pic", binary_);
    Chain to("joe@x.y"), lines("one"), files(picture.c_str());
    for (const std::size_t refused : {std::size_t{1}, kEveryRequest}) {
        with_little_memory(refused, [&] {
            int result = 0;
            {
                const Starved starved(granted_, refused_);
                result = GenerateMimeMessage("me@x.y", "out", to, "s", 7, lines, files, 0);
            }
            // A submission without memory is a refused one.
            EXPECT_TRUE(queue_.messages.empty() || (result == 0 && sent().ends_with("gP8=\r\n\r\n--B--\r\n")))
                << sent();
            EXPECT_THAT(left_behind("MIME"), IsEmpty()) << granted_;
            take_envelopes();
        });
    }
    EXPECT_THAT(take_log(1), testing::IsSupersetOf({"GenerateMimeMessage failed: out of memory.",
                                                    "GenerateMimeMessage failed: filecreate failed."}));
}

TEST_F(GeneratedTest, old_logs_go_to_the_postmaster) {
    const std::string log = file("ostra.log.1", "a line\n"), address = "postmaster@gw.corp";
    set("Log", "Target", log.substr(0, log.size() - 2).c_str());
    for (const char* path : {log.c_str(), static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(SendOldLogfile(path, 7), 0);
        EXPECT_EQ(sent(),
                  replaced(multipart("From: " + address + "\nTo: " + address + "\nSubject: old log file ostra.log.1\n",
                                     "mixed",
                                     {text_part("The old log file ostra.log.1 is attached.\n"),
                                      entity("text/basic; name=\"ostra.log.1\"", "7bit",
                                             "attachment; filename=\"ostra.log.1\"", "a line#")}),
                           "#", "\n"));
        EXPECT_THAT(take_envelopes(), ElementsAre(envelope_of(address, {address})));
    }
    const char* const rows[] = {"Stderr", "SYSLOG", "", none_.c_str()};
    for (const char* target : rows) {
        set("Log", "Target", target);
        EXPECT_EQ(SendOldLogfile(nullptr, 0), -1) << target;
        EXPECT_EQ(take_log(1).back(), "SendOldLogfile failed: fileopen failed.") << target;
    }
    EXPECT_EQ(SendOldLogfile(directory().c_str(), 0), -1);
    EXPECT_EQ(take_log(1).back(), "SendOldLogfile failed: GenerateMimeMessage failed.");
    EXPECT_THAT(take_envelopes(), IsEmpty());
}

}  // namespace
}  // namespace vel::test
