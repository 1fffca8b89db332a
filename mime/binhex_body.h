// The seam for BinHex bodies.
#ifndef VEL_MIME_BINHEX_BODY_H
#define VEL_MIME_BINHEX_BODY_H

#include "frame/owned.h"
#include "vel/mime.h"

namespace vel {

// Decodes a BinHex body into a new file and names the record by it. Returns the file's path; null when
// it does not decode, with the record's true name cleared. No decoder stands behind this yet, so every
// body is such a one and is delivered as it stands.
inline COwned<char> decode_binhex_body(MimeMsg& record, int /*input*/) {
    clear_text(record.trueName);
    return nullptr;
}

}  // namespace vel

#endif
