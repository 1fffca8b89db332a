// BinHex and AppleSingle: pieces of text make no difference, and the forks of any AppleSingle file come back.
#include <sys/mman.h>

#include <cstdio>

#include "codec/apple_single_reader.h"
#include "codec/big_endian.h"
#include "codec/binhex_combine.h"
#include "frame/line_file.h"
#include "fuzz/expect.h"
#include "tests/codec/binhex_split.h"

using vel::test::split;
using vel::test::SplitFile;

namespace {

std::string shown(const SplitFile& file) {
    return std::to_string(file.result) + '/' + file.name + '/' + file.data + '/' + file.resource;
}

std::string content_of(int fd) {
    std::string content(static_cast<size_t>(::lseek(fd, 0, SEEK_END)), '\0');
    if (!vel::read_at(fd, 0, content.data(), content.size())) std::abort();
    return content;
}

void through_binhex(const std::string& file) {
    const vel::Descriptor in(::memfd_create("in", 0)), out(::memfd_create("out", 0));
    if (!vel::write_all(in.get(), file.data(), file.size())) std::abort();
    vel::AppleParameters found;
    if (GetBinhexParameterFromAS(in.get(), found) != 0) return;
    tagBinhex_Header header{};
    header.nameLength = found.name_length;
    std::memcpy(header.name, found.name, found.name_length);
    header.dataLength = to_MAC_LONG(found.data.length);
    header.resourceLength = to_MAC_LONG(found.resource.length);
    header.crc = to_MAC_WORD(CalcHeaderCRC(header));
    if (CombineBinhexRaw(header, in.get(), found.data.offset, found.resource.offset, out.get()) != 0) std::abort();
    const SplitFile expected{0,
                             {found.name, found.name_length},
                             file.substr(found.data.offset, found.data.length),
                             file.substr(found.resource.offset, found.resource.length)};
    expect_same(shown(split(content_of(out.get()), 1000)), shown(expected));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string input(data, data + size);
    const size_t piece = size > 0 ? data[0] % 80 + 1U : 1;
    expect_same(shown(split(input, piece)), shown(split(input, size + 1)));
    through_binhex(input);
    return 0;
}
