// Runs a fuzz target over the files that are named, or that stand in the folders that are named.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

int run(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
    return 1;
}

int run_all(const std::filesystem::path& path) {
    if (!std::filesystem::is_directory(path)) return run(path);
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(path)) {
        if (entry.is_regular_file()) count += run(entry.path());
    }
    return count;
}

}  // namespace

int main(int argc, char** argv) {
    int count = 0;
    for (int i = 1; i < argc; ++i) count += run_all(argv[i]);
    std::printf("%d inputs\n", count);
    return count > 0 ? 0 : 1;
}
