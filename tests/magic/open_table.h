// What the tests of file types share: a small table, copied from seeds and open.
#ifndef VEL_TESTS_MAGIC_OPEN_TABLE_H
#define VEL_TESTS_MAGIC_OPEN_TABLE_H

#include "vel/magic.h"

#include <sys/stat.h>

#include <cstring>
#include <utility>

#include "tests/support/fixture.h"
#include "vel/platform/diamond.h"

namespace vel::test {

// A record whose fields are as long as the texts; what does not fit is cut, without a NUL.
inline MagicRecord record(const std::vector<std::string>& fields) {
    MagicRecord made;
    std::memset(&made, '?', sizeof made);
    const std::pair<char*, std::size_t> all[] = {
        {made.extension, 10},         {made.contentType, 50},           {made.contentSubtype, 128},
        {made.secondContentType, 50}, {made.secondContentSubtype, 128}, {made.macTypeCreator, 10}};
    for (std::size_t i = 0; i < fields.size(); ++i) ::strncpy(all[i].first, fields[i].c_str(), all[i].second);
    return made;
}

inline const std::vector<std::vector<std::string>> kTypes{
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
        EXPECT_THAT(take_log(), testing::ElementsAre(LogLine{6, "Libmagic", "magic db opened"}));
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

}  // namespace vel::test

#endif
