// Header blocks, one behind the other in one file.
#include "bench/run.h"
#include "vel/frame.h"
#include "vel/rfc822.h"

namespace vel::bench {
namespace {

// Reads one block. Returns its number of lines, 0 at the end of the file, -1 when it cannot be read.
int read_block(int handle) {
    int lines = 0;
    addr822* header = New822Header();
    const bool read = ParseHdr(handle, header, &lines, nullptr) == 1;
    Free822Header(header);
    return read ? lines : -1;
}

void header_blocks(benchmark::State& state) {
    const std::filesystem::path path = input("headers.txt");
    std::size_t blocks = 0;
    for (auto _ : state) {
        const int handle = fileopen(path.c_str(), 0, 1);
        int lines = read_block(handle);
        for (blocks = 0; lines > 0; ++blocks) lines = read_block(handle);
        fileclose(handle);
        if (lines < 0 || blocks == 0) return fail(state, "headers.txt");
    }
    count(state, file_size(path), blocks);
}

BENCHMARK(header_blocks);

}  // namespace
}  // namespace vel::bench
