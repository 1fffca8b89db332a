#include "tools/compose/file_type.h"

#include <algorithm>
#include <array>
#include <optional>

#include "tools/compose/field_name.h"
#include "tools/compose/line_pieces.h"
#include "tools/text/ascii.h"

namespace vel::command {
namespace {

struct Extension {
    std::string_view extension;
    FileType type;
};

constexpr std::array kExtensions = std::to_array<Extension>({
    {"bmp", {"image", "bmp"}},
    {"css", {"text", "css"}},
    {"csv", {"text", "csv"}},
    {"doc", {"application", "msword"}},
    {"docx", {"application", "vnd.openxmlformats-officedocument.wordprocessingml.document"}},
    {"eml", kMessageType},
    {"gif", {"image", "gif"}},
    {"gz", {"application", "gzip"}},
    {"htm", {"text", "html"}},
    {"html", {"text", "html"}},
    {"ics", {"text", "calendar"}},
    {"jpeg", {"image", "jpeg"}},
    {"jpg", {"image", "jpeg"}},
    {"json", {"application", "json"}},
    {"log", kPlainText},
    {"mov", {"video", "quicktime"}},
    {"mp3", {"audio", "mpeg"}},
    {"mp4", {"video", "mp4"}},
    {"odp", {"application", "vnd.oasis.opendocument.presentation"}},
    {"ods", {"application", "vnd.oasis.opendocument.spreadsheet"}},
    {"odt", {"application", "vnd.oasis.opendocument.text"}},
    {"pdf", {"application", "pdf"}},
    {"png", {"image", "png"}},
    {"ppt", {"application", "vnd.ms-powerpoint"}},
    {"pptx", {"application", "vnd.openxmlformats-officedocument.presentationml.presentation"}},
    {"ps", {"application", "postscript"}},
    {"rtf", {"application", "rtf"}},
    {"svg", {"image", "svg+xml"}},
    {"tif", {"image", "tiff"}},
    {"tiff", {"image", "tiff"}},
    {"txt", kPlainText},
    {"vcf", {"text", "vcard"}},
    {"wav", {"audio", "wav"}},
    {"webp", {"image", "webp"}},
    {"xls", {"application", "vnd.ms-excel"}},
    {"xlsx", {"application", "vnd.openxmlformats-officedocument.spreadsheetml.sheet"}},
    {"xml", {"application", "xml"}},
    {"zip", {"application", "zip"}},
});

static_assert(std::is_sorted(kExtensions.begin(), kExtensions.end(),
                             [](const Extension& a, const Extension& b) { return a.extension < b.extension; }),
              "the search is by halves");

struct Beginning {
    std::string_view bytes;
    FileType type;
};

constexpr std::array kBeginnings = std::to_array<Beginning>({
    {"%PDF-", {"application", "pdf"}},
    {"\x89PNG\r\n\x1A\n", {"image", "png"}},
    {"\xFF\xD8\xFF", {"image", "jpeg"}},
    {"GIF8", {"image", "gif"}},
    {"PK\x03\x04", {"application", "zip"}},
    {"\x1F\x8B", {"application", "gzip"}},
});

constexpr std::size_t kLongestBeginning = 8;

std::optional<FileType> type_by_name(std::string_view name) {
    const std::size_t dot = name.rfind('.');
    if (dot == name.npos) return std::nullopt;
    const std::string extension = lower(name.substr(dot + 1));
    const auto row = std::lower_bound(kExtensions.begin(), kExtensions.end(), extension,
                                      [](const Extension& a, const std::string& b) { return a.extension < b; });
    if (row == kExtensions.end() || row->extension != extension) return std::nullopt;
    return row->type;
}

FileType type_by_beginning(const std::string& path) {
    std::array<char, kLongestBeginning> start{};
    const ssize_t got = read_block(open_for_reading(path).get(), start.data(), start.size());
    const std::string_view bytes(start.data(), got > 0 ? static_cast<std::size_t>(got) : 0);
    const auto row = std::find_if(kBeginnings.begin(), kBeginnings.end(),
                                  [&](const Beginning& beginning) { return bytes.starts_with(beginning.bytes); });
    return row == kBeginnings.end() ? kBinaryType : row->type;
}

// Nothing but fields, among them that of a sender, and that of a date or an identifier (RFC 5322 section 3.6).
bool begins_as_message(const std::string& path) {
    bool fields_only = true, has_sender = false, has_origin = false;
    for_each_piece(path, [&](const LinePiece& piece) {
        const std::string_view line = piece.without_cr();
        if (line.empty() && piece.ends) return false;
        if (!piece.begins || line.starts_with(' ') || line.starts_with('\t')) return true;
        fields_only = !field_name(line).empty();
        has_sender = has_sender || same(field_name(line), "From");
        has_origin = has_origin || same(field_name(line), "Date") || same(field_name(line), "Message-ID");
        return fields_only;
    });
    return fields_only && has_sender && has_origin;
}

}  // namespace

FileType type_of_file(const std::string& path, std::string_view name, const ContentFacts& facts) {
    const std::optional<FileType> by_name = type_by_name(name);
    const bool may_be_message = !by_name || by_name->type == kMessageType.type;
    if (may_be_message && facts.is_text && begins_as_message(path)) return kMessageType;
    if (!by_name) return facts.is_text ? kPlainText : type_by_beginning(path);
    const bool contradicts = may_be_message || (by_name->type == "text" && !facts.is_text);
    return contradicts ? kBinaryType : *by_name;
}

}  // namespace vel::command
