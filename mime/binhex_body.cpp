#include "mime/binhex_body.h"

#include <cstdio>

#include "vel/binhex.h"
#include "vel/frame.h"

namespace vel {

COwned<char> decode_binhex_body(MimeMsg& record, int input) {
    char* path = nullptr;
    char* name = nullptr;
    const auto length = static_cast<long>(record.bodyEnd - record.bodyStart);
    if (SetFilePointer(input, static_cast<int32_t>(record.bodyStart), nullptr, SEEK_SET) != -1) {
        ConvertBinHexToAS(input, length, &path, &name);
    }
    assign_text(record.trueName, COwned<char>(name));
    return COwned<char>(path);
}

}  // namespace vel
