#include "tools/text/charset_names.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>

#include "tools/text/ascii.h"

namespace vel::command {
namespace {

constexpr std::size_t kLongestName = 40;  // longer than any that is known

struct Alias {
    std::string_view squeezed;  // lower case, without "-", "_", "." and blanks, and without "x-" before it
    const char* name;
};

// What mail writes. A national set stands for the larger one that its senders mean.
constexpr std::array kAliases = std::to_array<Alias>({
    {"", kUtf8},
    {"ansix341968", kUtf8},
    {"armscii8", "ARMSCII-8"},
    {"ascii", kUtf8},
    {"big5", "BIG5-HKSCS"},
    {"big5hkscs", "BIG5-HKSCS"},
    {"euccn", "GB18030"},
    {"eucjp", "EUC-JP"},
    {"euckr", "UHC"},
    {"euctw", "EUC-TW"},
    {"gb18030", "GB18030"},
    {"gb2312", "GB18030"},
    {"gb231280", "GB18030"},
    {"gbk", "GB18030"},
    {"georgianps", "GEORGIAN-PS"},
    {"iso2022cn", "ISO-2022-CN"},
    {"iso2022jp", "ISO-2022-JP"},
    {"iso2022jp1", "ISO-2022-JP-2"},
    {"iso2022jp2", "ISO-2022-JP-2"},
    {"iso2022kr", "ISO-2022-KR"},
    {"iso646us", kUtf8},
    {"iso88596i", "ISO-8859-6"},
    {"iso88598e", "ISO-8859-8"},
    {"iso88598i", "ISO-8859-8"},
    {"koi8r", "KOI8-R"},
    {"koi8ru", "KOI8-RU"},
    {"koi8u", "KOI8-U"},
    {"ksc5601", "UHC"},
    {"ksc56011987", "UHC"},
    {"ksc56011989", "UHC"},
    {"latin1", "ISO-8859-1"},
    {"latin2", "ISO-8859-2"},
    {"latin9", "ISO-8859-15"},
    {"mac", "MACINTOSH"},
    {"maccentraleurope", "MAC-CENTRALEUROPE"},
    {"maccyrillic", "MAC-CYRILLIC"},
    {"macintosh", "MACINTOSH"},
    {"macroman", "MACINTOSH"},
    {"ms932", "CP932"},
    {"ms936", "GB18030"},
    {"ms949", "UHC"},
    {"shiftjis", "CP932"},
    {"sjis", "CP932"},
    {"tcvn", "TCVN"},
    {"tis620", "CP874"},
    {"ucs2", "UTF-16"},
    {"uhc", "UHC"},
    {"unicode", "UTF-16"},
    {"unicode11utf7", "UTF-7"},
    {"unicode11utf8", kUtf8},
    {"unknown", kUtf8},
    {"unknown8bit", kUtf8},
    {"us", kUtf8},
    {"usascii", kUtf8},
    {"utf16", "UTF-16"},
    {"utf16be", "UTF-16BE"},
    {"utf16le", "UTF-16LE"},
    {"utf32", "UTF-32"},
    {"utf7", "UTF-7"},
    {"utf8", kUtf8},
    {"viscii", "VISCII"},
    {"windows31j", "CP932"},
});

static_assert(std::is_sorted(kAliases.begin(), kAliases.end(),
                             [](const Alias& a, const Alias& b) { return a.squeezed < b.squeezed; }),
              "the search is by halves");

// "ISO-8859-15" and "windows-1252" by their numbers.
constexpr std::array kLatinSets{"ISO-8859-1",  "ISO-8859-2",  "ISO-8859-3",  "ISO-8859-4",  "ISO-8859-5",
                                "ISO-8859-6",  "ISO-8859-7",  "ISO-8859-8",  "ISO-8859-9",  "ISO-8859-10",
                                "ISO-8859-11", "ISO-8859-13", "ISO-8859-14", "ISO-8859-15", "ISO-8859-16"};
constexpr std::array kCodePages{"CP437",  "CP737",  "CP775",  "CP850",  "CP852",  "CP855",  "CP857",  "CP860",
                                "CP861",  "CP862",  "CP863",  "CP864",  "CP865",  "CP866",  "CP869",  "CP874",
                                "CP932",  "CP936",  "CP949",  "CP950",  "CP1250", "CP1251", "CP1252", "CP1253",
                                "CP1254", "CP1255", "CP1256", "CP1257", "CP1258"};
constexpr std::array<std::string_view, 5> kCodePagePrefixes{"windows", "win", "cp", "ibm", "dos"};

// Nothing for what is too long to be a name.
std::optional<std::string> squeezed(std::string_view name) {
    constexpr std::string_view kDropped = "-_. ";
    name = trimmed(name.substr(0, name.find(':')));  // "ISO_8859-1:1987"
    if (begins(name, "x-")) name.remove_prefix(2);
    if (name.size() > kLongestName) return std::nullopt;
    std::string result = lower(name);
    std::erase_if(result, [&](char c) { return kDropped.find(c) != std::string_view::npos; });
    return result;
}

std::optional<std::string_view> behind(std::string_view prefix, std::string_view name) {
    return name.starts_with(prefix) ? std::optional(name.substr(prefix.size())) : std::nullopt;
}

template <class Names>
const char* with_number(const Names& names, std::string_view prefix, std::string_view number) {
    const std::string wanted = std::string(prefix).append(number);
    const auto found = std::find(names.begin(), names.end(), wanted);
    return found == names.end() ? nullptr : *found;
}

}  // namespace

const char* known_charset(std::string_view name) {
    const std::optional<std::string> key = squeezed(name);
    if (!key) return nullptr;
    const auto alias = std::lower_bound(kAliases.begin(), kAliases.end(), *key,
                                        [](const Alias& a, const std::string& b) { return a.squeezed < b; });
    if (alias != kAliases.end() && alias->squeezed == *key) return alias->name;
    if (const auto number = behind("iso8859", *key)) return with_number(kLatinSets, "ISO-8859-", *number);
    for (const std::string_view prefix : kCodePagePrefixes) {
        if (const auto number = behind(prefix, *key)) return with_number(kCodePages, "CP", *number);
    }
    return nullptr;
}

}  // namespace vel::command
