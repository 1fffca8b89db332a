// Kept: the first marker of the best kind counts, whatever stands before it; the charset is then all between
//       "=?" and that marker, other words included (marker_behind).
// Kept: the kinds are ranked the other way round when only the charset is asked for (first_charset).
#include "codec/encoded_word_reader.h"

#include <algorithm>

namespace vel {
namespace {

constexpr std::string_view kOpening = "=?";
constexpr std::string_view kClosing = "?=";

// In the order in which they are sought.
constexpr std::array<std::string_view, 4> kMarkers{"?Q?", "?q?", "?B?", "?b?"};
constexpr std::size_t kMarkerSize = 3;
constexpr std::size_t kFirstB = 2;

using Places = std::array<std::size_t, kMarkers.size()>;
constexpr std::size_t kNowhere = std::string_view::npos;

// Where each kind stands first when markers are read from left to right and none overlaps another.
Places first_markers(std::string_view text) {
    Places first;
    first.fill(kNowhere);
    for (std::size_t at = text.find('?'); at != kNowhere;) {
        const auto marker = std::find(kMarkers.begin(), kMarkers.end(), text.substr(at, kMarkerSize));
        const bool found = marker != kMarkers.end();
        if (found) {
            std::size_t& place = first[static_cast<std::size_t>(marker - kMarkers.begin())];
            place = std::min(place, at);
        }
        at = text.find('?', at + (found ? kMarkerSize : 1));
    }
    return first;
}

}  // namespace

std::optional<EncodedWordReader::Marker> EncodedWordReader::marker_behind(std::size_t place) {
    for (std::size_t kind = 0; kind < kMarkers.size(); ++kind) {
        if (places_[kind] < place) places_[kind] = text_.find(kMarkers[kind], place);
        if (places_[kind] != kNowhere) return Marker{places_[kind], kind < kFirstB ? WordMethod::q : WordMethod::b};
    }
    return std::nullopt;
}

std::optional<EncodedWord> EncodedWordReader::next() {
    const std::size_t start = text_.find(kOpening, at_);
    if (start == kNowhere) return std::nullopt;
    const std::size_t charset = start + kOpening.size();
    const auto marker = marker_behind(charset);
    if (!marker) return std::nullopt;
    const std::size_t text = marker->place + kMarkerSize;
    const std::size_t closing = text_.find(kClosing, text);
    if (closing == kNowhere) return std::nullopt;
    const std::size_t end = closing + kClosing.size();
    const auto between = [this](std::size_t from, std::size_t to) { return text_.substr(from, to - from); };
    const EncodedWord word{between(at_, start), between(start, end), between(charset, marker->place),
                           between(text, closing), marker->method};
    at_ = end;
    return word;
}

std::optional<std::string_view> first_charset(std::string_view text) {
    const std::size_t start = text.find(kOpening);
    if (start == kNowhere) return std::nullopt;
    text.remove_prefix(start + kOpening.size());
    const Places first = first_markers(text);
    const auto last = std::find_if(first.rbegin(), first.rend(), [](std::size_t place) { return place != kNowhere; });
    if (last == first.rend() || text.find(kClosing, *last + kMarkerSize) == kNowhere) return std::nullopt;
    return text.substr(0, *last);
}

}  // namespace vel
