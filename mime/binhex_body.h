// Bodies of type "mac-binhex40".
#ifndef VEL_MIME_BINHEX_BODY_H
#define VEL_MIME_BINHEX_BODY_H

#include "frame/owned.h"
#include "vel/mime.h"

namespace vel {

// Decodes a BinHex body into a new AppleSingle file and names the record by it. Returns the file's path; null when
// it does not decode, with the record's true name cleared.
//   input  reads the record's file, positioned at will
COwned<char> decode_binhex_body(MimeMsg& record, int input);

}  // namespace vel

#endif
