#include "tools/message/chief_fields.h"

#include <array>
#include <vector>

#include "tools/message/address_list.h"
#include "tools/message/address_text.h"
#include "tools/message/header_texts.h"
#include "tools/text/facts.h"
#include "tools/text/readable.h"

namespace vel::command {
namespace {

constexpr std::string_view kWordOpening = "=?";

// An address without encoded words needs no parser to be read.
void add_addresses(Facts& facts, std::string_view label, const std::string& list) {
    AddressListReader reader(list);
    Recipient record;
    while (const auto stretch = reader.next(record.get())) {
        const bool has_words = !stretch->left_out && stretch->text.find(kWordOpening) != std::string_view::npos;
        facts.add_shown(label, shown(has_words ? readable_address(record.get()) : readable(stretch->text)));
    }
}

}  // namespace

std::string chief_fields(const std::string& path, Range block) {
    LineReader lines(path);
    const std::vector<HeaderText> fields = header_texts(lines, block, {"From", "To", "Cc", "Date", "Subject"});
    Facts facts;
    for (const std::string_view name : {"From", "To", "Cc"}) {
        for (const HeaderText& field : fields) {
            if (field.name == name) add_addresses(facts, field.name, field.text);
        }
    }
    for (const std::string_view name : {"Date", "Subject"}) {
        for (const HeaderText& field : fields) {
            if (field.name == name && !field.text.empty()) facts.add_shown(field.name, shown(readable(field.text)));
        }
    }
    return facts.text();
}

}  // namespace vel::command
