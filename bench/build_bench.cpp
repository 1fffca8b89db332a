// Building messages. The bytes counted are those of the contents that go in.
#include <fstream>
#include <vector>

#include "bench/run.h"
#include "vel/build.h"
#include "vel/mime.h"

namespace vel::bench {
namespace {

char* build_part(const char* type, const char* subtype, const char* encoding, const std::filesystem::path& body) {
    return MimeBuildMessage(nullptr, nullptr, nullptr, nullptr, type, subtype, nullptr, encoding, nullptr, nullptr,
                            body.c_str(), nullptr, 0);
}

void build_single(benchmark::State& state, const char* name, const char* encoding) {
    const std::filesystem::path body = input(name);
    for (auto _ : state) {
        char* path = build_part("text", "plain", encoding, body);
        if (!path) return fail(state, name);
        MimeFreeFile(path);
    }
    count(state, file_size(body), 1);
}

// A text and an attachment, as a mail program sends them.
void build_mixed(benchmark::State& state) {
    const std::filesystem::path text = input("quoted.txt"), attachment = input("attachment.bin");
    for (auto _ : state) {
        char* const parts[] = {build_part("text", "plain", nullptr, text),
                               build_part("application", "octet-stream", nullptr, attachment), nullptr};
        char* path = parts[0] && parts[1] ? MimeBuildMultipartMessage("me@example.com", nullptr, "Report", nullptr,
                                                                      parts, nullptr, nullptr, nullptr, 0)
                                          : nullptr;
        for (char* part : {parts[0], parts[1]}) MimeFreeFile(part);
        if (!path) return fail(state, "multipart");
        MimeFreeFile(path);
    }
    count(state, file_size(text) + file_size(attachment), 1);
}

BENCHMARK_CAPTURE(build_single, base64, "attachment.bin", "base64");
BENCHMARK_CAPTURE(build_single, qp_text, "quoted.txt", "quoted-printable");
BENCHMARK_CAPTURE(build_single, seven_bit, "quoted.txt", "7bit");
BENCHMARK(build_mixed);

// Address lines: every address is completed, encoded and placed.
void build_addresses(benchmark::State& state) {
    std::vector<std::string> addresses = input_lines("addresses.txt");
    std::vector<ms> chain(addresses.size());
    for (std::size_t i = 0; i < chain.size(); ++i) {
        chain[i] = {addresses[i].data(), i + 1 < chain.size() ? &chain[i + 1] : nullptr};
    }
    if (chain.empty()) return fail(state, "addresses.txt");
    const std::filesystem::path body = output("empty");
    std::ofstream(body).close();
    std::uintmax_t bytes = 0;
    for (auto _ : state) {
        char* path = MimeBuildMessage(nullptr, chain.data(), nullptr, nullptr, nullptr, nullptr, nullptr, "7bit",
                                      nullptr, nullptr, body.c_str(), nullptr, 2);
        if (!path) return fail(state, "addresses");
        bytes = std::filesystem::file_size(path);
        MimeFreeFile(path);
    }
    count(state, bytes, chain.size());
}

BENCHMARK(build_addresses);

}  // namespace
}  // namespace vel::bench
