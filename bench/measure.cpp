// Takes one message apart and prints what it cost, as one line of JSON:
//   vel_measure parse|extract FILE SETTINGS
// with the settings of a folder. It tells of the records, or -1; seconds of wall time; bytes on the heap that the records hold; growth of the peak of the resident
// memory, in bytes. A profiler counts what runs below take_apart().
#include <malloc.h>

#include <chrono>
#include <fstream>
#include <iostream>
#include <string_view>

#include "bench/message.h"
#include "bench/session.h"

namespace vel::bench {
namespace {

constexpr int kExitUsage = 64;

std::size_t heap_in_use() {
    const auto info = ::mallinfo2();
    return info.uordblks + info.hblkhd;
}

// The highest that the resident memory ever was, in bytes; 0 when the system does not tell.
long peak_memory() {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        long kibibytes = 0;
        if (word == "VmHWM:" && status >> kibibytes) return kibibytes * 1024;
    }
    return 0;
}

struct Cost {
    int records;
    bool complete;
    std::size_t heap;
};

}  // namespace

[[gnu::noinline]] Cost take_apart(const char* path, bool extract) {
    const std::size_t before = heap_in_use();
    const Message message(path);
    const std::size_t heap = heap_in_use() - before;
    const bool complete = message.records() > 0 && (!extract || message.extract() > 0);
    return {message.records(), complete, heap};
}

int measure(const char* path, bool extract, const char* settings) {
    using Clock = std::chrono::steady_clock;
    const Session session(settings);
    const long peak = peak_memory();
    const auto start = Clock::now();
    const Cost cost = take_apart(path, extract);
    const std::chrono::duration<double> taken = Clock::now() - start;
    std::cout << "{\"records\": " << cost.records << ", \"seconds\": " << taken.count() << ", \"heap\": " << cost.heap
              << ", \"peak_growth\": " << peak_memory() - peak << "}\n";
    return cost.complete ? 0 : 1;
}

}  // namespace vel::bench

int main(int argc, char** argv) {
    const std::string_view verb = argc == 4 ? argv[1] : "";
    if (verb == "parse" || verb == "extract") return vel::bench::measure(argv[2], verb == "extract", argv[3]);
    std::cerr << "usage: vel_measure parse|extract FILE SETTINGS\n";
    return vel::bench::kExitUsage;
}
