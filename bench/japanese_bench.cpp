// Japanese texts, from file to file and in memory. The bytes counted are those of the Shift-JIS texts, both ways.
#include <cstdlib>
#include <fstream>

#include "bench/run.h"
#include "vel/vel.h"

namespace vel::bench {
namespace {

// Lines of kanji, kana and some ASCII; as large as another text.
std::string japanese_text(std::size_t size) {
    static constexpr const char* kWords[] = {
        "\x93\xFA\x96\x7B\x8C\xEA", "\x82\xCC", "\x83\x81\x81\x5B\x83\x8B", " mail ",
        "\x82\xF0\x91\x97\x82\xE9", "\x81\x41", "\x95\x5C\x8E\xA6",         "\x81\x42\r\n"};
    std::string text;
    for (uint32_t state = 1; text.size() < size; state = state * 1664525 + 1013904223) text += kWords[state >> 29];
    return text;
}

bool to_jis(int in, int out) { return ShiftJIS2JIS(in, out, nullptr) == 0; }
bool to_sjis(int in, int out) { return JIS2ShiftJIS(in, INT32_MAX, out, 0) == 0; }
bool to_sjis_repaired(int in, int out) { return JIS2ShiftJIS(in, INT32_MAX, out, 1) == 0; }

using Converter = bool (*)(int in, int out);

bool convert(Converter work, const std::filesystem::path& from, const std::filesystem::path& to) {
    constexpr int kRead = 1;
    constexpr int kWrite = 2;
    const int in = CreateFile(from.c_str(), kRead);
    const int out = CreateFile(to.c_str(), kWrite);
    const bool worked = work(in, out);
    return CloseHandle(in) != 0 && CloseHandle(out) != 0 && worked;
}

void japanese(benchmark::State& state, Converter before, Converter work) {
    const std::filesystem::path plain = output("shift-jis"), prepared = output("prepared");
    std::ofstream(plain, std::ios::binary) << japanese_text(file_size(input("quoted.txt")));
    if (before && !convert(before, plain, prepared)) return fail(state, "not prepared");
    for (auto _ : state) {
        if (!convert(work, before ? prepared : plain, output("converted"))) return fail(state, "not converted");
    }
    count(state, file_size(plain), 1);
    for (const auto& path : {plain, prepared, output("converted")}) std::filesystem::remove(path);
}

void japanese_header(benchmark::State& state, char* (*work)(const char* text), const char* text) {
    for (auto _ : state) {
        char* const result = work(text);
        if (!result) return fail(state, text);
        std::free(result);
    }
    state.SetItemsProcessed(state.iterations());
}

BENCHMARK_CAPTURE(japanese, to_jis, nullptr, to_jis);
BENCHMARK_CAPTURE(japanese, to_shift_jis, to_jis, to_sjis);
BENCHMARK_CAPTURE(japanese, to_shift_jis_with_repair, to_jis, to_sjis_repaired);
BENCHMARK_CAPTURE(japanese_header, to_jis, bufShiftJIS2JIS, "\x93\xFA\x96\x7B <a@example.com>");
BENCHMARK_CAPTURE(japanese_header, to_shift_jis, bufJIS2ShiftJIS_wmc, "\x1B$BF|K\\\x1B(J <a@example.com>");

}  // namespace
}  // namespace vel::bench
