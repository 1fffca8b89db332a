// Messages: parsed, and parsed with every leaf decoded into a file.
#include <algorithm>

#include "bench/message.h"
#include "bench/run.h"

namespace vel::bench {
namespace {

// The file of that name, or all files of a folder.
std::vector<std::string> messages(const std::string& name) {
    const std::filesystem::path path = input(name);
    if (!std::filesystem::is_directory(path)) return {path.string()};
    std::vector<std::string> paths;
    for (const auto& entry : std::filesystem::directory_iterator(path)) paths.push_back(entry.path().string());
    std::sort(paths.begin(), paths.end());
    return paths;
}

std::uintmax_t size_of(const std::vector<std::string>& paths) {
    std::uintmax_t size = 0;
    std::error_code missing;
    for (const std::string& path : paths) size += std::filesystem::file_size(path, missing);
    return size;
}

template <class Work>
void every_message(benchmark::State& state, const char* name, Work work) {
    const std::vector<std::string> paths = messages(name);
    for (auto _ : state) {
        for (const std::string& path : paths) {
            if (!work(Message(path.c_str()))) return fail(state, path.c_str());
        }
    }
    count(state, size_of(paths), paths.size());
}

void parse(benchmark::State& state, const char* name) {
    every_message(state, name, [](const Message& message) { return message.records() > 0; });
}

void extract(benchmark::State& state, const char* name) {
    every_message(state, name, [](const Message& message) { return message.extract() > 0; });
}

BENCHMARK_CAPTURE(parse, mails, "mails")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(parse, attachment, "attachment.eml")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(parse, parts, "parts.eml")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(parse, nested, "nested.eml")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(parse, quoted, "quoted.eml")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(parse, uuencoded, "uuencoded.eml")->Unit(benchmark::kMillisecond);

BENCHMARK_CAPTURE(extract, mails, "mails")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(extract, attachment, "attachment.eml")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(extract, parts, "parts.eml")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(extract, nested, "nested.eml")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(extract, quoted, "quoted.eml")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(extract, uuencoded, "uuencoded.eml")->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace vel::bench
