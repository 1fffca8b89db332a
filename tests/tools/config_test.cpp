// vel config, and what it stands on.
#include <nlohmann/json.hpp>

#include "tests/tools/run_vel.h"
#include "tools/settings/ini_lines.h"
#include "tools/settings/zone.h"
#include "tools/text/ascii.h"
#include "vel/platform/config.h"

namespace vel::command {
namespace {

using Json = nlohmann::json;
using testing::HasSubstr;

class ConfigTest : public test::CommandTest {
  protected:
    // Writes a file in which host and domain are set, behind what is given, and the queue lies in a directory.
    std::string with_host(const std::string& text) const {
        return text +
               "\n[Connection]\nGatewayHostName=h\nGatewayDomain=d\n[Gateway]\nQueueDirectory=" + temporary().string() +
               "\n";
    }

    // The objects of vel config --json, by kind.
    std::map<std::string, std::vector<Json>> objects(const std::string& ini, int& exit) const {
        file("ostra.ini", ini);
        const test::Ended ended = run({"config", "--json"});
        exit = ended.exit;
        std::map<std::string, std::vector<Json>> result;
        std::istringstream lines(ended.out);
        for (std::string line; std::getline(lines, line);) {
            const Json object = Json::parse(line);
            result[object["kind"]].push_back(object);
        }
        return result;
    }
};

struct Found {
    std::string ini;
    std::string findings;  // "line part of what", "|" between them
};

TEST_F(ConfigTest, FindsWhatIsWrong) {
    const std::vector<Found> rows{
        {"", ""},
        {"; x\n# y\n[gateway]\nTimeZone = \"CET-1CEST,M3.5\"\n[OPTIONS]\nStrictMimeParsing=no", "4 means UTC"},
        {"\xEF\xBB\xBFTimeZone=UTC\njunk\n[nope]\na=b\n[Log\nLevels=9\n",
         "1 before any section|2 is no section|3 unknown section|5 has no \"]\""},
        {"[Gateway]\ntimezone=UTC\nTimeZone=UTC\nTimeZone=UTC\nLogFileIO=TRUE\nfoo=\n",
         "2 the key is TimeZone|4 line 3 comes first|5 LogFileIO of [Debug]|6 unknown key"},
        {"[Gateway]\nTimeZone=America/New_York\nLocalCharSet=klingon\nTemporaryDirectory=\n",
         "2 cut to 15 bytes of 16|2 means UTC|3 no charset|4 root directory"},
        {"[Gateway]\nTimeZone=xxx\nTemporaryDirectory=tmp\n", "2 remark|3 not absolute"},
        {"[Options]\nStrictMimeParsing=maybe\nrrqHeader=a b\nRFC1522codingMethod=Q\nmimePreambleFile=/nowhere\n",
         "2 cut to 3|2 neither YES nor NO|3 no name of a header|4 written in B|5 built-in text"},
        {"[Log]\nTarget=/\nLevels=1,2\n[Debug]\nLogFileIO=YES\n[Queue]\nMinimumFree=x\nRetryAfter=1h,0m\nLifetime=5\n",
         "2 is a directory|3 \"2\", which is no level|5 neither TRUE|7 the default is taken|8 no list|9 no time"},
        {"[Connection]\nGatewayHostName=\nGatewayDomain=a b\n[Gateway]\nQueueDirectory=/nowhere\n",
         "2 is empty|3 no host or domain|5 No such file|8 comes first|9 comes first|11 comes first"},
    };
    for (const Found& row : rows) {
        SCOPED_TRACE(row.ini);
        int exit = 0;
        const auto found = objects(with_host(row.ini), exit)["finding"];
        const std::vector<std::string> expected = test::split(row.findings);
        ASSERT_EQ(found.size(), row.findings.empty() ? 0 : expected.size());
        for (std::size_t i = 0; i < found.size(); ++i) {
            const std::size_t blank = expected[i].find(' ');
            EXPECT_EQ(found[i]["line"].dump(), expected[i].substr(0, blank));
            const auto said = found[i]["severity"].get<std::string>() + " " + found[i]["what"].get<std::string>();
            EXPECT_THAT(said, HasSubstr(expected[i].substr(blank + 1)));
        }
        EXPECT_EQ(exit, row.findings.empty() ? 0 : test::kConfig);
    }
}

TEST_F(ConfigTest, ShowsWhatIsInForceAndWhereItComesFrom) {
    int exit = 0;
    auto found = objects("[gateway]\nLocalCharSet = \"ISO-2022-JP\"\n[Log]\nLevels=\n", exit);
    std::map<std::string, Json> by_key;
    for (const Json& setting : found["setting"]) by_key[setting["key"]] = setting;
    EXPECT_EQ(by_key["LocalCharSet"]["value"], "ISO-2022-JP");
    EXPECT_EQ(by_key["LocalCharSet"]["line"], 2);
    EXPECT_EQ(by_key["ScanForJIS"]["value"], "YES");
    EXPECT_EQ(by_key["ScanForJIS"]["source"], "default");
    EXPECT_EQ(by_key["Levels"]["value"], "all");
    EXPECT_EQ(found["file"].at(0)["by"], "environment");
    EXPECT_THAT(run({"config"}).out, HasSubstr("LocalCharSet                       ISO-2022-JP"));
}

TEST_F(ConfigTest, TellsWhyAFileHoldsNoSettings) {
    const std::string ini = (directory() / "ostra.ini").string();
    EXPECT_THAT(run({"config"}).out, HasSubstr("the file is missing"));
    ASSERT_EQ(shell("mkfifo ostra.ini"), 0);
    EXPECT_THAT(run({"config"}).out, HasSubstr("the file is no regular file"));
    std::filesystem::remove(ini);
    file("ostra.ini", std::string(4 * 1024 * 1024 + 1, '\n'));
    EXPECT_THAT(run({"config"}).out, HasSubstr("the file is larger than 4 MiB"));
    std::string garbage;
    for (int i = 0; i < 5000; ++i) garbage += std::string("x\0\n", 3);
    file("ostra.ini", garbage);
    EXPECT_THAT(run({"config"}).err, HasSubstr("4000 more findings"));
}

// The first line that names a setting is the one that the library's reader takes.
TEST_F(ConfigTest, NamesTheLinesThatTheLibraryReads) {
    const std::vector<std::string> pieces{
        "[",  "]",  "A",  "a",  "B", "=", "\"",           ";",     "#",  " ",
        "\t", "\r", "\n", "\n", "1", "2", "\xEF\xBB\xBF", "[A]\n", "A=", std::string(1, '\0')};
    test::Random random(7);
    const std::string path = (directory() / "random.ini").string();
    for (int i = 0; i < 3000; ++i) {
        std::string text;
        for (uint32_t n = random.below(40); n > 0; --n)
            text += pieces[random.below(static_cast<uint32_t>(pieces.size()))];
        file("random.ini", text);
        std::map<std::pair<std::string, std::string>, std::string> first;
        IniLines lines(text);
        while (const auto line = lines.next()) {
            if (line->kind != IniLine::Kind::setting || line->section.empty()) continue;
            const std::size_t value = line->content.find('=') + 1;
            first.try_emplace({lower(line->section), std::string(line->key)}, line->content.substr(value));
        }
        for (const char* section : {"A", "B", "1"}) {
            for (const char* key : {"A", "a", "B", ""}) {
                char buffer[64];
                GetPrivateProfileString(section, key, "none", buffer, sizeof buffer, path.c_str());
                const auto found = first.find({lower(section), key});
                const bool named = found != first.end();
                ASSERT_EQ(named, std::string(buffer) != "none") << text;
                ASSERT_TRUE(!named || found->second.find(buffer) != std::string::npos) << text;
            }
        }
    }
}

TEST(Zones, AreNamesOfFilesAndRules) {
    for (const char* zone : {"UTC", "UTC0", "PST8PDT", "CET-1CEST,M3.5.0,M10.5.0/3", "<-03>3", "<+0545>-5:45",
                             "EST5EDT4,J60/2:00:00,300"}) {
        EXPECT_TRUE(is_zone(zone)) << zone;
    }
    for (const char* zone : {"", ":", "foo", "PST", "CET-1CEST,M3.5", "CET-1CEST,", "<-03", "EST5EDT,M13.1.0,M1.1.0",
                             "../../../etc/passwd", "EST99999999999"}) {
        EXPECT_FALSE(is_zone(zone)) << zone;
    }
}

}  // namespace
}  // namespace vel::command
