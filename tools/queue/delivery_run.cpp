#include "tools/queue/delivery_run.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <functional>
#include <memory>
#include <thread>

#include "tools/io/interruption.h"
#include "tools/queue/entries.h"
#include "tools/queue/notice.h"
#include "tools/text/instant.h"

namespace vel::command {
namespace {

constexpr int kExtensionsPerLease = 5;
constexpr int kMostTries = 30;  // to record what has been done: it would be done again otherwise
constexpr std::chrono::seconds kBetweenTries{1};
constexpr const char* kSuccess = "2.0.0";  // RFC 3463
constexpr const char* kTooOld = "4.4.7";

struct Counts {
    std::atomic<int64_t> delivered, deferred, failed, held;
};

struct ConsumerClosed {
    void operator()(MQConsumer* consumer) const { MQCloseConsumer(consumer); }
};

// What all workers share.
struct Run {
    const RunOptions& options;
    const DeliveryCommand& command;
    const RetryPlan& plan;
    Streams& streams;
    StopRequest stop{};
    Counts counts{};
};

// A consumer, on a thread of its own, whose log lines go to the log.
class Worker {
  public:
    explicit Worker(Run& run) : run_(run), output_(run.streams), consumer_(MQOpenConsumer("vel queue run")) {
        for (const std::string& channel : run.options.channels) channels_.push_back(channel.c_str());
        channels_.push_back(nullptr);
    }

    Exit work() {
        int claimed = consumer_ ? 0 : -1;
        while (claimed >= 0 && !run_.stop.asked()) {
            OwnedEntry entry;
            claimed = claim(entry);
            if (claimed > 0) deliver(*entry);
            if (claimed == 0 && (run_.options.once || run_.stop.wait(run_.options.poll))) return Exit::success;
        }
        if (claimed >= 0) return Exit::success;
        output_.complain({}, "the queue cannot be reached; the log says why");
        return Exit::unavailable;
    }

  private:
    int claim(OwnedEntry& entry) {
        MQEntry* claimed = nullptr;
        const int limit = run_.options.batch ? 0 : 1, lease = static_cast<int>(run_.options.lease.count());
        const int count = MQClaim(consumer_.get(), channels_.data(), limit, lease, &claimed);
        entry.reset(claimed);
        return count;
    }

    void deliver(const MQEntry& entry) {
        const Outcome outcome = try_delivery(entry);
        switch (outcome.verdict) {
            case Verdict::delivered: return finish(entry);
            case Verdict::deferred: return defer(entry, outcome);
            case Verdict::failed:
                return fail_for_good(entry, {Fate::permanent_failure, outcome.status, outcome.reason});
            case Verdict::broken_off: MQGiveBack(consumer_.get(), entry.id, MQ_ALL); return;
            case Verdict::lost: return complain(entry, "the claim was lost, so its command was ended");
        }
    }

    // What keeps the command from being started says nothing about the message.
    Outcome try_delivery(const MQEntry& entry) {
        const auto lease = run_.options.lease;
        try {
            return attempt(entry, run_.command,
                           {run_.stop, lease / kExtensionsPerLease, [&] { return extend(entry); },
                            [&](std::string_view line) { complain(entry, line); }});
        } catch (const std::exception& failure) {
            return {Verdict::deferred, failure.what()};
        }
    }

    // An extension that fails for now is asked for again.
    bool extend(const MQEntry& entry) {
        return MQExtend(consumer_.get(), entry.id, MQ_ALL, static_cast<int>(run_.options.lease.count())) != 0;
    }

    void finish(const MQEntry& entry) {
        if (run_.options.success) report(entry, {*run_.options.success, kSuccess, {}});
        record(entry, run_.counts.delivered, [&] { return MQFinish(consumer_.get(), entry.id, MQ_ALL); });
    }

    void defer(const MQEntry& entry, const Outcome& outcome) {
        const auto due = next_attempt(entry);
        if (!due) {
            const std::string time = duration_text(run_.plan.lifetime());
            return fail_for_good(
                entry, {Fate::permanent_failure, kTooOld, "not delivered within " + time + ": " + outcome.reason});
        }
        if (run_.plan.is_late(attempts_of(entry))) {
            const int64_t end = arrival_of(entry) + run_.plan.lifetime();
            report(entry, {Fate::delayed, outcome.status, outcome.reason, end});
        }
        defer_until(*due, entry, outcome.reason);
    }

    // One that cannot be sent is no reason to deliver once more, or not to try.
    void report(const MQEntry& entry, const News& news) {
        if (!has_reader(entry)) return;
        const std::string trouble = trouble_in_telling(entry, news);
        if (!trouble.empty()) complain(entry, trouble);
    }

    // The notice is in the queue before the recipients go: a crash in between makes a second one, never none.
    void fail_for_good(const MQEntry& entry, const News& news) {
        if (!has_reader(entry)) return hold(entry, news.reason);
        if (!extend(entry)) return complain(entry, "the claim was lost: another may try once more");
        const std::string trouble = trouble_in_telling(entry, news);
        if (!trouble.empty()) return keep(entry, news.reason + "; " + trouble);
        record(entry, run_.counts.failed,
               [&] { return MQFail(consumer_.get(), entry.id, MQ_ALL, news.reason.c_str()); });
    }

    // Empty when the sender has been told, or does not want to be.
    static std::string trouble_in_telling(const MQEntry& entry, const News& news) {
        try {
            tell_sender(entry, news);
            return {};
        } catch (const std::exception& failure) {
            return failure.what();
        }
    }

    // Until its sender can be told.
    void keep(const MQEntry& entry, const std::string& reason) {
        if (const auto due = next_attempt(entry)) return defer_until(*due, entry, reason);
        hold(entry, reason);
    }

    // In seconds; nothing when the message would be too old by then.
    std::optional<int64_t> next_attempt(const MQEntry& entry) const {
        return run_.plan.due(arrival_of(entry), attempts_of(entry), now_in_microseconds() / kMicroseconds);
    }

    // Recipients that are delivered together stay together.
    static int attempts_of(const MQEntry& entry) {
        int attempts = 0;
        for (const MQRecipient& recipient : recipients_of(entry)) attempts = std::max(attempts, recipient.attempts);
        return attempts;
    }

    static int64_t arrival_of(const MQEntry& entry) { return entry.arrival / kMicroseconds; }

    void defer_until(int64_t due, const MQEntry& entry, const std::string& reason) {
        record(entry, run_.counts.deferred,
               [&] { return MQDefer(consumer_.get(), entry.id, MQ_ALL, due * kMicroseconds, reason.c_str()); });
    }

    void hold(const MQEntry& entry, const std::string& reason) {
        record(entry, run_.counts.held, [&] { return MQHold(consumer_.get(), entry.id, MQ_ALL, reason.c_str()); });
    }

    void record(const MQEntry& entry, std::atomic<int64_t>& count, const std::function<int()>& call) {
        for (int i = 0; i < kMostTries; ++i) {
            const int recorded = call();
            if (recorded > 0) count += recorded;
            if (recorded == 0) complain(entry, "the claim was lost: another may do the same once more");
            if (recorded >= 0) return;
            std::this_thread::sleep_for(kBetweenTries);
        }
        complain(entry, "what was done could not be recorded: it will be done once more");
    }

    void complain(const MQEntry& entry, std::string_view text) { output_.complain(entry.id, text); }

    Run& run_;
    Output output_;
    std::unique_ptr<MQConsumer, ConsumerClosed> consumer_;
    std::vector<const char*> channels_;
};

void take_signal(Run& run, int signal) {
    const bool again = run.stop.asked();
    run.stop.add(signal);
    Output(run.streams)
        .complain({}, again ? "ending the commands that run"
                            : "stopping when the commands that run have ended; another signal ends them");
}

// One that cannot go on has the others stop too: whoever started the run is to know.
Exit work(Run& run) {
    Exit exit = Exit::io_error;
    try {
        exit = Worker(run).work();
    } catch (const std::exception& failure) {
        Output(run.streams).complain({}, failure.what());
    }
    if (exit != Exit::success) run.stop.add(0);
    return exit;
}

}  // namespace

Exit run_deliveries(const RunOptions& options, const DeliveryCommand& command, const RetryPlan& plan, Session& main) {
    Run run{options, command, plan, main.output.streams()};
    const TakenSignals signals([&](int signal) { take_signal(run, signal); });
    std::vector<Exit> exits(options.jobs, Exit::success);
    std::vector<std::thread> workers;
    for (Exit& exit : exits) workers.emplace_back([&] { exit = work(run); });
    for (std::thread& worker : workers) worker.join();
    const Counts& counts = run.counts;
    main.output.write(std::string("delivered ")
                          .append(std::to_string(counts.delivered))
                          .append(", deferred ")
                          .append(std::to_string(counts.deferred))
                          .append(", failed ")
                          .append(std::to_string(counts.failed))
                          .append(", held ")
                          .append(std::to_string(counts.held))
                          .append("\n"));
    return *std::max_element(exits.begin(), exits.end());
}

}  // namespace vel::command
