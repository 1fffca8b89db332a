// The lines behind the begin line of a uuencoded file.
#ifndef VEL_CODEC_UU_DECODER_H
#define VEL_CODEC_UU_DECODER_H

#include <string_view>

#include "codec/bytes.h"

namespace vel {

class UuDecoder {
  public:
    enum class Line {
        data,   // decoded
        end,    // the end line
        over,   // no data: the end line is next, or there is none
        begin,  // another file begins
    };

    static constexpr std::size_t kMostBytes = 63;  // of one line
    static constexpr std::size_t kRoom = kMostBytes + 1;

    // Takes a line with its line end, and decodes it when it holds data.
    Line take(std::string_view line, Cursor& out);

    // Tells whether this is the end line, and one that counts.
    bool closes(std::string_view line) const;

  private:
    bool end_counts_ = true;
};

}  // namespace vel

#endif
