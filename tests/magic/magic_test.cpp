#include "tests/magic/open_table.h"

#include <thread>

namespace vel::test {
namespace {

using testing::ElementsAre;

std::string text(const MagicRecord& record) {
    return std::string(record.extension) + "|" + record.contentType + "|" + record.contentSubtype + "|" +
           record.secondContentType + "|" + record.secondContentSubtype + "|" + record.macTypeCreator;
}

TEST_F(Magic, finds_an_extension_whatever_its_case) {
    const struct {
        const char* extension;
        const char* found;
    } rows[] = {
        {"txt", "txt|text|plain|quoted-printable||TEXTttxt"},
        {"TXT", "txt|text|plain|quoted-printable||TEXTttxt"},
        {"asc", "Asc|text|PLAIN|base64|x-asc|TEXTR*ch"},
        {"t", nullptr},
        {"txtx", nullptr},
        {"", nullptr},
    };
    for (const auto& row : rows) {
        MagicRecord found;
        MagicRecord shared;
        char codes[10];
        EXPECT_EQ(GetMagicFromExtension(row.extension, &found), row.found ? 0 : -1) << row.extension;
        EXPECT_EQ(GetTypeCreatorfromDosExt(row.extension, codes), row.found ? 0 : -1) << row.extension;
        EXPECT_EQ(FindMagicRecord(row.extension, &shared), row.found ? int{DIA_OK} : int{DIA_END}) << row.extension;
        if (!row.found) continue;
        EXPECT_EQ(text(found), row.found);
        EXPECT_EQ(std::memcmp(&found, &shared, sizeof found), 0);
        EXPECT_STREQ(codes, found.macTypeCreator);
    }
}

TEST_F(Magic, kept_mac_codes_count_with_their_case) {
    const struct {
        const char* type;
        const char* creator;
        const char* extension;
        const char* found;
    } rows[] = {
        {"TEXT", "ttxt", nullptr, "plain"}, {"TEXT", "ttxt", "TXT", "plain"},   {"TEXT", "R*ch", "asc", "PLAIN"},
        {"TXT", "ttxt", nullptr, "x-tx"},   {"TXT ", "ttxt", nullptr, "x-tx"},  {"text", "ttxt", nullptr, nullptr},
        {"TEXT", "ttxt", "asc", nullptr},   {"TEXTt", "txt", nullptr, nullptr}, {"", "", nullptr, nullptr},
    };
    for (const auto& row : rows) {
        MagicRecord found;
        EXPECT_EQ(GetMagicFromMacTypes(&found, row.type, row.creator, row.extension), row.found ? 0 : -1) << row.type;
        if (!row.found) continue;
        EXPECT_STREQ(found.contentSubtype, row.found);
    }
}

TEST_F(Magic, kept_second_pair_is_not_searched) {
    char extension[10];
    EXPECT_EQ(GetDosExtFromCTandCST(extension, "Text", "Plain"), 0);
    EXPECT_STREQ(extension, "txt");
    EXPECT_EQ(GetDosExtFromCTandCST(extension, "application", "X-TX"), 0);
    EXPECT_STREQ(extension, "tx");
    EXPECT_EQ(GetDosExtFromCTandCST(extension, "base64", "x-asc"), -1);
    EXPECT_EQ(GetDosExtFromCTandCST(extension, "text", "x-tx"), -1);
    EXPECT_STREQ(extension, "tx");
}

// The caller's buffers are of exactly ten bytes, its record's fields are full to the last.
TEST_F(Magic, cuts_what_does_not_fit) {
    const std::string a(9, 'a');
    EXPECT_EQ(GetFirstMagicRecord(nullptr), -1);
    const MagicRecord full = record({a + "a", std::string(50, 'b'), std::string(128, 'c'), std::string(50, 'd'),
                                     std::string(128, 'e'), std::string(10, 'f')});
    EXPECT_EQ(InsMagicRecord(&full), 0);
    MagicRecord found;
    std::memset(&found, '?', sizeof found);
    EXPECT_EQ(GetMagicFromExtension((a + "a").c_str(), &found), -1);
    EXPECT_EQ(GetMagicFromExtension(a.c_str(), &found), 0);
    EXPECT_EQ(text(found), a + "|" + std::string(49, 'b') + "|" + std::string(127, 'c') + "|" + std::string(49, 'd') +
                               "|" + std::string(127, 'e') + "|fffffffff");
    const auto ten = std::make_unique<char[]>(10);
    EXPECT_EQ(GetTypeCreatorfromDosExt(a.c_str(), ten.get()), 0);
    EXPECT_STREQ(ten.get(), "fffffffff");
    EXPECT_EQ(GetDosExtFromCTandCST(ten.get(), found.contentType, found.contentSubtype), 0);
    EXPECT_EQ(ten.get(), a);
    const MagicRecord shorter = record({a, "x"});
    EXPECT_EQ(UpdateMagicRecord(&shorter), 0);
    EXPECT_EQ(FindMagicRecord(a.c_str(), &found), 0);
    EXPECT_TRUE(std::all_of(found.contentType + 1, std::end(found.contentType), [](char c) { return c == '\0'; }));
}

TEST_F(Magic, maintains_the_table) {
    EXPECT_EQ(all(), "txt Asc tx txt ");
    const MagicRecord added = record({"new", "a", "b", "base64", "", "c"});
    EXPECT_EQ(InsMagicRecord(&added), 0);
    const MagicRecord changed = record({"ASC", "x", "y", "base64", "", "z"});
    EXPECT_EQ(UpdateMagicRecord(&changed), 0);
    EXPECT_EQ(DelMagicRecord("TXT"), 0);
    EXPECT_EQ(all(), "ASC tx txt new ");
    MagicRecord found;
    EXPECT_EQ(GetMagicFromExtension("txt", &found), 0);
    EXPECT_STREQ(found.contentSubtype, "twice");
    EXPECT_EQ(FindMagicRecord("asc", &found), 0);
    EXPECT_EQ(GetNextMagicRecord(&found), 0);
    EXPECT_STREQ(found.extension, "tx");
}

TEST_F(Magic, kept_what_is_not_there_is_deleted_and_nothing_is_created) {
    EXPECT_EQ(DelMagicRecord("absent"), 0);
    EXPECT_EQ(CreateMagicFile(), 0);
    const MagicRecord absent = record({"absent", "a", "b", "c", "d", "e"});
    EXPECT_EQ(UpdateMagicRecord(&absent), DIA_END);
    EXPECT_EQ(all(), "txt Asc tx txt ");
}

TEST_F(Magic, refuses_null_and_a_table_that_is_not_open) {
    MagicRecord found;
    char buffer[10];
    const auto results = [&](const char* extension, MagicRecord* record, char* out) {
        return std::vector{InsMagicRecord(record),
                           DelMagicRecord(extension),
                           FindMagicRecord(extension, record),
                           GetFirstMagicRecord(record),
                           GetNextMagicRecord(record),
                           UpdateMagicRecord(record),
                           GetMagicFromExtension(extension, record),
                           GetTypeCreatorfromDosExt("txt", out),
                           GetMagicFromMacTypes(record, "TEXT", "ttxt", nullptr),
                           GetDosExtFromCTandCST(out, "text", "plain")};
    };
    EXPECT_THAT(results(nullptr, nullptr, nullptr), testing::Each(-1));
    EXPECT_EQ(FindMagicRecord("txt", nullptr) + GetMagicFromExtension("txt", nullptr), -2);
    EXPECT_EQ(
        GetMagicFromMacTypes(&found, nullptr, "ttxt", nullptr) + GetMagicFromMacTypes(&found, "TEXT", nullptr, ""), -2);
    libmagic_fini();
    EXPECT_THAT(results("txt", &found, buffer), ElementsAre(-1, -1, -1, -1, -1, -1, 0, 0, 0, 0));
    libmagic_fini();
    set("Gateway", "QueueDirectory", "/nowhere");
    EXPECT_THAT(results("txt", &found, buffer), testing::Each(-1));
    EXPECT_EQ(libmagic_init(), 0);
    EXPECT_THAT(take_log(), ElementsAre(LogLine{1, "Libmagic", "magic db not opened"}));
}

using MagicThreads = Magic;

TEST_F(MagicThreads, share_the_table) {
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([thread, this] {
            const QuietLog quiet;
            set("Gateway", "QueueDirectory", (directory() / "queue").c_str());
            const std::string name = "t" + std::to_string(thread);
            const MagicRecord mine = record({name, "a", "b", "base64", "", ""});
            MagicRecord found;
            for (int i = 0; i < 5; ++i) {
                EXPECT_EQ(InsMagicRecord(&mine), 0);
                EXPECT_EQ(GetMagicFromExtension(name.c_str(), &found), 0);
                EXPECT_EQ(UpdateMagicRecord(&mine), 0);
                EXPECT_EQ(DelMagicRecord(name.c_str()), 0);
            }
            InsMagicRecord(&mine);
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(all().size(), std::strlen("txt Asc tx txt t0 t1 t2 t3 "));
}

}  // namespace
}  // namespace vel::test
