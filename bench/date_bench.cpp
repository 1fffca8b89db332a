// Dates, read and written.
#include <cstdlib>
#include <memory>

#include "bench/run.h"
#include "vel/rfc822.h"

namespace vel::bench {
namespace {

struct Free {
    void operator()(UTCtime* time) const { std::free(time); }
};
using Time = std::unique_ptr<UTCtime, Free>;

Time read(const std::string& text) {
    UTCtime* time = nullptr;
    rfc2UTC(text.c_str(), &time);
    return Time(time);
}

void read_dates(benchmark::State& state) {
    const std::vector<std::string> texts = input_lines("dates.txt");
    if (texts.empty()) return fail(state, "no dates");
    std::size_t bytes = 0;
    for (auto _ : state) {
        bytes = 0;
        for (const std::string& text : texts) {
            if (!read(text)) return fail(state, text.c_str());
            bytes += text.size();
        }
    }
    count(state, bytes, texts.size());
}

void write_dates(benchmark::State& state) {
    std::vector<Time> times;
    for (const std::string& text : input_lines("dates.txt")) times.push_back(read(text));
    if (times.empty()) return fail(state, "no dates");
    char text[64];
    std::size_t bytes = 0;
    for (auto _ : state) {
        bytes = 0;
        for (const Time& time : times) {
            if (UTC2rfc(time.get(), text) != 1) return fail(state, "a date is not written");
            bytes += std::char_traits<char>::length(text);
        }
    }
    count(state, bytes, times.size());
}

BENCHMARK(read_dates);
BENCHMARK(write_dates);

}  // namespace
}  // namespace vel::bench
