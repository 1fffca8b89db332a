// Base64 from handle to handle.
#include "codec/base64_decoder.h"
#include "codec/base64_encoder.h"
#include "codec/handle_io.h"
#include "frame/at_boundary.h"
#include "vel/codec.h"

extern "C" {

int to64(int in, int out) {
    return vel::at_boundary(-1, [=] {
        const auto write = [out](std::string_view text) { return vel::write_all(out, text.data(), text.size()); };
        return vel::encode_rest(in, vel::Base64Encoder(), write) ? 0 : -1;
    });
}

int from64(int in, int32_t count, int out) {
    if (count < 0) return 1;
    return vel::at_boundary(-1, [=] {
        vel::Base64Decoder decoder;
        return vel::Stretch(decoder, in, count, out).run() ? 1 : -1;
    });
}

}  // extern "C"
