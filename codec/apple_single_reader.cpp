// Kept: magic and version are not looked at, so AppleDouble headers are read too (GetBinhexParameterFromAS).
// Kept: of two entries with one id the last counts (find_entries).
// Kept: a name that BinHex cannot hold is cut (read_entries).
#include "codec/apple_single_reader.h"

#include <cstdio>

#include "codec/apple_single.h"
#include "codec/big_endian.h"
#include "frame/line_file.h"

namespace vel {
namespace {

constexpr std::size_t kHeadBytes = 8192;  // the descriptors lie in them

struct AppleEntries {
    AppleStretch data, resource, name, finder;

    AppleStretch* find(uint32_t id) {
        switch (static_cast<AppleEntry>(id)) {
            case AppleEntry::data_fork: return &data;
            case AppleEntry::resource_fork: return &resource;
            case AppleEntry::real_name: return &name;
            case AppleEntry::finder_info: return &finder;
        }
        return nullptr;
    }
};

// Reads up to so many bytes. Returns how many there were, fewer only at the end; -1 when reading fails.
ssize_t read_up_to(int handle, uint8_t* to, std::size_t count) {
    std::size_t there = 0;
    while (there < count) {
        const ssize_t got = read_again(handle, to + there, count - there);
        if (got < 0) return -1;
        if (got == 0) break;
        there += static_cast<std::size_t>(got);
    }
    return static_cast<ssize_t>(there);
}

// Fills in the entries that are known. Returns false when one passes the end of the file.
bool find_entries(Bytes descriptors, uint32_t file_size, AppleEntries& entries) {
    for (; !descriptors.empty(); descriptors = descriptors.subspan(kAppleDescriptorBytes)) {
        AppleStretch* entry = entries.find(long_at(&descriptors[0]));
        if (!entry) continue;
        *entry = {long_at(&descriptors[4]), long_at(&descriptors[8])};
        if (uint64_t{entry->offset} + entry->length > file_size) return false;
    }
    return true;
}

bool read_head(int handle, AppleEntries& entries) {
    std::array<uint8_t, kHeadBytes> head;
    const uint32_t size = GetFileSize(handle, nullptr);
    if (size > INT32_MAX || SetFilePointer(handle, 0, nullptr, SEEK_SET) == -1) return false;
    const ssize_t there = read_up_to(handle, head.data(), head.size());
    if (there < static_cast<ssize_t>(kAppleDescriptorsAt)) return false;
    const std::size_t table = word_at(&head[kAppleCountAt]) * kAppleDescriptorBytes;
    if (kAppleDescriptorsAt + table > static_cast<std::size_t>(there)) return false;
    return find_entries({&head[kAppleDescriptorsAt], table}, size, entries);
}

bool read_entries(int handle, const AppleEntries& entries, AppleParameters& parameters) {
    const std::size_t name = std::min<std::size_t>(entries.name.length, kBinhexNameMax);
    char finder[sizeof parameters.type + sizeof parameters.creator] = {};
    const std::size_t known = std::min<std::size_t>(entries.finder.length, sizeof finder);
    if (!read_at(handle, entries.name.offset, parameters.name, name)) return false;
    if (!read_at(handle, entries.finder.offset, finder, known)) return false;
    parameters.name[name] = '\0';
    parameters.name_length = static_cast<uint8_t>(name);
    std::memcpy(parameters.type, finder, sizeof parameters.type);
    std::memcpy(parameters.creator, finder + sizeof parameters.type, sizeof parameters.creator);
    return true;
}

}  // namespace

bool read_at(int handle, uint32_t offset, void* to, std::size_t count) {
    if (count == 0) return true;
    if (SetFilePointer(handle, static_cast<int32_t>(offset), nullptr, SEEK_SET) == -1) return false;
    return read_up_to(handle, static_cast<uint8_t*>(to), count) == static_cast<ssize_t>(count);
}

}  // namespace vel

int GetBinhexParameterFromAS(int handle, vel::AppleParameters& parameters) {
    vel::AppleEntries entries;
    if (!vel::read_head(handle, entries) || !vel::read_entries(handle, entries, parameters)) return -1;
    parameters.data = entries.data;
    parameters.resource = entries.resource;
    return 0;
}
