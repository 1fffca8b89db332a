// What an operator sees and does: vel queue list, show, cat, hold, release, remove, status and check.
#include <unistd.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/tools/queue_place.h"
#include "tools/queue/entries.h"
#include "tools/text/instant.h"

namespace vel::test {
namespace {

using Json = nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class QueueVerbsTest : public QueueCommandTest {};

TEST(InstantTest, WritesAndReadsLengthsOfTime) {
    const std::vector<std::pair<int64_t, std::string>> rows{
        {0, "0s"}, {59, "59s"}, {119, "1m"}, {3600, "1h"}, {11520, "3h12m"}, {2 * 86400 + 7200, "2d2h"}, {-5, "0s"}};
    for (const auto& [seconds, text] : rows) EXPECT_EQ(command::duration_text(seconds), text);
    for (const char* text : {"", "5", "m", "-1m", "1 m", "1w", "5m ", "99999d", "4294967296s"}) {
        EXPECT_EQ(command::read_duration(text), std::nullopt) << text;
    }
    EXPECT_EQ(command::read_duration("36500d"), int64_t{36500} * 86400);
}

TEST(QueueEntryTest, IsToldWithAllOfItsEnvelope) {
    const MQRecipient ann{3,       MQ_HELD, 2,     VEL_NOTIFY_DELAY, int64_t{86'400'000'000},
                          "local", "ann@x", "a;b", "a's text",       "and another",
                          "asked"};
    const _envFrom joe{"joe@x", "env", VEL_RET_HDRS, 4, "joe's text", "via"};
    const MQEntry entry{"id", "path", "smtp", 1'500'000, 9, 7, 5, 6, 1, &ann, joe};
    EXPECT_EQ(command::one_line(command::entry_json(entry)),
              R"({"id":"id","path":"path","channel":"smtp",)"
              R"("arrival":{"utc":"1970-01-01T00:00:01Z","seconds_since_1970":1},)"
              R"("size":9,"priority":7,"number":5,"number2":6,"sender":{"address":"joe@x","envelope_id":"env",)"
              R"("return":"hdrs","number":4,"text":"joe's text","channel":"via"},"recipients":[{"number":3,)"
              R"("address":"ann@x","state":"held","channel":"local",)"
              R"("due":{"utc":"1970-01-02T00:00:00Z","seconds_since_1970":86400},"attempts":2,"reason":"asked",)"
              R"("original_recipient":"a;b","notify":["delay"],"text":"a's text","text2":"and another"}]})");
}

TEST_F(QueueVerbsTest, ShowsWhatIsThereAndLetsNoTextSteerTheTerminal) {
    EXPECT_EQ(run({"queue", "list"}).out, "");
    const std::string message = crlf("Subject: x\n\ntext") + std::string(1, '\0');
    const std::string id = submit({"ann@example.com", "\x1b[2J\nb\xe9"}, "smtp", message);
    submit({"joe@example.com"}, "local");
    submit({}, "local");
    const std::string list = run({"queue", "list", "--channel", "smtp"}).out;
    EXPECT_THAT(list, HasSubstr("\n" + id +
                                "      0s          19  waiting     now      0  smtp      joe@example.com  "
                                "\\x1b[2J\\nb\\xe9\n"));
    EXPECT_THAT(list, Not(HasSubstr("local")));
    EXPECT_THAT(run({"queue", "list", "--state", "held", "--state", "claimed"}).out, HasSubstr("held          -"));

    const std::string path = read_path(id);
    const Json entry = Json::parse(run({"queue", "show", path, "--json"}).out);
    EXPECT_EQ(entry["id"], id);
    EXPECT_EQ(entry["path"], path);
    EXPECT_EQ(entry["recipients"][1]["address"], "\x1b[2J\nb\xef\x9f\xa9");
    EXPECT_EQ(entry["arrival"]["utc"], command::instant_text(entry["arrival"]["seconds_since_1970"].get<int64_t>()));
    EXPECT_THAT(run({"queue", "show", id}).out, HasSubstr("recipient  \\x1b[2J\\nb\\xe9\nnumber     1\n"));

    EXPECT_EQ(run({"queue", "cat", id}).out, message);
    EXPECT_EQ(run({"queue", "cat", id, "-o", target()}).exit, 0);
    EXPECT_EQ(content(target()), message);
    for (const char* verb : {"show", "cat", "hold", "release", "remove"}) {
        const Ended ended = run({"queue", verb, "00000000000000000000000x"});
        EXPECT_EQ(ended.exit, kNoInput) << verb;
        EXPECT_EQ(ended.err, "vel: 00000000000000000000000x: no such entry in the queue\n");
    }
}

TEST_F(QueueVerbsTest, GoesOnWithWhatAnOperatorDecides) {
    const std::string id = submit({"ann", "joe"}), other = submit({"eve"}, "local");
    struct Row {
        std::vector<std::string> arguments;
        int exit;
        std::string out;
        std::vector<std::string> left;
    };
    const std::string held = "held by the operator";
    const std::vector<Row> rows{
        {{"hold", id, "--recipient", "1", "--reason", "why"},
         0,
         id + ": 1 recipient held\n",
         {"ann waiting 0 ", "joe held 0 why", "eve waiting 0 "}},
        {{"hold", id, "none", "", other},
         kNoInput,
         id + ": 1 recipient held\n" + other + ": 1 recipient held\n",
         {"ann held 0 " + held, "joe held 0 why", "eve held 0 " + held}},
        {{"hold", id}, kNoInput, "", {"ann held 0 " + held, "joe held 0 why", "eve held 0 " + held}},
        {{"release", "--all", "--channel", "smtp"},
         0,
         id + ": 2 recipients released\n",
         {"ann waiting 0 " + held, "joe waiting 0 why", "eve held 0 " + held}},
        {{"remove", "--all"}, kUsage, "", {"ann waiting 0 " + held, "joe waiting 0 why", "eve held 0 " + held}},
        {{"remove", "--all", "--yes", "--channel", ""},
         kUsage,
         "",
         {"ann waiting 0 " + held, "joe waiting 0 why", "eve held 0 " + held}},
        {{"remove", "--all", "--channel=", "--yes"},
         kUsage,
         "",
         {"ann waiting 0 " + held, "joe waiting 0 why", "eve held 0 " + held}},
        {{"remove", id, "--recipient", "0", "--json"},
         0,
         "{\"id\":\"" + id + "\",\"removed\":1}\n",
         {"joe waiting 0 why", "eve held 0 " + held}},
        {{"remove", "--all", "--yes"}, 0, id + ": 1 recipient removed\n" + other + ": 1 recipient removed\n", {}},
        {{"remove"}, kUsage, "", {}},
        {{"release", id, "--all"}, kUsage, "", {}},
    };
    for (const Row& row : rows) {
        std::vector<std::string> arguments{"queue"};
        arguments.insert(arguments.end(), row.arguments.begin(), row.arguments.end());
        const Ended ended = run(arguments);
        EXPECT_EQ(ended.exit, row.exit) << ended.err;
        EXPECT_EQ(ended.out, row.out);
        EXPECT_EQ(listed(), row.left) << testing::PrintToString(row.arguments);
    }
}

TEST_F(QueueVerbsTest, TellsMonitoringWhatIsWrong) {
    EXPECT_THAT(run({"queue", "status"}).out, HasSubstr("the queue is empty\n"));
    submit({"ann", "joe"});
    submit({});
    const Json status = Json::parse(run({"queue", "status", "--json"}).out);
    ASSERT_EQ(status["counts"].size(), 2u);
    for (const auto& [i, state, recipients] : {std::tuple(0, "waiting", 2), std::tuple(1, "held", 1)}) {
        EXPECT_EQ(status["counts"][i]["channel"], "smtp");
        EXPECT_EQ(status["counts"][i]["state"], state);
        EXPECT_EQ(status["counts"][i]["recipients"], recipients);
    }
    EXPECT_GT(status["free_bytes"], 0);
    const std::vector<std::pair<std::vector<std::string>, std::string>> rows{
        {{"--max-held", "1", "--max-waiting", "2", "--max-age", "1h", "--min-free", "1"}, ""},
        {{"--max-held", "0", "--max-waiting", "1"},
         "vel: 1 held, more than 0\nvel: 2 waiting or claimed, more than 1\n"},
        {{"--min-free", "8000000000G"}, "bytes free, less than 8589934592000000000\n"},
    };
    for (const auto& [options, said] : rows) {
        std::vector<std::string> arguments{"queue", "status"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const Ended ended = run(arguments);
        EXPECT_EQ(ended.exit, said.empty() ? 0 : 75) << ended.err;
        EXPECT_THAT(ended.err, HasSubstr(said));
    }
    EXPECT_EQ(run({"queue", "status", "--max-age", "4"}).exit, kUsage);
    file("ostra.ini", "");
    EXPECT_EQ(run({"queue", "status"}).exit, 69);
}

TEST_F(QueueVerbsTest, FindsAndRepairsWhatIsDamaged) {
    EXPECT_EQ(run({"queue", "check"}).exit, 0);
    const std::string id = submit({"ann"});
    ::truncate(read_path(id).c_str(), 1);
    const Ended found = run({"queue", "check", "--json"});
    EXPECT_EQ(found.exit, kBadData);
    EXPECT_EQ(Json::parse(found.out)["id"], id);
    const Ended repaired = run({"queue", "check", "--repair"});
    EXPECT_EQ(repaired.exit, kBadData) << "its message has not come back";
    EXPECT_EQ(repaired.err, "vel: 1 finding is left\n");
    EXPECT_THAT(listed(), ElementsAre(HasSubstr("ann held 0 ")));
    EXPECT_EQ(run({"queue", "remove", id}).exit, 0);
    EXPECT_EQ(run({"queue", "check"}).exit, 0);
}

TEST_F(QueueVerbsTest, HelpsWithEachVerb) {
    std::istringstream help(run({"help", "queue"}).out);
    int verbs = 0;
    for (std::string line; std::getline(help, line);) {
        if (!line.starts_with("  ") || line.starts_with("  vel")) continue;
        const std::string verb = line.substr(2, line.find(' ', 2) - 2);
        EXPECT_THAT(run({"help", "queue", verb}).out, HasSubstr("Usage: vel queue " + verb)) << line;
        ++verbs;
    }
    EXPECT_EQ(verbs, 9);
    EXPECT_EQ(run({"queue", "lsit"}).err, "vel: no verb \"queue lsit\"; vel queue --help lists them\n");
    EXPECT_EQ(run({"queue"}).exit, kUsage);
}

}  // namespace
}  // namespace vel::test
