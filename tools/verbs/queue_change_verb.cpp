// vel queue hold, release and remove: what an operator decides.
#include <nlohmann/json.hpp>

#include "tools/queue/connection.h"
#include "tools/queue/entries.h"
#include "tools/text/text_forms.h"
#include "tools/verbs/command_line.h"
#include "tools/verbs/queue_verbs.h"

namespace vel::command {
namespace {

struct Options {
    std::vector<std::string> ids;
    std::string channel;
    std::string reason = "held by the operator";
    int recipient = MQ_ALL;
    bool all = false;
    bool yes = false;
};

// The three verbs differ in this alone.
struct Change {
    const char* name;
    const char* description;
    const char* done;
    int states;  // of the recipients that it is for
    int (*run)(const char* id, int recipient, const Options& options);
    const char* example;
};

constexpr Change kHold{"hold",
                       "Keeps recipients that wait in the queue until they are released or removed.",
                       "held",
                       MQ_WAITING,
                       [](const char* id, int recipient, const Options& options) {
                           return MQHoldEntry(id, recipient, options.reason.c_str(), "vel queue hold");
                       },
                       "  vel queue hold 00q4jv7k2m1f0c9r8t3p5n6d --recipient 2 --reason 'asked the sender'\n"
                       "  vel queue hold --all --channel smtp --reason 'their server is down until Monday'\n"};

constexpr Change kRelease{
    "release",
    "Makes held recipients due at once.",
    "released",
    MQ_HELD,
    [](const char* id, int recipient, const Options&) { return MQReleaseEntry(id, recipient, "vel queue release"); },
    "  vel queue release 00q4jv7k2m1f0c9r8t3p5n6d\n"
    "  id=00q4jv7k2m1f0c9r8t3p5n6d; vel queue hold $id && vel queue release $id  # what is deferred is due at once\n"
    "  vel queue release --all --channel smtp\n"};

constexpr Change kRemove{
    "remove",
    "Takes recipients that wait or are held out of the queue. With its last recipient the message is gone.",
    "removed",
    MQ_WAITING | MQ_HELD,
    [](const char* id, int recipient, const Options&) { return MQRemoveEntry(id, recipient, "vel queue remove"); },
    "  vel queue remove 00q4jv7k2m1f0c9r8t3p5n6d --recipient 0\n"
    "  vel queue remove --all --channel test --yes\n"};

void declare(CommandLine& line, const Change& change, Options& options) {
    line.add_argument("ID", options.ids, "Identifiers, or paths of message files");
    line.add_number("--recipient", options.recipient, "Only this recipient, by its number from 0");
    if (change.states == MQ_WAITING)
        line.add_option("--reason", "TEXT", options.reason, "What vel queue list shows as the reason");
    auto all = line.add_flag("--all", options.all, "All entries, instead of IDs");
    line.add_channel(options.channel, "With --all: only what is for this channel").needs(all);
    if (change.states & MQ_HELD && change.states & MQ_WAITING)
        line.add_flag("--yes", options.yes, "Has to stand beside --all: what is removed is gone").needs(all);
    line.add_json();
}

// Empty when the options go together.
std::string misuse(const Options& options, bool needs_yes) {
    if (options.all == !options.ids.empty()) return "give IDs or --all";
    if (options.all && options.recipient != MQ_ALL) return "--recipient does not go with --all";
    if (options.all && needs_yes && !options.yes) return "--all removes every message; say --yes if that is meant";
    return {};
}

class Changer {
  public:
    Changer(const Change& change, const Options& options, bool json, Session& main)
        : change_(change), options_(options), json_(json), main_(main) {}

    // Throws Failure.
    void change_one(const std::string& id) {
        const int count = run(id, options_.recipient);
        if (count > 0) return tell(id, count);
        read_entry(id, main_);
        throw Failure(Exit::no_input, id + ": no recipient of it can be " + change_.done + " now");
    }

    void change_all() {
        const Choice choice{options_.channel.empty() ? std::nullopt : std::optional(options_.channel), change_.states};
        for_each_entry(choice, main_, [&](const MQEntry& entry) {
            int count = 0;
            if (!choice.channel) count = run(entry.id, MQ_ALL);
            for (const MQRecipient& recipient : recipients_of(entry)) {
                if (choice.channel) count += run(entry.id, recipient.number);
            }
            if (count > 0) tell(entry.id, count);
        });
    }

  private:
    int run(const std::string& id, int recipient) {
        const int count = change_.run(id.c_str(), recipient, options_);
        if (count < 0) throw queue_failure(main_, id);
        return count;
    }

    void tell(const std::string& id, int count) {
        if (json_) {
            main_.output.write(one_line({{"id", json_text(id)}, {change_.done, count}}).append("\n"));
        } else {
            const char* const noun = count == 1 ? " recipient " : " recipients ";
            main_.output.write(visible(id).append(": ").append(std::to_string(count)).append(noun) + change_.done +
                               "\n");
        }
    }

    const Change& change_;
    const Options& options_;
    const bool json_;
    Session& main_;
};

Exit run_change(const Change& change, Arguments arguments, Session& main) {
    const std::string footer = std::string("Examples:\n") + change.example +
                               "\n"
                               "Recipients that are claimed, so that somebody is delivering to them, are left alone.\n"
                               "The exit code is 66 when there is no such entry, or nothing of it to change.\n"
                               "\n"
                               "The JSON object, one an entry: id, " +
                               change.done + " (how many recipients).";
    CommandLine line(std::string("queue ") + change.name, change.description, footer);
    Options options;
    declare(line, change, options);
    if (const auto exit = line.read(std::move(arguments), main)) return *exit;
    const std::string wrong = misuse(options, change.run == kRemove.run);
    if (!wrong.empty()) return line.misuse(wrong, main);
    connect_to_queue(main);
    Changer changer(change, options, line.json, main);
    main.output.streams().go_on_without_reader();  // who reads what was done does not decide what is done
    if (options.all) changer.change_all();
    Exit worst = Exit::success;
    for (const std::string& id : options.ids) {
        try {
            changer.change_one(identifier_of(id));
        } catch (const Failure& failure) {
            main.output.complain({}, failure.what());
            worst = worse(worst, failure.exit());
        }
    }
    return worst;
}

}  // namespace

Exit run_queue_hold(Arguments arguments, Session& main) { return run_change(kHold, std::move(arguments), main); }
Exit run_queue_release(Arguments arguments, Session& main) { return run_change(kRelease, std::move(arguments), main); }
Exit run_queue_remove(Arguments arguments, Session& main) { return run_change(kRemove, std::move(arguments), main); }

}  // namespace vel::command
