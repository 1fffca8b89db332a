#include "rfc822/header_keywords.h"

#include <algorithm>
#include <iterator>

namespace vel {
namespace {

constexpr cmd_table kFields[] = {
    {"to:", header_code::to, 7},
    {"resent-to:", header_code::resent_to, 7},
    {"cc:", header_code::cc, 7},
    {"resent-cc:", header_code::resent_cc, 7},
    {"bcc:", header_code::bcc, 7},
    {"resent-bcc:", header_code::resent_bcc, 7},
    {"from:", header_code::from, 7},
    {"resent-from:", header_code::resent_from, 7},
    {"resent-date:", header_code::resent_date, 7},
    {"received:", header_code::received, 1},
    {"reply-to:", header_code::reply_to, 6},
    {"return-receipt-to:", header_code::return_receipt_to, 4},
    {"subject:", header_code::subject, 0},
    {"date:", header_code::date, 0},
    {"sender:", header_code::sender, 6},
    {"message-id:", header_code::message_id, 0},
    {"resent-message-id:", header_code::resent_message_id, 0},
    {"in-reply-to:", header_code::in_reply_to, 0},
    {"references:", header_code::references, 0},
    {"return-path:", header_code::return_path, 0},
    {"from ", header_code::separator, 0},
    {"status", header_code::status, 0},
    {"recvdate", header_code::recvdate, 0},
    {"mime-version:", header_code::mime_version, 0},
    {"content-type:", header_code::content_type, 1},
    {"content-transfer-encoding:", header_code::content_transfer_encoding, 1},
    {"content-id:", header_code::content_id, 1},
    {"content-description:", header_code::content_description, 1},
    {"other:", header_code::other, 1},
    {nullptr, header_code::none, 0},
};

constexpr const cmd_table* kOther = std::end(kFields) - 2;
constexpr const cmd_table* kStatus = find_row("status", kFields);

static_assert(kOther->code == header_code::other && kStatus->code == header_code::status);
// Every code from 1 to the last has its row.
static_assert([] {
    for (int32_t code = 1; code <= header_code::last; ++code) {
        if (!rcmd_srch(code, kFields)) return false;
    }
    return std::size(kFields) == header_code::last + 1;
}());

// Kept: "Status" is known with its colon and without.
constexpr bool is_status(std::string_view keyword) { return keyword == "status:" || keyword == "status "; }

}  // namespace

const cmd_table* field_row(std::string_view keyword) {
    if (is_status(keyword)) return kStatus;
    const cmd_table* row = find_row(keyword, kFields);
    if (row->keyword) return row;
    return keyword.ends_with(':') ? kOther : nullptr;
}

}  // namespace vel
