#include "codec/apple_single_writer.h"

#include <algorithm>
#include <cstdio>

#include "codec/apple_single.h"
#include "codec/big_endian.h"
#include "frame/line_file.h"

namespace vel {

bool AppleSingleWriter::start() {
    constexpr std::array<uint8_t, kAppleHeaderBytes> kPlaceholder{};
    return write_all(handle_, kPlaceholder.data(), kPlaceholder.size());
}

bool AppleSingleWriter::add(Bytes bytes, uint32_t& length) {
    length += static_cast<uint32_t>(bytes.size());
    return write_all(handle_, bytes.data(), bytes.size());
}

bool AppleSingleWriter::finish(const tagBinhex_Header& header) {
    std::array<uint8_t, kBinhexNameMax + kAppleFinderBytes> tail{};
    Cursor out = tail.data();
    put_text(out, {header.name, header.nameLength});
    Cursor finder = out;
    put_text(finder, {header.type, sizeof header.type});
    put_text(finder, {header.creator, sizeof header.creator});
    std::memcpy(finder, &header.flags, sizeof header.flags);
    out += kAppleFinderBytes;
    return write_all(handle_, tail.data(), static_cast<std::size_t>(out - tail.data())) &&
           write_header(header.nameLength);
}

bool AppleSingleWriter::write_header(uint32_t name_length) {
    struct Entry {
        AppleEntry id;
        uint32_t length;
    } const entries[kAppleEntries] = {{AppleEntry::data_fork, data_length_},
                                      {AppleEntry::resource_fork, resource_length_},
                                      {AppleEntry::real_name, name_length},
                                      {AppleEntry::finder_info, kAppleFinderBytes}};
    std::array<uint8_t, kAppleHeaderBytes> bytes;
    Cursor out = bytes.data();
    put_long(out, kAppleSingleMagic);
    put_long(out, kAppleSingleVersion);
    out = std::fill_n(out, kAppleFillerBytes, uint8_t{0});
    put_word(out, kAppleEntries);
    uint32_t offset = kAppleHeaderBytes;
    for (const auto& [id, length] : entries) {
        put_long(out, static_cast<uint32_t>(id));
        put_long(out, offset);
        put_long(out, length);
        offset += length;
    }
    return SetFilePointer(handle_, 0, nullptr, SEEK_SET) == 0 && write_all(handle_, bytes.data(), bytes.size());
}

}  // namespace vel

bool ASDataForkCallback(vel::AppleSingleWriter& file, vel::Bytes bytes) { return file.add_data(bytes); }
bool ASResourceForkCallback(vel::AppleSingleWriter& file, vel::Bytes bytes) { return file.add_resource(bytes); }
