// What the benchmarks share: their inputs, the directory for what they write, and failing.
#ifndef VEL_BENCH_RUN_H
#define VEL_BENCH_RUN_H

#include <benchmark/benchmark.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace vel::bench {

// A file or folder that make-inputs has written, and a file in the temporary directory.
std::filesystem::path input(const std::string& name);
std::filesystem::path output(const std::string& name);

// The lines of an input, without their line ends; none when it is missing.
std::vector<std::string> input_lines(const std::string& name);

// Ends a benchmark without a result, and the program with failure.
void fail(benchmark::State& state, const char* why);

// What all iterations together went through.
inline void count(benchmark::State& state, std::uintmax_t bytes, std::size_t items) {
    const auto rounds = static_cast<std::int64_t>(state.iterations());
    state.SetBytesProcessed(rounds * static_cast<std::int64_t>(bytes));
    state.SetItemsProcessed(rounds * static_cast<std::int64_t>(items));
}

}  // namespace vel::bench

#endif
