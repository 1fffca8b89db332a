// Whether this gateway's own files are Japanese.
#ifndef VEL_CODEC_JAPANESE_SETTINGS_H
#define VEL_CODEC_JAPANESE_SETTINGS_H

#include "frame/settings.h"

namespace vel {

constexpr Setting<128> kLocalCharSet{"Gateway", "LocalCharSet", ""};
constexpr Setting<128> kDisableJisInHeaders{"Options", "DisableJISinHeaders", "NO"};

inline bool is_locally_japanese() { return is(read(kLocalCharSet), "ISO-2022-JP"); }

}  // namespace vel

#endif
