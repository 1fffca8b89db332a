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
    if (paths.empty()) return fail(state, "no messages");
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

bool add(const std::string& verb, void (*run)(benchmark::State&, const char*)) {
    for (const char* name : {"mails", "attachment.eml", "parts.eml", "nested.eml", "quoted.eml", "uuencoded.eml"}) {
        benchmark::RegisterBenchmark((verb + '/' + name).c_str(), run, name);
    }
    return true;
}

[[maybe_unused]] const bool kAdded = add("parse", parse) && add("extract", extract);

}  // namespace
}  // namespace vel::bench
