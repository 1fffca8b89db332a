// vel address: what the library makes of address lists.
#include <nlohmann/json.hpp>

#include "tools/message/address_list.h"
#include "tools/message/message_json.h"
#include "tools/text/ascii.h"
#include "tools/text/facts.h"
#include "tools/text/text_forms.h"
#include "tools/verbs/command_line.h"
#include "tools/verbs/texts.h"

namespace vel::command {
namespace {

const std::string kFooter =
    std::string(
        "Example:\n"
        "  vel address 'Ann Lee <ann@example.com> (office), Team: bob@example.com, eve@example.com;'\n"
        "\n"
        "A TEXT is an address list, such as the value of a To field (RFC 822 section 6). \"-\" stands for the lines\n"
        "of standard input, a text a line. Of each address: its kind (mailbox, group, source route), the canonical\n"
        "form, phrase, comment, local part and domain; a group has the local part and the domain of its last\n"
        "member. A stretch that is no address is left out by the library, up to the next comma: it is shown with\n"
        "the reason and its byte range. The exit code is 65 when something was left out or no address was found.\n"
        "\n"
        "The JSON object, one a text: text, items, count (of addresses). An item: kind, canonical, phrase, comment,\n"
        "local, domain, text (as it stands), start, end (offset behind the last byte), left_out (why; null for an\n"
        "address).\n"
        "\n") +
    kAboutJsonTexts;

// Of one text.
struct Counts {
    uint64_t addresses = 0;
    uint64_t left_out = 0;

    Exit exit() const { return left_out == 0 && addresses > 0 ? Exit::success : Exit::bad_data; }
};

using Stretch = AddressListReader::Stretch;

std::string range_text(const Stretch& stretch) {
    return std::to_string(stretch.start) + "-" + std::to_string(stretch.start + stretch.text.size());
}

void print(const Stretch& stretch, const recipient& record, bool first, Output& output) {
    Facts facts;
    if (stretch.left_out) {
        facts.add("left out", stretch.text);
        facts.add_shown("because", stretch.left_out + (" (bytes " + range_text(stretch) + ")"));
    } else {
        facts.add(kind_of(record), text_of(record.canon));
        facts.add("phrase", text_of(record.phrase));
        facts.add("comment", text_of(record.comment));
        facts.add("local part", text_of(record.local));
        facts.add("domain", text_of(record.domain));
    }
    output.write(std::string(first ? "" : "\n").append(facts.text()));
}

Json item_json(const Stretch& stretch, const recipient& record) {
    Json item = stretch.left_out ? Json::object() : address_json(record);
    item["text"] = json_text(stretch.text);
    item["start"] = stretch.start;
    item["end"] = stretch.start + stretch.text.size();
    item["left_out"] = stretch.left_out ? Json(stretch.left_out) : Json();
    return item;
}

template <class OnStretch>
Counts for_each_stretch(std::string_view text, OnStretch&& on_stretch) {
    Counts counts;
    AddressListReader reader(text);
    Recipient record;
    while (const auto stretch = reader.next(record.get())) {
        on_stretch(*stretch, record.get());
        ++(stretch->left_out ? counts.left_out : counts.addresses);
    }
    return counts;
}

// A list may have millions of addresses: they are written one at a time, before the last brace.
Counts write_json(std::string_view text, Output& output) {
    std::string before = one_line(Json::object({{"text", json_text(text)}}));
    before.back() = ',';
    before += "\"items\":[";
    const Counts counts = for_each_stretch(text, [&](const Stretch& stretch, const recipient& record) {
        output.write(std::exchange(before, ",") + one_line(item_json(stretch, record)));
    });
    if (before != ",") output.write(before);
    output.write("],\"count\":" + std::to_string(counts.addresses) + "}\n");
    return counts;
}

}  // namespace

Exit run_address(Arguments arguments, Session& main) {
    CommandLine line("address", "Shows what the library makes of address lists.", kFooter);
    line.add_texts();
    line.add_json();
    if (const auto exit = line.read(std::move(arguments), main)) return *exit;
    bool first = true;
    return for_each_text(line.texts, [&](std::string_view text) {
        if (line.json) return write_json(text, main.output).exit();
        const Counts counts = for_each_stretch(text, [&](const Stretch& stretch, const recipient& record) {
            print(stretch, record, std::exchange(first, false), main.output);
        });
        if (counts.addresses == 0) main.output.complain({}, "no address in " + excerpt(text));
        return counts.exit();
    });
}

}  // namespace vel::command
