// Transfer encodings, from file to file. The bytes counted are those of the plain contents, both ways.
#include "bench/run.h"
#include "vel/codec.h"

namespace vel::bench {
namespace {

// Reads an open file of a known size and writes another; tells whether it worked.
using Transcoder = bool (*)(int in, int32_t size, int out);

bool encode_base64(int in, int32_t, int out) { return to64(in, out) == 0; }
bool decode_base64(int in, int32_t size, int out) { return from64(in, size, out) == 1; }
bool encode_text_qp(int in, int32_t, int out) { return textToQp(in, out) == 1; }
bool encode_binary_qp(int in, int32_t, int out) { return binaryToQp(in, out) == 1; }
bool decode_qp(int in, int32_t size, int out) { return fromqp(in, size, out) == 1; }
bool encode_uu(int in, int32_t, int out) { return uuencode(in, out, "uuencoded.bin", nullptr) == 1; }
bool decode_uu(int in, int32_t, int out) { return uudecode(in, 0, out, nullptr) == 1; }

bool transcode(Transcoder work, const std::filesystem::path& from, const std::filesystem::path& to) {
    constexpr int kRead = 0;
    constexpr int kWrite = 2;
    const int in = fileopen(from.c_str(), kRead, 1);
    const int out = filecreate(to.c_str(), kWrite, 1);
    const bool worked = in >= 0 && out >= 0 && work(in, static_cast<int32_t>(file_size(from)), out);
    const bool written = fileclose(out) == 1;
    return fileclose(in) == 1 && written && worked;
}

void encode(benchmark::State& state, const char* name, Transcoder work) {
    const std::filesystem::path plain = input(name);
    for (auto _ : state) {
        if (!transcode(work, plain, output("encoded"))) return fail(state, name);
    }
    count(state, file_size(plain), 1);
}

void decode(benchmark::State& state, const char* name, Transcoder encoder, Transcoder work) {
    const std::filesystem::path plain = input(name), encoded = output(std::string(name) + ".encoded");
    if (!transcode(encoder, plain, encoded)) return fail(state, name);
    for (auto _ : state) {
        if (!transcode(work, encoded, output("decoded"))) return fail(state, name);
    }
    count(state, file_size(plain), 1);
    std::filesystem::remove(encoded);
}

BENCHMARK_CAPTURE(encode, base64, "attachment.bin", encode_base64);
BENCHMARK_CAPTURE(decode, base64, "attachment.bin", encode_base64, decode_base64);
BENCHMARK_CAPTURE(encode, qp_text, "quoted.txt", encode_text_qp);
BENCHMARK_CAPTURE(decode, qp_text, "quoted.txt", encode_text_qp, decode_qp);
BENCHMARK_CAPTURE(encode, qp_binary, "quoted.txt", encode_binary_qp);
BENCHMARK_CAPTURE(decode, qp_binary, "quoted.txt", encode_binary_qp, decode_qp);
BENCHMARK_CAPTURE(encode, uu, "uuencoded.bin", encode_uu);
BENCHMARK_CAPTURE(decode, uu, "uuencoded.bin", encode_uu, decode_uu);

}  // namespace
}  // namespace vel::bench
