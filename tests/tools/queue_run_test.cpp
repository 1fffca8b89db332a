// vel queue run: commands that deliver, and all that they may do instead.
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <nlohmann/json.hpp>

#include "tests/tools/queue_place.h"
#include "tools/io/exit_code.h"
#include "tools/queue/attempt.h"
#include "tools/queue/retry_plan.h"

namespace vel::test {
namespace {

using Json = nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(RetryPlanTest, SpacesAttemptsUntilTheLifetimeIsOver) {
    const command::RetryPlan plan("5m,15m , 1h", "2h");
    const std::vector<std::pair<int, std::optional<int64_t>>> rows{{1, 1300}, {2, 1900},       {3, 4600},
                                                                   {4, 4600}, {1000000, 4600}, {0, 1300}};
    for (const auto& [attempts, due] : rows) EXPECT_EQ(plan.due(900, attempts, 1000), due) << attempts;
    EXPECT_EQ(plan.due(900, 3, 900 + 3600), 900 + 7200);
    EXPECT_EQ(plan.due(900, 3, 900 + 3601), std::nullopt);
    for (const char* wrong : {"", "5", "5m,", "5m;15m", "0s", "5m, 1y", "-5m"}) {
        EXPECT_THROW(command::RetryPlan(wrong, "2h"), command::Failure) << wrong;
    }
    EXPECT_THROW(command::RetryPlan("5m", "soon"), command::Failure);
}

// Whether a process is there and no zombie.
bool runs(const std::string& process) {
    std::ifstream status("/proc/" + process + "/stat");
    std::string number, name, state;
    return status >> number >> name >> state && state != "Z";
}

// The command is a line of a shell, and runs in the test's directory.
class QueueRunTest : public QueueCommandTest {
  protected:
    std::vector<std::string> deliveries(const std::string& line, std::vector<std::string> options = {}) const {
        std::vector<std::string> arguments{"queue", "run", "--channel", "smtp"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        for (const std::string& more :
             {std::string("--"), std::string("sh"), std::string("-c"), "cd " + directory().string() + "; " + line}) {
            arguments.push_back(more);
        }
        return arguments;
    }

    Ended once(const std::string& line, std::vector<std::string> options = {}) const {
        options.emplace_back("--once");
        return run(deliveries(line, std::move(options)));
    }

    pid_t start_run(const std::string& line, std::vector<std::string> options = {}) const {
        return start(deliveries(line, std::move(options)));
    }

    bool stands(const char* name) const { return std::filesystem::exists(directory() / name); }
    std::string said() const { return content((directory() / "stderr").string()); }

    // The process that a command has written to a file.
    std::string process_in(const char* name) const {
        std::string process = content((directory() / name).string());
        process.resize(std::min(process.size(), process.find('\n')));
        return process;
    }

    // A notice that fails stays in the queue, with the reason.
    const std::vector<std::string> notices_{"--channel", "DSN"};

    // Writes its process to a file, and goes on when another stands there.
    const std::string patient_ = "echo $$ > new; mv new started; until [ -e go ]; do sleep 0.01; done; rm started; ";
};

TEST_F(QueueRunTest, TakesTheEndOfTheCommandForItsVerdict) {
    file("no-program", "\x7f");
    ::chmod((directory() / "no-program").c_str(), 0700);
    struct Row {
        std::string line;
        std::vector<std::string> left;
    };
    const std::vector<Row> rows{
        {"cat > /dev/null", {}},
        {"exit 0", {}},
        {"exec 0<&- 1<&- 2<&- 3<&-; exit 0", {}},
        {"echo busy >&2; echo >&2; echo out; exit 75", {"ann waiting 1 exit code 75: busy"}},
        {"exit 71", {"ann waiting 1 exit code 71"}},
        {"exit 74", {"ann waiting 1 exit code 74"}},
        {"none 2> /dev/null; exit", {"ann waiting 1 exit code 127"}},
        {"exec ./no-program 2> /dev/null", {"ann waiting 1 exit code 126"}},
        {"kill -9 $$", {"ann waiting 1 signal 9 (Killed)"}},
        {"exit 137", {"ann waiting 1 exit code 137"}},
        {"echo no such user >&2; exit 67", {"ann held 1 exit code 67: no such user"}},
        {"exit 1", {"ann held 1 exit code 1"}},
        {"sleep 3 & exit 65", {"ann held 1 exit code 65"}},
        {"yes x | tr -d '\\n' | head -c 3000000 >&2; echo >&2; printf 'last\\033 ' >&2; exit 70",
         {"ann held 1 exit code 70: last\x1b"}},
    };
    for (const Row& row : rows) {
        const std::string id = submit({"ann"}, "DSN", std::string(200000, 'x'));
        const Ended ended = once(row.line, notices_);
        EXPECT_EQ(ended.exit, 0) << ended.err;
        EXPECT_EQ(listed(), row.left) << row.line;
        MQRemoveEntry(id.c_str(), MQ_ALL, "test");
    }
}

TEST_F(QueueRunTest, DefersWhatItCannotStart) {
    submit({"ann"});
    EXPECT_EQ(run({"queue", "run", "--channel", "smtp", "--once", "--", "no such"}).exit, 78);
    EXPECT_EQ(run({"queue", "run", "--channel", "smtp", "--once"}).exit, kUsage);
    EXPECT_THAT(once("exit 0", {"--poll", "0s"}).err, HasSubstr("--poll: must not be 0"));
    configure("RetryAfter=5x\n");
    const Ended ended = once("exit 0");
    EXPECT_EQ(ended.exit, 78);
    EXPECT_THAT(ended.err, HasSubstr("[Queue] RetryAfter: \"5x\" is no time to wait"));
    configure("");
    EXPECT_THAT(listed(), ElementsAre("ann waiting 0 ")) << "nothing was claimed";
    const std::string program = file("program", "#!/none/such\n");
    ::chmod(program.c_str(), 0700);
    EXPECT_EQ(run({"queue", "run", "--channel", "smtp", "--once", "--", program}).exit, 0);
    EXPECT_THAT(listed(), ElementsAre("ann waiting 1 exit code 127: cannot be run: No such file or directory"));
}

TEST_F(QueueRunTest, HandsOverTheMessageTheEnvelopeAndNothingElse) {
    const std::string id = submit({"ann", "joe"}, "smtp", "Hello\r\n");
    const std::string line =
        "cat > message; cat <&3 > envelope; ls /proc/self/fd > descriptors; "
        "sed -n 's/Sig[BI].*\\(.......\\)$/\\1/p' /proc/self/status > signals; echo \"$VEL_ID $VEL_SENDER "
        "$VEL_RECIPIENT.\" >> environment; "
        "kill -0 -$$";
    EXPECT_EQ(once(line, {"--batch"}).out, "delivered 2, deferred 0, failed 0, held 0\n");
    const auto text = [&](const char* name) { return content((directory() / name).string()); };
    EXPECT_EQ(text("message"), "Hello\r\n");
    const Json envelope = Json::parse(text("envelope"));
    EXPECT_EQ(envelope["id"], id);
    EXPECT_EQ(envelope["recipients"][1]["address"], "joe");
    EXPECT_EQ(text("descriptors"), "0\n1\n2\n3\n4\n") << "and that of ls for the directory";
    EXPECT_EQ(text("signals"), "0000000\n0000000\n") << "none blocked, none ignored";
    EXPECT_EQ(text("environment"), id + " joe@example.com .\n");
    submit({"ann", "joe"});
    EXPECT_EQ(once(line, {"--jobs", "2"}).out, "delivered 2, deferred 0, failed 0, held 0\n");
    EXPECT_THAT(text("environment"), HasSubstr(" joe.\n"));
    EXPECT_THAT(listed(), IsEmpty());
}

TEST_F(QueueRunTest, DependsOnNothingThatItsCallerIgnoresSetsOrHasClosed) {
    submit({"ann", "joe"});
    const char* const run = "vel queue run --channel smtp --once --batch -- sh -c ";
    EXPECT_EQ(shell(std::string("trap '' CHLD PIPE; export VEL_RECIPIENT=eve; ")
                        .append(run)
                        .append("'echo \"<$VEL_RECIPIENT>\" >&2; exit 75' > said")),
              0);
    const std::vector<std::string> deferred{"ann waiting 1 exit code 75: <>", "joe waiting 1 exit code 75: <>"};
    EXPECT_EQ(listed(), deferred);
    submit({"kim"});
    EXPECT_EQ(shell(std::string("exec 2> >(:); wait $!; ").append(run).append("'echo x; echo y >&2' > said")), 0);
    EXPECT_EQ(listed(), deferred) << "nobody hears the command, but it delivers";
}

TEST_F(QueueRunTest, GivesUpWhenTheRecipientWithTheMostAttemptsIsTooOldForAnother) {
    configure("RetryAfter=1s, 1h\nLifetime=30m\n");
    const std::string id = submit({"ann", "joe"}, "DSN"), reason = " not delivered within 30m: exit code 75: busy";
    MQHoldEntry(id.c_str(), 1, "", "test");
    once("exit 75", notices_);
    MQHoldEntry(id.c_str(), 0, "", "test");  // and so due at once
    MQReleaseEntry(id.c_str(), MQ_ALL, "test");
    once("echo busy >&2; exit 75", {"--channel", "DSN", "--batch"});
    EXPECT_THAT(listed(), ElementsAre("ann held 2" + reason, "joe held 1" + reason));
}

TEST_F(QueueRunTest, WaitsForWhatIsDueLaterAndForNewMail) {
    configure("RetryAfter=1s\n");
    submit({"ann"});
    const pid_t process = start_run("[ -e tried ] || { touch tried; exit 75; }");
    await("the second attempt", [] { return listed().empty(); });
    submit({"joe"});
    await("new mail's delivery", [] { return listed().empty(); });
    ::kill(process, SIGTERM);
    EXPECT_EQ(wait_for(process), 0);
}

TEST_F(QueueRunTest, FinishesWhatItDoesBeforeItStops) {
    submit({"ann"});
    submit({"joe"});
    const pid_t process = start_run(patient_);
    await("the command", [&] { return stands("started"); });
    ::kill(process, SIGTERM);
    await("the signal's effect", [&] { return said().find("stopping") != std::string::npos; });
    file("go", "");
    EXPECT_EQ(wait_for(process), 0);
    EXPECT_THAT(listed(), ElementsAre("joe waiting 0 "));
}

TEST_F(QueueRunTest, PassesTheSecondSignalOnAndGivesBackWhatIsNotDelivered) {
    submit({"ann"});
    const std::vector<std::pair<std::string, std::vector<std::string>>> rows{{"65", {"ann waiting 1 "}}, {"0", {}}};
    for (const auto& [exit, left] : rows) {
        const pid_t process = start_run("trap 'touch told; rm started; exit " + exit + "' TERM; " + patient_);
        await("the command", [&] { return stands("started"); });
        ::kill(process, SIGINT);
        await("the signal's effect", [&] { return said().find("stopping") != std::string::npos; });
        ::kill(process, SIGTERM);
        EXPECT_EQ(wait_for(process), 0);
        EXPECT_TRUE(stands("told"));
        EXPECT_EQ(listed(), left);
    }
}

TEST_F(QueueRunTest, EndsACommandThatTakesTooLong) {
    submit({"ann"});
    once("sh -c 'trap \"\" TERM; echo $$ > left; exec sleep 100' & wait", {"--timeout", "1s"});
    EXPECT_THAT(listed(), ElementsAre("ann waiting 1 not done within 1s, signal 15 (Terminated)"));
    const std::string left = process_in("left");
    ASSERT_NE(left, "");
    await("the end of what ignores the signal", [&] { return !runs(left); });
}

TEST_F(QueueRunTest, DiesWithItsCommandAndAnotherDelivers) {
    submit({"ann"});
    const pid_t process = start_run(patient_);
    await("the command", [&] { return stands("started"); });
    const std::string command = process_in("started");
    ASSERT_TRUE(runs(command));
    ::kill(process, SIGKILL);
    EXPECT_EQ(wait_for(process), -SIGKILL);
    await("the command's end", [&] { return !runs(command); });
    EXPECT_THAT(listed(), ElementsAre("ann claimed 1 "));
    EXPECT_EQ(once("exit 0").out, "delivered 1, deferred 0, failed 0, held 0\n");
}

TEST_F(QueueRunTest, KeepsTheClaimWhileTheCommandRunsOrEndsIt) {
    const std::string message = file("message", "x");
    const MQRecipient ann{0, MQ_CLAIMED, 1, 0, 0, "smtp", "ann", "", "", "", ""};
    const MQEntry entry{"id", message.c_str(), "smtp", 0, 1, 255, 0, 0, 1, &ann, {"joe", "", 0, 0, "", ""}};
    command::StopRequest stop;
    int extensions = 0;
    const command::Outcome outcome =
        command::attempt(entry, {"/bin/sleep", {"sleep", "100"}, std::nullopt},
                         {stop, std::chrono::seconds(0), [&] { return ++extensions < 3; }, [](std::string_view) {}});
    EXPECT_EQ(outcome.verdict, command::Verdict::lost);
    EXPECT_EQ(extensions, 3);
}

}  // namespace
}  // namespace vel::test
