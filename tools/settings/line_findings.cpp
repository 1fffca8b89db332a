#include "tools/settings/line_findings.h"

#include <algorithm>

#include "tools/settings/ini_lines.h"
#include "tools/text/ascii.h"

namespace vel::command {
namespace {

constexpr std::size_t kMostFindings = 1000;  // a file of garbage has millions
constexpr std::size_t kMostShown = 80;       // bytes of a line

std::string shown(std::string_view text) {
    return std::string(text.substr(0, kMostShown)).append(text.size() > kMostShown ? "..." : "");
}

// "what: content".
std::string of(const char* what, std::string_view content) {
    return std::string(what).append(": ").append(shown(content));
}

bool is_known_section(std::string_view section) {
    const auto rows = all_settings();
    return std::any_of(rows.begin(), rows.end(), [=](const SettingRow& row) { return same(row.section, section); });
}

enum class Place { before_sections, known_section, other_section };

class Examination {
  public:
    Examination() { found_.lines.resize(all_settings().size()); }

    LineFindings run(std::string_view text) {
        IniLines lines(text);
        while (const auto line = lines.next()) look_at(*line);
        return std::move(found_);
    }

  private:
    void look_at(const IniLine& line) {
        switch (line.kind) {
            case IniLine::Kind::nothing: return;
            case IniLine::Kind::stray: return add(line, of("is no section, setting or comment", line.content));
            case IniLine::Kind::section: return look_at_section(line);
            case IniLine::Kind::setting: return look_at_setting(line);
        }
    }

    // What stands in a section that is not known is not looked at, line by line.
    void look_at_section(const IniLine& line) {
        const bool closed = line.content.find(']') != line.content.npos;
        place_ = is_known_section(line.section) ? Place::known_section : Place::other_section;
        if (!closed) add(line, of("has no \"]\", so that nothing below is found", line.content));
        if (closed && place_ == Place::other_section) add(line, of("unknown section", line.content));
    }

    void look_at_setting(const IniLine& line) {
        if (place_ == Place::before_sections) return add(line, of("stands before any section", line.content));
        if (place_ == Place::other_section) return;
        const auto rows = all_settings();
        const auto row = std::find_if(rows.begin(), rows.end(), [&](const SettingRow& candidate) {
            return candidate.key == line.key && same(candidate.section, line.section);
        });
        if (row == rows.end()) return add(line, meaning_of_unknown(line));
        uint64_t& first = found_.lines[static_cast<std::size_t>(row - rows.begin())];
        if (first > 0)
            return add(line, shown(line.key) + " has no effect: line " + std::to_string(first) + " comes first");
        first = line.number;
    }

    // A key of the section in other letters; a key of another section; none.
    static std::string meaning_of_unknown(const IniLine& line) {
        const SettingRow* elsewhere = nullptr;
        for (const SettingRow& row : all_settings()) {
            if (!same(row.key, line.key)) continue;
            if (same(row.section, line.section)) return shown(line.key) + " is not read: the key is " + row.key;
            elsewhere = &row;
        }
        if (!elsewhere) return of("unknown key", line.key);
        return shown(line.key) + " is not read here: it is " + elsewhere->key + " of [" + elsewhere->section + "]";
    }

    void add(const IniLine& line, std::string what) {
        if (found_.kept.size() == kMostFindings) {
            ++found_.left_out;
        } else {
            found_.kept.push_back({line.number, std::move(what)});
        }
    }

    LineFindings found_;
    Place place_ = Place::before_sections;
};

}  // namespace

LineFindings look_at_lines(std::string_view text) { return Examination().run(text); }

}  // namespace vel::command
