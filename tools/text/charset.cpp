#include "tools/text/charset.h"

#include <array>
#include <cerrno>
#include <unordered_map>
#include <utility>

#include "tools/text/charset_names.h"
#include "tools/text/utf8.h"

namespace vel::command {
namespace {

constexpr std::size_t kRoom = 4096;  // for what one call of the converter makes

// Loading a converter takes much longer than converting a word, so each stays open; a list bounds their number.
Utf8Converter& converter_of(const char* charset) {
    thread_local std::unordered_map<std::string_view, Utf8Converter> converters;
    return converters.try_emplace(charset, charset).first->second;
}

}  // namespace

std::optional<std::string> to_utf8(std::string_view bytes, std::string_view charset) {
    const char* const name = known_charset(charset);
    if (!name) return std::nullopt;
    if (name == kUtf8) return is_utf8(bytes) ? std::optional<std::string>(bytes) : std::nullopt;
    Utf8Converter& converter = converter_of(name);
    std::string text;
    const bool whole = converter.converter_ && converter.convert(bytes, text) == Utf8Converter::Stop::end;
    converter.end_text(text);
    return whole && is_utf8(text) ? std::optional(std::move(text)) : std::nullopt;
}

Utf8Converter::Utf8Converter(std::string_view charset) {
    const char* const name = known_charset(charset);
    if (!name || name == kUtf8) return;
    const iconv_t converter = ::iconv_open(kUtf8, name);
    if (converter != reinterpret_cast<iconv_t>(-1)) converter_.reset(converter);
}

// Takes away what has been converted.
Utf8Converter::Stop Utf8Converter::convert(std::string_view& bytes, std::string& converted) {
    std::array<char, kRoom> room;
    for (;;) {
        char* from = const_cast<char*>(bytes.data());  // which iconv only reads
        std::size_t left = bytes.size();
        char* to = room.data();
        std::size_t free = room.size();
        const std::size_t result = ::iconv(converter_.get(), &from, &left, &to, &free);
        const int error = result == static_cast<std::size_t>(-1) ? errno : 0;
        bytes.remove_prefix(bytes.size() - left);
        converted.append(room.data(), room.size() - free);
        if (error == 0) return Stop::end;
        if (error != E2BIG) return error == EINVAL ? Stop::within : Stop::before_other;
    }
}

// Some converters hold the last character back; the next text begins in the first state.
void Utf8Converter::end_text(std::string& converted) {
    std::array<char, kRoom> room;
    char* to = room.data();
    std::size_t free = room.size();
    if (converter_) ::iconv(converter_.get(), nullptr, nullptr, &to, &free);
    converted.append(room.data(), room.size() - free);
}

void Utf8Converter::more(std::string_view bytes, std::string& converted) {
    if (!converter_) {
        converted += bytes;
        return;
    }
    const std::string joined = begun_.empty() ? std::string() : std::exchange(begun_, {}).append(bytes);
    std::string_view left = joined.empty() ? bytes : joined;
    Stop stop = Stop::end;
    while ((stop = convert(left, converted)) == Stop::before_other) {
        converted += left.front();
        left.remove_prefix(1);
    }
    if (stop == Stop::within) begun_ = left;
}

void Utf8Converter::finish(std::string& converted) {
    end_text(converted);
    converted += begun_;
    begun_.clear();
}

}  // namespace vel::command
