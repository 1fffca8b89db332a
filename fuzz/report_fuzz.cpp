// Delivery reports: any lines are read as fields and as text, and as the text of HTML, which comes in pieces of any size.
#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/expect.h"
#include "tools/report/bounce_reader.h"
#include "tools/report/html_lines.h"
#include "tools/report/status_reader.h"

namespace {

using vel::command::BounceReader, vel::command::HtmlLines, vel::command::ReportedRecipients, vel::command::StatusReader;

constexpr std::size_t kLongestPiece = 1024;  // as lines come from a file

void expect_short_texts(const ReportedRecipients& recipients) {
    constexpr std::size_t longest = vel::command::kMostReportText + vel::command::kReportTextCut.size();
    for (const auto& recipient : recipients.kept()) {
        expect(recipient.address.size() <= longest && recipient.reason.size() <= longest);
    }
}

void read(std::string_view text) {
    StatusReader fields(StatusReader::Found::among_fields), fields_in_text(StatusReader::Found::in_text);
    BounceReader told;
    bool begins_line = true, goes_on = true;
    while (!text.empty()) {
        const std::string_view piece = text.substr(0, std::min(text.find('\n'), kLongestPiece - 1) + 1);
        text.remove_prefix(piece.size());
        fields.take(piece, begins_line);
        fields_in_text.take(piece, begins_line);
        if (begins_line && goes_on) goes_on = told.take(piece);
        begins_line = piece.ends_with('\n');
    }
    fields.finish();
    fields_in_text.finish();
    told.finish();
    expect(fields_in_text.recipients().kept().size() <= fields.recipients().kept().size());
    for (const auto* all : {&fields.recipients(), &fields_in_text.recipients(), &told.recipients()}) {
        expect_short_texts(*all);
    }
}

std::string lines_of(std::string_view html, std::size_t first) {
    HtmlLines lines;
    std::string text;
    lines.more(html.substr(0, first), text);
    lines.more(html.substr(first), text);
    lines.finish(text);
    return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    read(input);
    const std::string text = lines_of(input, 0);
    expect(text == lines_of(input, size / 2));
    read(text);
    return 0;
}
