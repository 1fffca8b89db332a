#include "codec/binhex_header.h"

#include <algorithm>

#include "codec/crc16.h"

namespace vel {
namespace {

// Calls each(field) for the fields behind the name, in their order.
template <class Header, class Each>
void for_each_fixed_field(Header& header, const Each& each) {
    each(header.version);
    each(header.type);
    each(header.creator);
    each(header.flags);
    each(header.dataLength);
    each(header.resourceLength);
}

}  // namespace

BinhexHeaderBytes::BinhexHeaderBytes(const tagBinhex_Header& header) {
    Cursor out = bytes_.data();
    const std::size_t name = std::min<std::size_t>(header.nameLength, kBinhexNameMax);
    put_byte(out, static_cast<unsigned>(name));
    put_text(out, {header.name, name});
    for_each_fixed_field(header, [&](const auto& field) {
        std::memcpy(out, &field, sizeof field);
        out += sizeof field;
    });
    length_ = static_cast<std::size_t>(out - bytes_.data());
}

void take_fixed_fields(tagBinhex_Header& header, const std::array<uint8_t, kBinhexFixedBytes>& bytes) {
    const uint8_t* from = bytes.data();
    for_each_fixed_field(header, [&](auto& field) {
        std::memcpy(&field, from, sizeof field);
        from += sizeof field;
    });
}

}  // namespace vel

uint16_t CalcHeaderCRC(tagBinhex_Header header) {
    vel::Crc16 crc;
    crc.more(vel::BinhexHeaderBytes(header).bytes());
    return crc.finished();
}
