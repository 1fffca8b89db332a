// The fields of a header block that are known by name.
#ifndef VEL_RFC822_HEADER_KEYWORDS_H
#define VEL_RFC822_HEADER_KEYWORDS_H

#include <string_view>

#include "rfc822/keyword_table.h"

namespace vel {

// A field's code, as ParseLine returns it.
namespace header_code {
enum Code : int32_t {
    none = -1,
    to = 1,
    from = 2,
    cc = 3,
    bcc = 4,
    resent_to = 5,
    resent_cc = 6,
    resent_bcc = 7,
    received = 8,
    reply_to = 9,
    return_receipt_to = 10,
    subject = 11,
    date = 12,
    sender = 13,
    message_id = 14,
    in_reply_to = 15,
    references = 16,
    return_path = 17,
    resent_message_id = 18,
    separator = 19,
    status = 20,
    recvdate = 21,
    mime_version = 22,
    content_type = 23,
    content_transfer_encoding = 24,
    content_id = 25,
    content_description = 26,
    resent_from = 27,
    resent_date = 28,
    other = 29,
    last = other
};
}  // namespace header_code

// A row's flag: line breaks in the value become blanks. The other bits are kept, and mean nothing.
constexpr uint32_t kUnfold = 2;

// The row of a lower-case keyword with its ":", or with the blank that stands for what ended it; the
// row "other:" for an unknown field; null for a line that is none.
const cmd_table* field_row(std::string_view keyword);

}  // namespace vel

#endif
