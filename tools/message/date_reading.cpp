#include "tools/message/date_reading.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <nlohmann/json.hpp>

#include "tools/text/ascii.h"
#include "tools/text/instant.h"

namespace vel::command {
namespace {

constexpr int32_t kZoneGiven = 1;
constexpr std::size_t kDateTextSize = 64;  // what UTC2rfc asks for

// As makewkday counts.
constexpr std::array<std::string_view, 7> kWeekdays{"Sat", "Sun", "Mon", "Tue", "Wed", "Thu", "Fri"};

struct Freed {
    void operator()(UTCtime* time) const { std::free(time); }
};

constexpr bool is_letter(char c) { return lower(c) >= 'a' && lower(c) <= 'z'; }

std::string_view leading_letters(std::string_view text) {
    return text.substr(0,
                       static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), is_letter) - text.begin()));
}

// Some word of the text is a zone of this offset.
bool names_zone(std::string_view text, int32_t minutes) {
    while (!(text = text.substr(std::min(text.size(), text.find_first_not_of(kBlanks)))).empty()) {
        const std::string word(text.substr(0, text.find_first_of(kBlanks)));
        if (is_letter(word.front()) && GetZoneInt(word.c_str()) == minutes) return true;
        text.remove_prefix(word.size());
    }
    return false;
}

}  // namespace

std::optional<DateReading> read_date(const std::string& text) {
    using Read = int (*)(const char*, UTCtime**);
    constexpr std::array<std::pair<DateLayout, Read>, 2> kLayouts{
        {{DateLayout::rfc822, rfc2UTC}, {DateLayout::ctime, ctime2UTC}}};
    for (const auto& [layout, read] : kLayouts) {
        UTCtime* time = nullptr;
        const bool is_read = read(text.c_str(), &time) == 1;
        const std::unique_ptr<UTCtime, Freed> owner(time);
        if (is_read) return DateReading{layout, *time};
    }
    return std::nullopt;
}

bool is_rfc822_date(const std::string& text) {
    const std::optional<DateReading> date = read_date(text);
    return date && date->layout == DateLayout::rfc822;
}

const char* name_of(DateLayout layout) { return layout == DateLayout::rfc822 ? "RFC 822" : "ctime"; }

std::string normalized(UTCtime time) {
    std::array<char, kDateTextSize> text{};
    UTC2rfc(&time, text.data());
    return text.data();
}

std::string_view weekday_of(const UTCtime& time) { return kWeekdays[static_cast<std::size_t>(makewkday(&time))]; }

std::string_view weekday_in(std::string_view text) {
    const std::string_view word = leading_letters(trimmed(text));
    const auto day =
        std::find_if(kWeekdays.begin(), kWeekdays.end(), [&](std::string_view name) { return begins(word, name); });
    return day == kWeekdays.end() ? std::string_view() : *day;
}

ZoneSource zone_source(const DateReading& date, std::string_view text) {
    if (!(date.time.flags & kZoneGiven)) return ZoneSource::missing;
    if (date.layout == DateLayout::rfc822) return ZoneSource::text;
    return date.time.zone != 0 && names_zone(text, date.time.zone) ? ZoneSource::text : ZoneSource::system;
}

namespace {

std::chrono::sys_seconds utc_of(const UTCtime& time) {
    using namespace std::chrono_literals;
    const std::chrono::year_month_day date{std::chrono::year(time.year),
                                           std::chrono::month(static_cast<unsigned>(time.month)),
                                           std::chrono::day(static_cast<unsigned>(time.day))};
    return std::chrono::sys_days(date) + time.hour * 1h + time.minute * 1min + time.second * 1s - time.zone * 1min;
}

}  // namespace

int64_t seconds_since_1970(const UTCtime& time) { return utc_of(time).time_since_epoch().count(); }

std::string instant_of(const UTCtime& time) { return instant_text(seconds_since_1970(time)); }

Json time_json(const UTCtime& time) {
    return {
        {"normalized", normalized(time)},
        {"year", time.year},
        {"month", time.month},
        {"day", time.day},
        {"hour", time.hour},
        {"minute", time.minute},
        {"second", time.second},
        {"zone", time.flags & kZoneGiven ? Json(time.zone) : Json()},
        {"weekday", weekday_of(time)},
        {"utc", instant_of(time)},
        {"seconds_since_1970", seconds_since_1970(time)},
    };
}

}  // namespace vel::command
