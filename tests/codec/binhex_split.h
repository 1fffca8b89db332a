// What the BinHex decoder makes of text that it gets in pieces, from heap blocks of exactly their size.
#ifndef VEL_TESTS_CODEC_BINHEX_SPLIT_H
#define VEL_TESTS_CODEC_BINHEX_SPLIT_H

#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

#include "codec/binhex_forks.h"
#include "codec/binhex_start.h"

namespace vel::test {

struct SplitFile {
    int result = kBinhexFailed;
    std::string name, data, resource;
    bool operator==(const SplitFile&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const SplitFile& file) {
    return out << file.result << " " << file.name << ": " << file.data.size() << " + " << file.resource.size();
}

inline SplitFile split(std::string_view text, std::size_t piece) {
    std::vector<uint8_t> copy;
    const auto next = [&] {
        const std::string_view part = text.substr(0, piece);
        copy = std::vector<uint8_t>(part.begin(), part.end());
        text.remove_prefix(part.size());
        return Bytes(copy);
    };
    BinhexStart start;
    Bytes block = next();
    while (!start.find(block)) {
        block = next();
        if (block.empty()) return {};
    }
    SplitFile file;
    tagBinhex_Header header{};
    SplitBHWorkArea work(next, block);
    const auto into = [](std::string& fork) {
        return [&fork](Bytes bytes) { return fork.append(bytes.begin(), bytes.end()), true; };
    };
    file.result = SplitBinHexForks(work, header, into(file.data), into(file.resource));
    file.name.assign(header.name, header.nameLength);
    return file;
}

}  // namespace vel::test

#endif
