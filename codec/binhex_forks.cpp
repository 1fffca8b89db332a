// Kept: nothing behind the last CRC is missed or minded, the closing colon included (SplitBinHexForks).
// Kept: the version is not looked at (read_header).
#include "codec/binhex_forks.h"

#include "codec/apple_single.h"
#include "codec/big_endian.h"
#include "codec/crc16.h"

namespace vel {
namespace {

// Whether the forks fit into a file that can be opened again.
bool fit(const tagBinhex_Header& header) {
    constexpr uint64_t kMost = INT32_MAX - kAppleHeaderBytes - kBinhexNameMax - kAppleFinderBytes;
    return uint64_t{to_MAC_LONG(header.dataLength)} + to_MAC_LONG(header.resourceLength) <= kMost;
}

int read_fields(SplitBHWorkArea& work, tagBinhex_Header& header) {
    if (const int result = take_bytes(work, &header.nameLength, 1); result != kBinhexDone) return result;
    if (header.nameLength > kBinhexNameMax) return kBinhexFailed;
    if (const int result = take_bytes(work, header.name, header.nameLength); result != kBinhexDone) return result;
    std::array<uint8_t, kBinhexFixedBytes> fixed;
    const int result = take_bytes(work, fixed.data(), fixed.size());
    if (result == kBinhexDone) take_fixed_fields(header, fixed);
    return result;
}

int read_header(SplitBHWorkArea& work, tagBinhex_Header& header) {
    tagBinhex_Header found{};
    if (const int result = read_fields(work, found); result != kBinhexDone) return result;
    const uint16_t crc = CalcHeaderCRC(found);
    if (const int result = TestBHFileCRC(work, crc); result != kBinhexDone) return result;
    found.crc = to_MAC_WORD(crc);
    header = found;
    return fit(header) ? kBinhexDone : kBinhexFailed;
}

int read_fork(SplitBHWorkArea& work, uint32_t left, const ForkSink& sink) {
    Crc16 crc;
    while (left > 0) {
        int result = kBinhexDone;
        const Bytes bytes = next_bytes(work, left, result);
        if (result != kBinhexDone) return result;
        crc.more(bytes);
        if (!sink(bytes)) return kBinhexFailed;
        left -= static_cast<uint32_t>(bytes.size());
    }
    return TestBHFileCRC(work, crc.finished());
}

}  // namespace
}  // namespace vel

int TestBHFileCRC(SplitBHWorkArea& work, uint16_t computed) {
    uint8_t stored[2];
    const int result = vel::take_bytes(work, stored, sizeof stored);
    if (result != vel::kBinhexDone) return result;
    return vel::word_at(stored) == computed ? vel::kBinhexDone : vel::kBinhexFailed;
}

int SplitBinHexForks(SplitBHWorkArea& work, tagBinhex_Header& header, const vel::ForkSink& data,
                     const vel::ForkSink& resource) {
    int result = vel::read_header(work, header);
    if (result == vel::kBinhexDone) result = vel::read_fork(work, to_MAC_LONG(header.dataLength), data);
    if (result == vel::kBinhexDone) result = vel::read_fork(work, to_MAC_LONG(header.resourceLength), resource);
    return result;
}
