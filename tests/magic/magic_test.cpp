#include "vel/magic.h"

#include <cstring>
#include <thread>

#include "frame/owned.h"
#include "tests/support/fixture.h"
#include "tests/support/memory.h"
#include "vel/frame.h"
#include "vel/platform/diamond.h"

namespace vel::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;

// A record whose fields are as long as the texts; what does not fit is cut, without a NUL.
MagicRecord record(const std::vector<std::string>& fields) {
    MagicRecord made;
    std::memset(&made, '?', sizeof made);
    const std::pair<char*, std::size_t> all[] = {
        {made.extension, 10},         {made.contentType, 50},           {made.contentSubtype, 128},
        {made.secondContentType, 50}, {made.secondContentSubtype, 128}, {made.macTypeCreator, 10}};
    for (std::size_t i = 0; i < fields.size(); ++i) ::strncpy(all[i].first, fields[i].c_str(), all[i].second);
    return made;
}

std::string text(const MagicRecord& record) {
    return std::string(record.extension) + "|" + record.contentType + "|" + record.contentSubtype + "|" +
           record.secondContentType + "|" + record.secondContentSubtype + "|" + record.macTypeCreator;
}

const std::vector<std::vector<std::string>> kTypes{
    {"txt", "text", "plain", "quoted-printable", "", "TEXTttxt"},
    {"Asc", "text", "PLAIN", "base64", "x-asc", "TEXTR*ch"},
    {"tx", "application", "x-tx", "base64", "second", "TXT ttxt"},
    {"txt", "text", "twice", "base64", "", "TEXTttxt"},
};

class Magic : public VelTest {
  protected:
    Magic() {
        for (const char* name : {"queue", "install", "install/srcdb"}) {
            std::filesystem::create_directory(directory() / name);
        }
        set("Gateway", "QueueDirectory", (directory() / "queue").c_str());
        set("Config", "InstallDirectory", (directory() / "install").c_str());
        seed();
        start();
    }
    ~Magic() override {
        libmagic_fini();
        ::umask(before_);  // which CopyFile has set
    }

    void seed() const {
        diamondBase base((directory() / "install/srcdb").c_str());
        magicdb table(base);
        table.lock();
        table.create();
        for (const auto& type : kTypes) {
            const MagicRecord made = record(type);
            std::memcpy(&table.fields, &made, sizeof made);
            EXPECT_EQ(table.add(), DIA_OK);
        }
    }

    void start() {
        EXPECT_EQ(libmagic_init(), 0);
        EXPECT_THAT(take_log(), ElementsAre(LogLine{6, "Libmagic", "magic db opened"}));
    }

    static std::string all() {
        std::string names;
        MagicRecord found;
        for (int moved = GetFirstMagicRecord(&found); moved == 0; moved = GetNextMagicRecord(&found)) {
            names += std::string(found.extension) + " ";
        }
        return names;
    }

    const std::filesystem::path queue_ = directory() / "queue";
    const mode_t before_ = ::umask(022);
};

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

// What is there is kept under another name; an open table that is whole stays.
TEST_F(Magic, puts_the_seeds_in_the_place_of_a_damaged_table) {
    DelMagicRecord("asc");
    start();
    EXPECT_EQ(all(), "txt tx txt ");
    const std::string changed = content(queue_ / "magicdb.db");
    file("queue/magicdb.db", "no table");
    EXPECT_EQ(libmagic_init(), 0);
    EXPECT_EQ(all(), "txt Asc tx txt ");
    EXPECT_EQ(content(queue_ / "magicdb.db.1"), "no table");
    EXPECT_THAT(take_log(),
                ElementsAre(LogLine{1, "Diamond", "open: " + (queue_ / "magicdb.db is no relation.").string()},
                            LogLine{6, "Libmagic", "magic db opened"}));
    DelMagicRecord("asc");
    std::filesystem::remove(queue_ / "magicdb.id0");
    start();
    EXPECT_EQ(all(), "txt Asc tx txt ");
    EXPECT_EQ(content(queue_ / "magicdb.db.2").size(), changed.size());
}

TEST_F(Magic, keeps_what_is_there_without_seeds_that_can_be_used) {
    file("queue/magicdb.db", "mine");
    file("install/srcdb/magicdb.db", "no seeds");
    for (int i = 0; i < 3; ++i) EXPECT_EQ(libmagic_init(), 0);
    EXPECT_EQ(content(queue_ / "magicdb.db.1"), "mine");
    EXPECT_EQ(content(queue_ / "magicdb.db.2"), "no seeds");
    EXPECT_FALSE(std::filesystem::exists(queue_ / "magicdb.db.3"));
    EXPECT_THAT(take_log(1), Contains("magic db not opened").Times(3));
    std::filesystem::remove_all(directory() / "install");
    EXPECT_EQ(libmagic_init(), 0);
    EXPECT_EQ(content(queue_ / "magicdb.db"), "no seeds");
    EXPECT_THAT(take_log(1), ElementsAre(HasSubstr("is no relation"), "magic db not opened"));
}

// Wherever memory ends: what is said of the table is true, and what was in its place is not lost.
TEST_F(Magic, survives_a_lack_of_memory) {
    MagicRecord found;
    for (const std::size_t refused : {std::size_t{1}, kEveryRequest}) {
        std::size_t granted = 0;
        for (memory.has_failed = true; memory.has_failed; ++granted) {
            std::filesystem::remove_all(queue_);
            std::filesystem::create_directory(queue_);
            file("queue/magicdb.db", "mine");
            memory = {granted, refused, false};
            EXPECT_EQ(libmagic_init(), 0);
            memory.granted = kEveryRequest;
            const bool is_open = GetFirstMagicRecord(&found) == DIA_OK;
            EXPECT_EQ(take_log().back().text, is_open ? "magic db opened" : "magic db not opened");
            const bool was_moved = std::filesystem::exists(queue_ / "magicdb.db.1");
            EXPECT_EQ(content(queue_ / (was_moved ? "magicdb.db.1" : "magicdb.db")), "mine");
            EXPECT_TRUE(was_moved || !is_open);
        }
        EXPECT_GT(granted, 20u);
        for (granted = 0, memory.has_failed = true; memory.has_failed; ++granted) {
            const Starved starved(granted, refused);
            const int first = GetMagicFromExtension("asc", &found);
            EXPECT_TRUE(first == 0 || (first == -1 && memory.has_failed)) << granted;
        }
        take_log();
    }
}

TEST_F(Magic, kept_settings_are_those_of_ostra_ini) {
    std::snprintf(iniFileName, sizeof iniFileName, "%s", "/another");
    MagicRecord found;
    EXPECT_EQ(GetMagicFromExtension("txt", &found), 0);
    start();
    std::snprintf(iniFileName, sizeof iniFileName, "%s", "ostra.ini");
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
