// vel queue list, show and cat: what is in the queue.
#include <map>
#include <nlohmann/json.hpp>

#include "tools/io/blocks.h"
#include "tools/io/target.h"
#include "tools/queue/connection.h"
#include "tools/queue/entries.h"
#include "tools/queue/entry_text.h"
#include "tools/verbs/command_line.h"
#include "tools/verbs/queue_verbs.h"

namespace vel::command {
namespace {

const std::map<std::string, int> kStates{{"waiting", MQ_WAITING}, {"claimed", MQ_CLAIMED}, {"held", MQ_HELD}};

std::vector<std::string> state_names() {
    std::vector<std::string> names;
    for (const auto& [name, state] : kStates) names.push_back(name);
    return names;
}

const std::string kListFooter =
    std::string(
        "Examples:\n"
        "  vel queue list --state held\n"
        "  vel queue list --json | jq -r '.recipients[] | select(.attempts > 3) | .address'\n"
        "\n"
        "A line for each recipient, the oldest message first: identifier, age, size in bytes, state, when it is due,\n"
        "how often it has been claimed, channel, sender, recipient, and why it was deferred or held last. Of a queue\n"
        "without such recipients nothing is printed. What comes and goes meanwhile is listed or not.\n"
        "\n") +
    kAboutEntryJson + "Here its recipients are those that match the options.\n\n" + kAboutJsonTexts;

const std::string kShowFooter = std::string(
                                    "Example:\n"
                                    "  vel queue show 00q4jv7k2m1f0c9r8t3p5n6d --json | jq .sender\n"
                                    "\n"
                                    "The exit code is 66 when there is no such entry.\n"
                                    "\n") +
                                kAboutEntryJson + "\n" + kAboutJsonTexts;

constexpr const char* kCatFooter =
    "Example:\n"
    "  vel queue cat 00q4jv7k2m1f0c9r8t3p5n6d | vel parse -\n"
    "\n"
    "The bytes as they are in the queue. The exit code is 66 when there is no such entry.\n";

Choice choice_of(const std::string& channel, const std::vector<std::string>& states) {
    Choice choice;
    if (!channel.empty()) choice.channel = channel;
    for (const std::string& state : states) choice.states |= kStates.at(state);
    return choice;
}

void write_object(const MQEntry& entry, Output& output) { output.write(one_line(entry_json(entry)).append("\n")); }

void list(const Choice& choice, bool json, Session& main) {
    const int64_t now = now_in_microseconds();
    bool first = true;
    for_each_entry(choice, main, [&](const MQEntry& entry) {
        if (json) return write_object(entry, main.output);
        if (std::exchange(first, false)) main.output.write(list_heading());
        main.output.write(list_lines(entry, now));
    });
}

void copy_message(const std::string& id, const std::string& path, Session& main) {
    const OwnedEntry entry = read_entry(id, main);
    const Descriptor message = open_for_reading(entry->path);
    Target target(path, main);
    const int out = target.descriptor();
    for_each_block(message.get(), [&](std::string_view block) {
        if (!write_all(out, block)) target.fail(errno);
        return true;
    });
    target.finish();
}

}  // namespace

Exit run_queue_list(Arguments arguments, Session& main) {
    CommandLine line("queue list", "Lists what is in the queue.", kListFooter);
    std::string channel;
    std::vector<std::string> states;
    line.add_channel(channel, "Only what is for this channel");
    line.add_option("--state", "STATE", states, "Only what is in this state: waiting, claimed or held; may be repeated")
        .one_of(state_names());
    line.add_json();
    if (const auto exit = line.read(std::move(arguments), main)) return *exit;
    connect_to_queue(main);
    list(choice_of(channel, states), line.json, main);
    return Exit::success;
}

Exit run_queue_show(Arguments arguments, Session& main) {
    CommandLine line("queue show", "Shows entries of the queue with their whole envelopes.", kShowFooter);
    std::vector<std::string> ids;
    line.add_argument("ID", ids, "Identifiers, or paths of message files").required();
    line.add_json();
    if (const auto exit = line.read(std::move(arguments), main)) return *exit;
    connect_to_queue(main);
    Exit worst = Exit::success;
    for (const std::string& id : ids) {
        try {
            const OwnedEntry entry = read_entry(identifier_of(id), main);
            if (line.json) {
                write_object(*entry, main.output);
            } else {
                if (&id != &ids.front()) main.output.write("\n");
                main.output.write(entry_text(*entry, now_in_microseconds()));
            }
        } catch (const Failure& failure) {
            main.output.complain({}, failure.what());
            worst = worse(worst, failure.exit());
        }
    }
    return worst;
}

Exit run_queue_cat(Arguments arguments, Session& main) {
    CommandLine line("queue cat", "Writes the message of an entry.", kCatFooter);
    std::string id;
    line.add_argument("ID", id, "Identifier, or path of the message file").required();
    line.add_output();
    if (const auto exit = line.read(std::move(arguments), main)) return *exit;
    connect_to_queue(main);
    copy_message(identifier_of(id), line.output, main);
    return Exit::success;
}

}  // namespace vel::command
