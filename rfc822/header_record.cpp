#include "rfc822/header_record.h"

#include <time.h>

#include <array>

namespace vel {
namespace {

// Where a code's value goes; null for a code that has another kind of place.
template <class T>
using Places = std::array<T addr822::*, header_code::last + 1>;

constexpr Places<addrlist822*> kAddressLists = [] {
    Places<addrlist822*> places{};
    places[header_code::to] = &addr822::to;
    places[header_code::resent_to] = &addr822::resent_to;
    places[header_code::cc] = &addr822::cc;
    places[header_code::resent_cc] = &addr822::resent_cc;
    places[header_code::bcc] = &addr822::bcc;
    places[header_code::resent_bcc] = &addr822::resent_bcc;
    places[header_code::from] = &addr822::from;
    places[header_code::resent_from] = &addr822::resent_from;
    places[header_code::reply_to] = &addr822::reply_to;
    places[header_code::return_receipt_to] = &addr822::return_receipt_to;
    return places;
}();

constexpr Places<char*> kTexts = [] {
    Places<char*> places{};
    places[header_code::subject] = &addr822::subject;
    places[header_code::sender] = &addr822::sender;
    places[header_code::message_id] = &addr822::message_id;
    places[header_code::resent_message_id] = &addr822::resent_message_id;
    places[header_code::in_reply_to] = &addr822::in_reply_to;
    places[header_code::references] = &addr822::references;
    places[header_code::return_path] = &addr822::return_path;
    places[header_code::status] = &addr822::status;
    places[header_code::separator] = &addr822::separator;
    places[header_code::mime_version] = &addr822::mime_version;
    places[header_code::content_type] = &addr822::content_type;
    places[header_code::content_transfer_encoding] = &addr822::content_transfer_encoding;
    places[header_code::content_id] = &addr822::content_id;
    places[header_code::content_description] = &addr822::content_description;
    return places;
}();

ChainTail& tail_of(std::optional<ChainTail>& tail, ms*& chain) {
    if (!tail) tail.emplace(chain);
    return *tail;
}

// The current time, as its ctime text reads; null when it has none or its year is not known to dates.
UTCtime* current_time() {
    const time_t now = ::time(nullptr);
    char text[26];
    UTCtime* time = nullptr;
    if (::ctime_r(&now, text)) ctime2UTC(text, &time);
    return time;
}

}  // namespace

void HeaderRecord::store(int32_t code, COwned<char> value) {
    const auto place = static_cast<std::size_t>(code);
    if (kAddressLists[place]) {
        add_addresses(record_.*kAddressLists[place], value.get());
    } else if (kTexts[place]) {
        char*& text = record_.*kTexts[place];
        if (!text) text = value.release();
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
    for (const auto list : vel::kAddressLists) {
        if (list) _free_a_l(header->*list);
    }
    for (const auto text : vel::kTexts) {
        if (text) std::free(header->*text);
    }
    freeStringChain(header->received);
    freeStringChain(header->other);
    if (header->date) std::free(header->date->time);
    std::free(header->date);
    std::free(header);
}

}  // extern "C"
