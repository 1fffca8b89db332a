// Header values with encoded words, decoded and encoded again; the items are values.
#include <cstdlib>
#include <memory>

#include "bench/run.h"
#include "vel/words.h"

namespace vel::bench {
namespace {

struct Free {
    void operator()(char* text) const { std::free(text); }
};
using Text = std::unique_ptr<char, Free>;

Text decoded_by_settings(const char* value) { return Text(rfc1522decoding(value)); }
Text decoded(const char* value) { return Text(rfc1522decoding_wmc(value)); }
Text encoded_by_settings(const char* value) { return Text(rfc1522encoding(value)); }
Text encoded(const char* value) { return Text(rfc1522encoding_wmc(value, "utf-8")); }

// The values with their words decoded, so that there is something to encode.
std::vector<std::string> plain_values() {
    std::vector<std::string> values = input_lines("words.txt");
    for (std::string& value : values) value = decoded(value.c_str()).get();
    return values;
}

void convert(benchmark::State& state, const std::vector<std::string>& values, Text (*work)(const char* value)) {
    if (values.empty()) return fail(state, "no values");
    std::size_t bytes = 0;
    for (auto _ : state) {
        bytes = 0;
        for (const std::string& value : values) {
            if (!work(value.c_str())) return fail(state, value.c_str());
            bytes += value.size();
        }
    }
    count(state, bytes, values.size());
}

void decode_words(benchmark::State& state, Text (*work)(const char* value)) {
    convert(state, input_lines("words.txt"), work);
}
void encode_words(benchmark::State& state, Text (*work)(const char* value)) { convert(state, plain_values(), work); }

BENCHMARK_CAPTURE(decode_words, by_settings, decoded_by_settings);
BENCHMARK_CAPTURE(decode_words, all, decoded);
BENCHMARK_CAPTURE(encode_words, by_settings, encoded_by_settings);
BENCHMARK_CAPTURE(encode_words, utf_8, encoded);

}  // namespace
}  // namespace vel::bench
