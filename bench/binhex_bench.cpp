// BinHex from AppleSingle files and back. The bytes counted are those of the AppleSingle file, both ways.
#include <fstream>

#include "bench/run.h"
#include "vel/vel.h"

namespace vel::bench {
namespace {

// The contents of an input as the data fork of an AppleSingle file.
std::filesystem::path apple_single(const char* name) {
    constexpr char kHead[] =
        "\0\x05\x16\0\0\x02\0\0"
        "\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0"
        "\0\x01\0\0\0\x01\0\0\0\x26";
    const auto size = static_cast<std::uint32_t>(file_size(input(name)));
    std::ofstream file(output("apple-single"), std::ios::binary);
    file.write(kHead, sizeof kHead - 1);
    for (const int shift : {24, 16, 8, 0}) file.put(static_cast<char>(size >> shift));
    file << std::ifstream(input(name), std::ios::binary).rdbuf();
    return output("apple-single");
}

char* encoded(const std::filesystem::path& file) {
    char* path = nullptr;
    ConvertASToBinHex(file.c_str(), &path);
    return path;
}

char* decoded(const std::filesystem::path& file) {
    constexpr int kRead = 1;
    char* path = nullptr;
    const int in = CreateFile(file.c_str(), kRead);
    ConvertBinHexToAS(in, static_cast<long>(file_size(file)), &path, nullptr);
    CloseHandle(in);
    return path;
}

using Converter = char* (*)(const std::filesystem::path& file);

void convert(benchmark::State& state, const char* name, Converter before, Converter work) {
    const std::filesystem::path plain = apple_single(name);
    char* const prepared = before ? before(plain) : nullptr;
    for (auto _ : state) {
        char* const path = work(prepared ? prepared : plain);
        if (!path) return fail(state, name);
        MimeFreeFile(path);
    }
    count(state, file_size(plain), 1);
    MimeFreeFile(prepared);
    std::filesystem::remove(plain);
}

BENCHMARK_CAPTURE(convert, binhex_encode_binary, "uuencoded.bin", nullptr, encoded);
BENCHMARK_CAPTURE(convert, binhex_decode_binary, "uuencoded.bin", encoded, decoded);
BENCHMARK_CAPTURE(convert, binhex_encode_text, "quoted.txt", nullptr, encoded);
BENCHMARK_CAPTURE(convert, binhex_decode_text, "quoted.txt", encoded, decoded);

}  // namespace
}  // namespace vel::bench
