#include "tools/io/complaints.h"

#include <algorithm>
#include <array>

#include "tools/text/ascii.h"

namespace vel::command {
namespace {

struct Meaning {
    std::string_view complaint;  // a part of the line
    std::string_view meaning;
};

// The first row that fits counts: reasons stand before fields.
constexpr std::array kMeanings = std::to_array<Meaning>({
    {"Invalid comment or continuation", "has something behind its value that does not belong there"},
    {"Defaulting to", "is no type and subtype, so application/octet-stream is taken"},
    {"Misplaced slash", "has no type before its slash"},
    {"Missing subtype", "has a type without a subtype"},
    {"Missing parm separator", "has parameters with no \";\" between them"},
    {"Premature end of file", "has a quoted parameter that the end of the file cuts off"},
    {"Missing quote in", "has a quoted parameter that does not end"},
    {"Invalid parm in", "has a parameter that is not of the form name=value"},
    {"\"mime-version:\" field invalid", "holds no version number"},
    {"\"content-id:\" field invalid", "is no identifier of the form <local@domain>"},
    {"\"content-description:\" field invalid", "is cut off by the end of the file"},
    {"\"content-type:\" field invalid", "holds no type"},
    {"\"content-disposition:\" field invalid", "holds no disposition"},
    {"\"content-transfer-encoding:\" field invalid", "names no encoding"},
    {"too many headers to parse", "the header block ends here: a field is folded over too many lines"},
    {"getline failed", "the file cannot be read to its end"},
});

}  // namespace

bool is_complaint(const LogLine& line) { return line.level == kErrorLevel || is_about_field(line); }

const LogLine* complaint_among(const std::vector<LogLine>& lines) {
    const auto found = std::find_if(lines.begin(), lines.end(), is_complaint);
    return found == lines.end() ? nullptr : &*found;
}

std::string_view meaning_of(std::string_view complaint) {
    const auto row = std::find_if(kMeanings.begin(), kMeanings.end(), [&](const Meaning& candidate) {
        return complaint.find(candidate.complaint) != std::string_view::npos;
    });
    return row == kMeanings.end() ? "is not accepted" : row->meaning;
}

std::string_view meaning_of(const TroubledField& field) {
    switch (field.trouble) {
        case Trouble::no_boundary: return "announces a multipart without a boundary";
        case Trouble::no_first_delimiter: return "announces a multipart whose first delimiter line never comes";
        case Trouble::refused:
        case Trouble::corrected: break;
    }
    const LogLine* complaint = complaint_among(field.said);
    return complaint ? meaning_of(complaint->text) : "is not accepted";
}

}  // namespace vel::command
