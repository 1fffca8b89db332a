// The queue: how fast messages come in, synced, and how it bears a hundred thousand that wait.
#include <algorithm>
#include <atomic>
#include <fstream>
#include <thread>

#include "bench/run.h"
#include "vel/platform/config.h"
#include "vel/platform/log.h"
#include "vel/platform/queue.h"

namespace vel::bench {
namespace {

constexpr std::size_t kEntries = 100'000;
constexpr int kPortion = 100;
constexpr int kLease = 3600;

// Drops the log lines of a thread that the session does not know.
class Quiet {
  public:
    explicit Quiet(bool wanted) : wanted_(wanted) {
        if (wanted_) LogCaptureStart([](void*, int, const char*, const char*) {}, nullptr);
    }
    ~Quiet() {
        if (wanted_) LogCaptureStop();
    }
    Quiet(const Quiet&) = delete;
    Quiet& operator=(const Quiet&) = delete;

  private:
    bool wanted_;
};

bool connect(const char* name) {
    ProfileOverlaySet("Gateway", "QueueDirectory", output(name).c_str());
    return MQInit(nullptr, "bench") != 0;
}

// A queue without entries.
bool connect_new(const char* name) {
    std::filesystem::remove_all(output(name));
    std::filesystem::create_directories(output(name));
    return connect(name);
}

bool submit(std::vector<std::string>::const_iterator first, std::vector<std::string>::const_iterator last) {
    MQContext* const context = CreateMQEntry();
    if (!context) return false;
    std::ofstream(GetMQPathName(context, ".msg")) << "Subject: hello\r\n\r\nA message.\r\n";
    const std::string lock = GetMQPathName(context, ".lck");
    _envFrom sender{"me@example.com", "", 0, 0, "", ""};
    std::vector<_envRecip> recipients;
    for (; first != last; ++first) recipients.push_back({first->c_str(), "", 0, "", ""});
    stEnvelope envelope;
    envelope.senders.Add(&sender);
    for (_envRecip& recipient : recipients) envelope.recipients.Add(&recipient);
    InsertMQChannel(context, "smtp", 255);
    PutMQEnvelope(context, &envelope);
    const bool done = CloseMQEntry(context) != 0;
    std::filesystem::remove(lock);
    return done;
}

void submit_synced(benchmark::State& state) {
    const bool first = state.thread_index() == 0;
    if (first && !connect_new("incoming")) return fail(state, "MQInit");
    const Quiet quiet(!first);
    const std::vector<std::string> address{"you@example.com"};
    for (auto _ : state) {
        if (!submit(address.begin(), address.end())) return fail(state, "submit");
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}

BENCHMARK(submit_synced)->Threads(1)->Threads(16)->UseRealTime();

std::vector<std::string> addresses() {
    auto lines = input_lines("addresses.txt");
    lines.resize(std::min(lines.size(), kEntries));
    return lines;
}

// An entry for each address, put in by many threads, which share their syncs.
bool fill(const std::vector<std::string>& to) {
    constexpr std::size_t threads = 64;
    if (!connect_new("full")) return false;
    std::atomic<std::size_t> done = 0;
    std::vector<std::thread> crowd;
    for (std::size_t i = 0; i < threads; ++i) {
        crowd.emplace_back([&, i] {
            const Quiet quiet(true);
            for (auto at = static_cast<std::ptrdiff_t>(i); at < std::ssize(to); at += threads)
                done += submit(to.begin() + at, to.begin() + at + 1);
        });
    }
    for (std::thread& thread : crowd) thread.join();
    return done == to.size() && done != 0;
}

// The full queue, which the benchmarks share, as they find it.
bool connect_full() {
    static const bool filled = fill(addresses());
    return filled && connect("full");
}

void start_when_full(benchmark::State& state) {
    if (!connect_full()) return fail(state, "full");
    for (auto _ : state) {
        if (MQInit(nullptr, "bench") == 0) return fail(state, "MQInit");
    }
}

void list_when_full(benchmark::State& state) {
    if (!connect_full()) return fail(state, "full");
    int shown = 0;
    for (auto _ : state) {
        shown = MQListEntries(
            nullptr, 0, nullptr, [](void*, const MQEntry*) { return 1; }, nullptr);
        if (shown <= 0) return fail(state, "MQListEntries");
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * shown);
}

void count_when_full(benchmark::State& state) {
    if (!connect_full()) return fail(state, "full");
    for (auto _ : state) {
        if (MQCountEntries([](void*, const MQCount*) {}, nullptr) <= 0) return fail(state, "MQCountEntries");
    }
}

bool take(MQConsumer* consumer, int limit) {
    MQEntry* entry = nullptr;
    if (MQClaim(consumer, nullptr, limit, kLease, &entry) != 1) return false;
    const bool finished = MQFinish(consumer, entry->id, MQ_ALL) == entry->recipientCount;
    MQFreeEntry(entry);
    return finished;
}

void claim_and_finish_when_full(benchmark::State& state) {
    if (!connect_full()) return fail(state, "full");
    MQConsumer* const consumer = MQOpenConsumer("bench");
    for (auto _ : state) {
        if (!take(consumer, 0)) return fail(state, "take");
    }
    MQCloseConsumer(consumer);
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}

// One message to very many, a portion of whom is taken at a time.
void claim_and_finish_portions(benchmark::State& state) {
    const auto to = addresses();
    if (!connect_new("list")) return fail(state, "MQInit");
    MQConsumer* const consumer = MQOpenConsumer("bench");
    for (auto _ : state) {
        if (to.empty() || !submit(to.begin(), to.end())) return fail(state, "submit");
        for (std::size_t left = to.size(); left > 0; left -= std::min<std::size_t>(left, kPortion)) {
            if (!take(consumer, kPortion)) return fail(state, "take");
        }
    }
    MQCloseConsumer(consumer);
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * to.size()));
}

BENCHMARK(start_when_full)->UseRealTime();
BENCHMARK(list_when_full)->UseRealTime();
BENCHMARK(count_when_full)->UseRealTime();
BENCHMARK(claim_and_finish_when_full)->UseRealTime();
BENCHMARK(claim_and_finish_portions)->UseRealTime();

}  // namespace
}  // namespace vel::bench
