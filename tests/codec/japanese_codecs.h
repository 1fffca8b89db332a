// The Japanese codecs with what they take besides bytes.
#ifndef VEL_TESTS_CODEC_JAPANESE_CODECS_H
#define VEL_TESTS_CODEC_JAPANESE_CODECS_H

#include "codec/japanese_decoder.h"
#include "codec/japanese_encoder.h"

namespace vel::test {

struct MarkingEncoder : JisEncoder {
    MarkingEncoder() : JisEncoder("<?>") {}
    static constexpr std::size_t room(std::size_t input) { return JisEncoder::room(input, 3); }
};

struct RepairingDecoder : JisDecoder {
    RepairingDecoder() : JisDecoder(true) {}
};

}  // namespace vel::test

#endif
