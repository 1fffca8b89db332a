#include "tools/types/types_file.h"

#include <map>
#include <optional>

#include "tools/text/ascii.h"

namespace vel::command {
namespace {

constexpr std::size_t kMostFaults = 20;

// Takes one field and the comma behind it off a line; nothing when its quotes do not fit.
std::optional<std::string> take_field(std::string_view& line) {
    std::string field;
    std::size_t at = 0;
    if (line.starts_with('"')) {
        for (at = 1; at < line.size(); ++at) {
            if (line[at] == '"' && line.substr(at + 1, 1) != "\"") break;
            if (line[at] == '"') ++at;
            field += line[at];
        }
        if (at >= line.size()) return std::nullopt;
        ++at;
    } else {
        at = std::min(line.find(','), line.size());
        field = line.substr(0, at);
    }
    line.remove_prefix(at);
    return line.empty() || line.front() == ',' ? std::optional(field) : std::nullopt;
}

// Nothing when they are not as many as a row has.
std::optional<TypeRow> row_in(std::string_view line) {
    TypeRow row;
    for (const TypeField& field : kTypeFields) {
        const auto text = take_field(line);
        if (!text) return std::nullopt;
        row.*field.text = *text;
        const bool is_last = &field == &kTypeFields.back();
        if (line.empty() != is_last) return std::nullopt;
        if (!is_last) line.remove_prefix(1);
    }
    return row;
}

std::string_view take_line(std::string_view& text) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.ends_with('\r')) line.remove_suffix(1);
    return line;
}

std::string quoted(const std::string& text) {
    if (text.find_first_of(",\"") == std::string::npos) return text;
    std::string result = "\"";
    for (const char c : text) result.append(c == '"' ? 2 : 1, c);
    return result += '"';
}

class Reader {
  public:
    TypesFile read(std::string_view text) {
        if (std::string(take_line(text)).append("\n") != types_heading()) complain("the heading is not the one wanted");
        while (!text.empty()) {
            ++number_;
            const std::string_view line = take_line(text);
            if (!line.empty()) take(line);
        }
        return std::move(file_);
    }

  private:
    void take(std::string_view line) {
        const auto row = row_in(line);
        if (!row) return complain("there are not seven fields");
        const std::string fault = fault_of(*row);
        if (!fault.empty()) return complain(fault);
        const auto [before, is_new] = lines_.try_emplace(lower(row->extension), number_);
        if (!is_new) return complain("the extension stands in line " + std::to_string(before->second) + " too");
        file_.rows.push_back(*row);
    }

    void complain(const std::string& fault) {
        if (file_.faults.size() < kMostFaults) file_.faults.push_back(std::to_string(number_) + ": " + fault);
    }

    std::size_t number_ = 1;
    std::map<std::string, std::size_t> lines_;  // by extension
    TypesFile file_;
};

}  // namespace

TypesFile read_types(std::string_view text) { return Reader().read(text); }

std::string types_heading() {
    std::string line;
    for (const TypeField& field : kTypeFields) line.append(line.empty() ? "" : ",").append(field.name);
    return line += '\n';
}

std::string types_line(const TypeRow& row) {
    std::string line;
    for (const TypeField& field : kTypeFields) {
        if (&field != &kTypeFields.front()) line += ',';
        line += quoted(row.*field.text);
    }
    return line += '\n';
}

}  // namespace vel::command
