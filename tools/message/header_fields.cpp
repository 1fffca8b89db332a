#include "tools/message/header_fields.h"

#include <array>
#include <nlohmann/json.hpp>
#include <variant>

#include "tools/message/address_list.h"
#include "tools/message/address_text.h"
#include "tools/message/date_reading.h"
#include "tools/message/message_json.h"
#include "tools/text/ascii.h"
#include "tools/text/facts.h"
#include "tools/text/readable.h"
#include "tools/text/text_forms.h"

namespace vel::command {
namespace {

using Place = std::variant<addrlist822 * addr822::*, char * addr822::*, ms * addr822::*, date822 * addr822::*>;

struct Row {
    const char* label;
    const char* key;
    Place place;
};

// What a reader of mail looks for comes first.
constexpr std::array kRows = std::to_array<Row>({
    {"From line", "separator", &addr822::separator},
    {"Date", "date", &addr822::date},
    {"From", "from", &addr822::from},
    {"Sender", "sender", &addr822::sender},
    {"Reply-To", "reply_to", &addr822::reply_to},
    {"To", "to", &addr822::to},
    {"Cc", "cc", &addr822::cc},
    {"Bcc", "bcc", &addr822::bcc},
    {"Subject", "subject", &addr822::subject},
    {"Message-ID", "message_id", &addr822::message_id},
    {"In-Reply-To", "in_reply_to", &addr822::in_reply_to},
    {"References", "references", &addr822::references},
    {"Return-Path", "return_path", &addr822::return_path},
    {"Return-Receipt-To", "return_receipt_to", &addr822::return_receipt_to},
    {"Resent-From", "resent_from", &addr822::resent_from},
    {"Resent-To", "resent_to", &addr822::resent_to},
    {"Resent-Cc", "resent_cc", &addr822::resent_cc},
    {"Resent-Bcc", "resent_bcc", &addr822::resent_bcc},
    {"Resent-Message-ID", "resent_message_id", &addr822::resent_message_id},
    {"MIME-Version", "mime_version", &addr822::mime_version},
    {"Content-Type", "content_type", &addr822::content_type},
    {"Content-Transfer-Encoding", "content_transfer_encoding", &addr822::content_transfer_encoding},
    {"Content-ID", "content_id", &addr822::content_id},
    {"Content-Description", "content_description", &addr822::content_description},
    {"Status", "status", &addr822::status},
    {"Received", "received", &addr822::received},
    {"other", "other", &addr822::other},
});

static_assert(kRows.size() * sizeof(void*) == sizeof(addr822), "every field has its row");

template <class... Cases>
struct Overloaded : Cases... {
    using Cases::operator()...;
};
template <class... Cases>
Overloaded(Cases...) -> Overloaded<Cases...>;

// Calls show(value) with the row's field.
template <class Show>
auto visit_field(const Row& row, const addr822& fields, Show&& show) {
    return std::visit([&](auto place) { return show(fields.*place); }, row.place);
}

// The lines of a folded field are parted by CR LF TAB.
std::string unfolded(std::string_view text) {
    constexpr std::string_view kFold = "\r\n\t";
    std::string result;
    for (std::size_t fold = 0; (fold = text.find(kFold)) != std::string_view::npos;) {
        result.append(text.substr(0, fold)).append(" ");
        text.remove_prefix(fold + kFold.size());
    }
    return result.append(text);
}

const recipient* first_of(const addrlist822* list) { return list && list->recips ? list->recips->first : nullptr; }

std::string date_text(const date822& date, bool readable) {
    if (!date.time) return "not readable";
    std::string text = readable ? normalized(*date.time) : "not readable; the library takes the current time";
    if (!date.has_date) text += " (Resent-Date)";
    return text;
}

// Calls take(text, readable) for each address of a list, each text of a chain, a text or a date.
template <class Take>
void for_each_line(const Row& row, const HeaderBlock& block, Take&& take) {
    const auto take_text = [&](const std::string& line) {
        if (!line.empty()) take(line, readable(line));
    };
    visit_field(row, *block.fields,
                Overloaded{
                    [&](const addrlist822* list) {
                        for (const recipient* r = first_of(list); r; r = r->next) {
                            take(address_text(*r), readable_address(*r));
                        }
                    },
                    [&](const char* text) { take_text(unfolded(text_of(text))); },
                    [&](const ms* chain) {
                        for (; chain; chain = chain->next) take_text(unfolded(text_of(chain->text)));
                    },
                    [&](const date822* date) {
                        if (date) take_text(date_text(*date, !block.unreadable_date));
                    },
                });
}

Json addresses_json(const addrlist822* list) {
    if (!list) return {};
    Json all = Json::array();
    for (const recipient* record = first_of(list); record; record = record->next) {
        all.push_back(address_json(*record));
        all.back()["text"] = json_text(text_of(record->orig));
    }
    return all;
}

Json date_json(const date822* date, bool readable) {
    if (!date) return {};
    Json object{
        {"has_date", date->has_date != 0}, {"has_resent_date", date->has_resent_date != 0}, {"readable", readable}};
    if (date->time && readable) object.update(time_json(*date->time));
    return object;
}

Json chain_json(const ms* chain) {
    Json all = Json::array();
    for (; chain; chain = chain->next) all.push_back(json_text(text_of(chain->text)));
    return all;
}

// The fields in which encoded words may stand (RFC 2047 section 5), and those that the library does not know.
bool is_for_people(const Row& row) {
    return std::holds_alternative<addrlist822 * addr822::*>(row.place) || row.place == Place(&addr822::subject) ||
           row.place == Place(&addr822::content_description) || row.place == Place(&addr822::other);
}

Json decoded_json(const HeaderBlock& block) {
    Json object = Json::object();
    for (const Row& row : kRows) {
        if (!is_for_people(row)) continue;
        Json& lines = object[row.key] = Json::array();
        for_each_line(row, block,
                      [&](std::string_view, const Readable& line) { lines.push_back(readable_json(line)); });
    }
    return object;
}

// The text of each of some lines.
template <class Lines, class Text>
Json lines_json(const Lines& lines, Text text) {
    Json all = Json::array();
    for (const auto& line : lines) all.push_back(json_text(text(line)));
    return all;
}

void add_left_out(Facts& facts, const char* label, const LeftOut& left_out) {
    for (const HeaderLine& line : left_out.kept) facts.add(label, line.text);
    const uint64_t more = left_out.count - left_out.kept.size();
    if (more > 0) facts.add(label, std::to_string(more).append(" more are not shown"));
}

void add_left_out(Json& object, const std::string& key, const LeftOut& left_out) {
    object[key] = lines_json(left_out.kept, [](const HeaderLine& line) { return line.text; });
    object[key + "_count"] = left_out.count;
}

}  // namespace

std::string fields_text(const HeaderBlock& block, Texts texts) {
    Facts facts;
    for (const std::string& line : block.envelope) facts.add("envelope", line);
    for (const Row& row : kRows) {
        for_each_line(row, block, [&](std::string_view text, const Readable& line) {
            facts.add_shown(row.label, texts == Texts::readable ? shown(line) : visible(text));
        });
    }
    add_left_out(facts, "no field", block.no_fields);
    add_left_out(facts, "cut off", block.cut_off);
    add_left_out(facts, "no address", block.no_addresses);
    return facts.text();
}

Json fields_json(const HeaderBlock& block) {
    Json object = Json::object();
    for (const Row& row : kRows) {
        object[row.key] = visit_field(row, *block.fields,
                                      Overloaded{
                                          [](const addrlist822* list) { return addresses_json(list); },
                                          [](const char* text) { return text ? Json(json_text(text)) : Json(); },
                                          [](const ms* chain) { return chain_json(chain); },
                                          [&](const date822* date) { return date_json(date, !block.unreadable_date); },
                                      });
    }
    object["envelope"] = lines_json(block.envelope, [](const std::string& line) { return line; });
    add_left_out(object, "no_fields", block.no_fields);
    add_left_out(object, "cut_off", block.cut_off);
    add_left_out(object, "no_addresses", block.no_addresses);
    object["decoded"] = decoded_json(block);
    return object;
}

}  // namespace vel::command
