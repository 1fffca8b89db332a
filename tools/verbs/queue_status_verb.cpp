// vel queue status and check: whether the queue is well.
#include <nlohmann/json.hpp>

#include "tools/io/table.h"
#include "tools/queue/connection.h"
#include "tools/queue/entries.h"
#include "tools/text/instant.h"
#include "tools/text/text_forms.h"
#include "tools/verbs/command_line.h"
#include "tools/verbs/queue_verbs.h"

namespace vel::command {
namespace {

constexpr const char* kStatusFooter =
    "Example:\n"
    "  vel queue status --max-held 0 --max-waiting 10000 --max-age 4h --min-free 1G || page-operator\n"
    "\n"
    "How many recipients each channel has in each state, when the oldest of them arrived, and how much space is\n"
    "free. For monitoring, options set thresholds; the exit code is 75 when one is passed, each of which is told on\n"
    "standard error, and 69 when the queue cannot be reached.\n"
    "\n"
    "The JSON object, one in all: counts, free_bytes, passed (texts). A count: channel, state (\"waiting\", "
    "\"claimed\",\n"
    "\"held\"), recipients, oldest (utc, seconds_since_1970).\n";

constexpr const char* kCheckFooter =
    "Example:\n"
    "  vel queue check\n"
    "\n"
    "A line for each finding: an identifier, or \"-\" for the database itself, and what is wrong. With --repair, what\n"
    "dead processes have left is removed, and an entry that waits without its whole message is held: such a one is\n"
    "found again until it is removed. The exit code is 65 when findings are left.\n"
    "\n"
    "The JSON object, one a finding: id (empty: the database), finding.\n";

struct Thresholds {
    std::optional<int64_t> held, waiting, age, free;
};

struct Count {
    std::string channel;
    int state;
    int64_t recipients;
    int64_t oldest;
};

struct Status {
    std::vector<Count> counts;
    int64_t free = 0;
    std::vector<std::string> passed{};  // thresholds
};

void declare(CommandLine& line, Thresholds& most) {
    line.add_number("--max-held", most.held, "At most so many held recipients");
    line.add_number("--max-waiting", most.waiting, "At most so many that wait or are claimed");
    line.add_time("--max-age", most.age, "None that waits or is claimed is older: 30m, 4h, 2d");
    line.add_size("--min-free", most.free, "At least so much free space: 500M, 10G");
}

Status read_status(Session& main) {
    Status status;
    const auto add = [](void* counts, const MQCount* count) {
        static_cast<std::vector<Count>*>(counts)->push_back(
            {count->channel, count->state, count->recipients, count->oldest});
    };
    const int counted = MQCountEntries(add, &status.counts);
    status.free = MQFreeBytes();
    if (counted < 0 || status.free < 0) throw queue_failure(main, "the queue cannot be read");
    return status;
}

void compare(Status& status, const Thresholds& most) {
    int64_t held = 0, waiting = 0, age = 0;
    const int64_t now = now_in_microseconds();
    for (const Count& count : status.counts) {
        (count.state == MQ_HELD ? held : waiting) += count.recipients;
        if (count.state != MQ_HELD) age = std::max(age, (now - count.oldest) / kMicroseconds);
    }
    const auto pass = [&](const std::string& what) { status.passed.push_back(what); };
    if (most.held && held > *most.held) pass(std::to_string(held) + " held, more than " + std::to_string(*most.held));
    if (most.waiting && waiting > *most.waiting)
        pass(std::to_string(waiting) + " waiting or claimed, more than " + std::to_string(*most.waiting));
    if (most.age && age > *most.age)
        pass("the oldest arrived " + duration_text(age) + " ago, more than " + duration_text(*most.age));
    if (most.free && status.free < *most.free)
        pass(std::to_string(status.free) + " bytes free, less than " + std::to_string(*most.free));
}

void write_json(const Status& status, Output& output) {
    Json object{{"counts", Json::array()}, {"free_bytes", status.free}, {"passed", status.passed}};
    for (const Count& count : status.counts) {
        object["counts"].push_back({{"channel", json_text(count.channel)},
                                    {"state", state_name(count.state)},
                                    {"recipients", count.recipients},
                                    {"oldest", time_json(count.oldest)}});
    }
    output.write(one_line(object).append("\n"));
}

void print(const Status& status, Output& output) {
    using enum Table::Align;
    const int64_t now = now_in_microseconds();
    Table table({{"channel"}, {"state"}, {"recipients", right}, {"oldest", right}, {"arrival of the oldest"}});
    for (const Count& count : status.counts) {
        table.add({visible(count.channel), state_name(count.state), std::to_string(count.recipients),
                   duration_text((now - count.oldest) / kMicroseconds), instant_text(count.oldest / kMicroseconds)});
    }
    if (table.empty()) {
        output.write("the queue is empty\n");
    } else {
        table.print(output);
    }
    constexpr int64_t kMiB = 1024 * 1024;
    output.write(std::to_string(status.free / kMiB).append(" MiB free\n"));
}

// What a finding is told with.
struct Findings {
    bool json;
    Output& output;
    std::exception_ptr thrown{};
};

void tell(void* context, const char* id, const char* finding) {
    Findings& findings = *static_cast<Findings*>(context);
    if (findings.thrown) return;
    try {
        findings.output.write(findings.json
                                  ? one_line({{"id", json_text(id)}, {"finding", json_text(finding)}}).append("\n")
                                  : visible(*id ? id : "-").append(": ").append(visible(finding)).append("\n"));
    } catch (...) {
        findings.thrown = std::current_exception();
    }
}

// Returns how many findings there were.
int check(bool repair, MQFindingVisitor visitor, void* context, Session& main) {
    const int count = MQCheck(repair ? 1 : 0, visitor, context);
    if (count < 0) throw queue_failure(main, "the queue cannot be checked");
    return count;
}

}  // namespace

Exit run_queue_status(Arguments arguments, Session& main) {
    CommandLine line("queue status", "Tells how much is in the queue, and how old it is.", kStatusFooter);
    Thresholds most;
    declare(line, most);
    line.add_json();
    if (const auto exit = line.read(std::move(arguments), main)) return *exit;
    connect_to_queue(main);
    Status status = read_status(main);
    compare(status, most);
    line.json ? write_json(status, main.output) : print(status, main.output);
    for (const std::string& passed : status.passed) main.output.complain({}, passed);
    return status.passed.empty() ? Exit::success : Exit::temporary;
}

Exit run_queue_check(Arguments arguments, Session& main) {
    CommandLine line("queue check", "Compares the queue's database with its files.", kCheckFooter);
    bool repair = false;
    line.add_flag("--repair", repair, "Repair what can be repaired");
    line.add_json();
    if (const auto exit = line.read(std::move(arguments), main)) return *exit;
    connect_to_queue(main);
    Findings findings{line.json, main.output};
    int left = check(repair, tell, &findings, main);
    if (findings.thrown) std::rethrow_exception(findings.thrown);
    if (repair && left > 0) {
        left = check(
            false, [](void*, const char*, const char*) {}, nullptr, main);
        main.output.complain({}, std::to_string(left).append(left == 1 ? " finding is left" : " findings are left"));
    }
    return left > 0 ? Exit::bad_data : Exit::success;
}

}  // namespace vel::command
