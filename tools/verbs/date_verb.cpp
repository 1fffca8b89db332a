// vel date: what the library makes of dates.
#include <array>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "tools/message/date_reading.h"
#include "tools/message/message_json.h"
#include "tools/text/facts.h"
#include "tools/text/text_forms.h"
#include "tools/verbs/command_line.h"
#include "tools/verbs/texts.h"

namespace vel::command {
namespace {

const std::string kFooter =
    std::string(
        "Example:\n"
        "  vel date 'Mon, 1 Feb 1999 10:20:30 EST' 'Mon Feb  1 10:20:30 1999'\n"
        "\n"
        "A TEXT is read as a date of RFC 822 (section 5.1), then in the layout of ctime. \"-\" stands for the lines\n"
        "of standard input, a text a line. Shown are the layout that fits, the text as the library writes it, the\n"
        "zone, the weekday (computed; the text's own is not compared by the library, but is here) and the instant.\n"
        "What stands behind a date is not looked at. A date of RFC 822 without a zone counts as UTC; one of ctime\n"
        "without a zone, or with UTC's, as the system's standard time ([Gateway] TimeZone). The exit code is 65 when\n"
        "a text is no date.\n"
        "\n"
        "The JSON object, one a text: text, layout (\"RFC 822\", \"ctime\"; null: no date, and nothing follows),\n"
        "normalized, year, month, day, hour, minute, second, zone (minutes east of UTC; null: none), weekday, utc,\n"
        "seconds_since_1970, zone_source (\"text\", \"system\" or null), weekday_in_text (null: none).\n"
        "\n") +
    kAboutJsonTexts;

// Of ZoneSource, for programs.
Json source_json(ZoneSource source) {
    if (source == ZoneSource::missing) return {};
    return source == ZoneSource::text ? "text" : "system";
}

void write_json(const std::string& text, const std::optional<DateReading>& date, Output& output) {
    Json object{{"text", json_text(text)}, {"layout", date ? Json(name_of(date->layout)) : Json()}};
    if (date) {
        object.update(time_json(date->time));
        object["zone_source"] = source_json(zone_source(*date, text));
        const std::string_view weekday = weekday_in(text);
        object["weekday_in_text"] = weekday.empty() ? Json() : Json(weekday);
    }
    output.write(one_line(object).append("\n"));
}

std::string zone_text(const DateReading& date, std::string_view text) {
    const std::string minutes = std::to_string(std::abs(date.time.zone))
                                    .append(date.time.zone < 0 ? " minutes west" : " minutes east")
                                    .append(" of UTC");
    switch (zone_source(date, text)) {
        case ZoneSource::missing: return "not given, counts as UTC";
        case ZoneSource::system: return minutes + ", the system's standard time";
        case ZoneSource::text: break;
    }
    return minutes;
}

std::string weekday_text(const DateReading& date, std::string_view text) {
    const std::string_view computed = weekday_of(date.time);
    const std::string_view given = weekday_in(text);
    std::string result(computed);
    if (given.empty()) return result += ", not in the text";
    if (given != computed) result.append(", but the text says ").append(given);
    return result;
}

void print(const std::string& text, const DateReading& date, Output& output) {
    Facts facts;
    facts.add("text", text);
    facts.add("layout", name_of(date.layout));
    facts.add("normalized", normalized(date.time));
    facts.add("zone", zone_text(date, text));
    facts.add("weekday", weekday_text(date, text));
    facts.add("instant",
              instant_of(date.time) + ", " + std::to_string(seconds_since_1970(date.time)) + " s since 1970");
    output.write(facts.text());
}

}  // namespace

Exit run_date(Arguments arguments, Session& main) {
    CommandLine line("date", "Shows what the library makes of dates.", kFooter);
    line.add_texts();
    line.add_json();
    if (const auto exit = line.read(std::move(arguments), main)) return *exit;
    bool first = true;
    return for_each_text(line.texts, [&](std::string_view given) {
        const std::string text(given);
        const std::optional<DateReading> date = read_date(text);
        if (line.json) {
            write_json(text, date, main.output);
        } else if (date) {
            if (!std::exchange(first, false)) main.output.write("\n");
            print(text, *date, main.output);
        } else {
            main.output.complain({}, "no date: " + excerpt(text));
        }
        return date ? Exit::success : Exit::bad_data;
    });
}

}  // namespace vel::command
