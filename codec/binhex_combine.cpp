#include "codec/binhex_combine.h"

#include <cstdio>

#include "codec/big_endian.h"
#include "codec/binhex_encoder.h"
#include "codec/crc16.h"
#include "codec/handle_io.h"
#include "codec/limited_input.h"

namespace vel {
namespace {

class BinhexFile {
  public:
    explicit BinhexFile(int out) : output_(out, BinhexEncoder::room(kLargeBlock)) {
        BinhexEncoder::start(output_.cursor());
    }

    bool add(Bytes bytes) {
        if (!output_.make_room(BinhexEncoder::room(bytes.size()))) return false;
        encoder_.more(bytes, output_.cursor());
        return true;
    }

    bool add_crc(uint16_t crc) {
        const uint16_t stored = to_MAC_WORD(crc);
        uint8_t bytes[sizeof stored];
        std::memcpy(bytes, &stored, sizeof stored);
        return add(bytes);
    }

    // A fork and its CRC.
    bool add_fork(int in, uint32_t offset, uint32_t length) {
        if (length > 0 && SetFilePointer(in, static_cast<int32_t>(offset), nullptr, SEEK_SET) == -1) return false;
        LimitedInput input(in, length);
        Crc16 crc;
        for (uint32_t left = length; left > 0;) {
            const Bytes bytes = input.next();
            if (bytes.empty()) return false;
            crc.more(bytes);
            if (!add(bytes)) return false;
            left -= static_cast<uint32_t>(bytes.size());
        }
        return add_crc(crc.finished());
    }

    bool finish() {
        if (!output_.make_room(BinhexEncoder::room(0))) return false;
        encoder_.finish(output_.cursor());
        return output_.write_all();
    }

  private:
    BinhexEncoder encoder_;
    CollectedOutput output_;
};

}  // namespace
}  // namespace vel

int CombineBinhexRaw(tagBinhex_Header header, int in, uint32_t data_offset, uint32_t resource_offset, int out) {
    vel::BinhexFile file(out);
    const bool written = file.add(vel::BinhexHeaderBytes(header).bytes()) && file.add_crc(to_MAC_WORD(header.crc)) &&
                         file.add_fork(in, data_offset, to_MAC_LONG(header.dataLength)) &&
                         file.add_fork(in, resource_offset, to_MAC_LONG(header.resourceLength)) && file.finish();
    return written ? 0 : -1;
}
