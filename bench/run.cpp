// The program that runs the benchmarks: vel_bench [options of Google Benchmark] INPUTS, a folder that make-inputs
// has written. Exits with 1 when one of them fails, or none runs.
#include "bench/run.h"

#include <fstream>
#include <iostream>

#include "bench/session.h"
#include "vel/frame.h"

namespace vel::bench {
namespace {

constexpr int kExitUsage = 64;

std::filesystem::path inputs;
bool failed = false;

}  // namespace

std::filesystem::path input(const std::string& name) { return inputs / name; }
std::filesystem::path output(const std::string& name) { return GetTempDir() / std::filesystem::path(name); }

std::vector<std::string> input_lines(const std::string& name) {
    std::ifstream in(input(name));
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

void fail(benchmark::State& state, const char* why) {
    state.SkipWithError(why);
    failed = true;
}

int run(int argc, char** argv) {
    benchmark::SetDefaultTimeUnit(benchmark::kMillisecond);
    benchmark::Initialize(&argc, argv);
    if (argc != 2) {
        std::cerr << "usage: vel_bench [--benchmark_filter=REGEX ...] INPUTS\n";
        return kExitUsage;
    }
    const Session session(argv[1]);
    inputs = argv[1];
    const std::size_t ran = benchmark::RunSpecifiedBenchmarks();
    return failed || ran == 0 ? 1 : 0;
}

}  // namespace vel::bench

int main(int argc, char** argv) { return vel::bench::run(argc, argv); }
