#include "tools/text/readable.h"

#include <optional>
#include <utility>

#include "tools/text/charset.h"
#include "tools/text/encoded_words.h"
#include "tools/text/text_forms.h"

namespace vel::command {
namespace {

constexpr const char* kMark = " (not converted)";

Readable or_as_it_stands(std::optional<std::string> converted, std::string_view bytes) {
    if (!converted) return {std::string(bytes), false};
    return {std::move(*converted), true};
}

}  // namespace

Readable readable(std::string_view text) { return or_as_it_stands(without_encoded_words(text), text); }

Readable readable(std::string_view bytes, std::string_view charset) {
    return or_as_it_stands(to_utf8(bytes, charset), bytes);
}

std::string shown(const Readable& text) { return visible(text.text).append(text.converted ? "" : kMark); }

}  // namespace vel::command
