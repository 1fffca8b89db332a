// The layout of an AppleSingle file (RFC 1740): a header, descriptors of entries, the entries.
#ifndef VEL_CODEC_APPLE_SINGLE_H
#define VEL_CODEC_APPLE_SINGLE_H

#include <cstddef>
#include <cstdint>

namespace vel {

constexpr uint32_t kAppleSingleMagic = 0x00051600;
constexpr uint32_t kAppleSingleVersion = 0x00020000;
constexpr std::size_t kAppleFillerBytes = 16;

constexpr std::size_t kAppleCountAt = 4 + 4 + kAppleFillerBytes;
constexpr std::size_t kAppleDescriptorsAt = kAppleCountAt + 2;
constexpr std::size_t kAppleDescriptorBytes = 12;  // id, offset, length

enum class AppleEntry : uint32_t { data_fork = 1, resource_fork = 2, real_name = 3, finder_info = 9 };

// As files are written here.
constexpr uint16_t kAppleEntries = 4;
constexpr std::size_t kAppleHeaderBytes = kAppleDescriptorsAt + kAppleEntries * kAppleDescriptorBytes;
constexpr std::size_t kAppleFinderBytes = 32;
static_assert(kAppleHeaderBytes == 74);

}  // namespace vel

#endif
