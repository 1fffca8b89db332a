#include "rfc822/header_record.h"

#include <time.h>

#include "rfc822/date.h"

namespace vel {
namespace {

static_assert(sizeof(addr822) == 27 * sizeof(void*));

// Where the values of a code gather; null for a code that has another kind of place.
addrlist822** address_list(addr822& record, int32_t code) {
    switch (code) {
        case header_code::to: return &record.to;
        case header_code::resent_to: return &record.resent_to;
        case header_code::cc: return &record.cc;
        case header_code::resent_cc: return &record.resent_cc;
        case header_code::bcc: return &record.bcc;
        case header_code::resent_bcc: return &record.resent_bcc;
        case header_code::from: return &record.from;
        case header_code::resent_from: return &record.resent_from;
        case header_code::reply_to: return &record.reply_to;
        case header_code::return_receipt_to: return &record.return_receipt_to;
        default: return nullptr;
    }
}

// The same for a code whose first value is kept as a text.
char** text_place(addr822& record, int32_t code) {
    switch (code) {
        case header_code::subject: return &record.subject;
        case header_code::sender: return &record.sender;
        case header_code::message_id: return &record.message_id;
        case header_code::resent_message_id: return &record.resent_message_id;
        case header_code::in_reply_to: return &record.in_reply_to;
        case header_code::references: return &record.references;
        case header_code::return_path: return &record.return_path;
        case header_code::status: return &record.status;
        case header_code::separator: return &record.separator;
        case header_code::mime_version: return &record.mime_version;
        case header_code::content_type: return &record.content_type;
        case header_code::content_transfer_encoding: return &record.content_transfer_encoding;
        case header_code::content_id: return &record.content_id;
        case header_code::content_description: return &record.content_description;
        default: return nullptr;
    }
}

ChainTail& tail_of(std::optional<ChainTail>& tail, ms*& chain) {
    if (!tail) tail.emplace(chain);
    return *tail;
}

// The current time, as its ctime text reads; null when it has none or its year is not known to dates.
UTCtime* current_time() {
    struct tm local;
    char text[kCtimeTextSize];
    UTCtime* time = nullptr;
    if (local_time(::time(nullptr), local) && ::asctime_r(&local, text)) ctime2UTC(text, &time);
    return time;
}

}  // namespace

void HeaderRecord::store(int32_t code, COwned<char> value) {
    if (addrlist822** list = address_list(record_, code)) {
        add_addresses(*list, value.get());
    } else if (char** text = text_place(record_, code)) {
        if (!*text) *text = value.release();
    } else if (code == header_code::date || code == header_code::resent_date) {
        keep_date(code, value.get());
    } else if (code == header_code::received) {
        tail_of(received_, record_.received).append(std::move(value));
    } else {
        tail_of(other_, record_.other).append(std::move(value));
    }
}

// The address parser writes into the text.
void HeaderRecord::add_addresses(addrlist822*& list, char* text) {
    if (!list) list = make_zeroed<addrlist822>().release();
    AddParse(text, &list->recips);
    if (!list->recips) throw std::bad_alloc();
}

void HeaderRecord::keep_date(int32_t code, const char* text) {
    const bool first = !record_.date;
    if (first) record_.date = make_zeroed<date822>().release();
    (code == header_code::date ? record_.date->has_date : record_.date->has_resent_date) = 1;
    if (first && !rfc2UTC(text, &record_.date->time)) record_.date->time = current_time();
}

}  // namespace vel

void _free_a_l(addrlist822* list) {
    while (list) {
        addrlist822* next = list->next;
        if (list->recips) Clear_RT(list->recips);
        std::free(list->recips);
        std::free(list->text);
        std::free(list);
        list = next;
    }
}

extern "C" {

addr822* New822Header(void) { return static_cast<addr822*>(std::calloc(1, sizeof(addr822))); }

void Free822Header(addr822* header) {
    if (!header) return;
    for (int32_t code = 1; code <= vel::header_code::last; ++code) {
        if (addrlist822** list = vel::address_list(*header, code)) _free_a_l(*list);
        if (char** text = vel::text_place(*header, code)) std::free(*text);
    }
    freeStringChain(header->received);
    freeStringChain(header->other);
    if (header->date) std::free(header->date->time);
    std::free(header->date);
    std::free(header);
}

}  // extern "C"
