/* Transfer encodings: base64, quoted-printable, uuencode. */
#ifndef VEL_CODEC_H
#define VEL_CODEC_H

#include "vel/frame.h"
#include "vel/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Base64 and quoted-printable (RFC 2045 sections 6.7, 6.8) --------------------------------- */

VEL_API int to64(int in, int out);
VEL_API int from64(int in, int32_t count, int out);
VEL_API int textToQp(int in, int out);
VEL_API int textToQp_v2(VEL_FILE* in, VEL_FILE* out);
VEL_API int binaryToQp(int in, int out);
VEL_API int fromqp(int in, int32_t count, int out);

/* ---- Uuencode -------------------------------------------------------------------------------- */

VEL_API int IsuuencodeBegin(const char* line, char* name);
VEL_API int uuencode(int in, int out, const char* name, const char* mode);
VEL_API int uudecode(int in, int32_t limit, int out, char** name);

#ifdef __cplusplus
}
#endif

#endif
