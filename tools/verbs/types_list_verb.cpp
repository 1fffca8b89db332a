// vel types list and find: what is in the table.
#include <nlohmann/json.hpp>

#include "tools/io/table.h"
#include "tools/text/text_forms.h"
#include "tools/types/table.h"
#include "tools/verbs/command_line.h"
#include "tools/verbs/types_verbs.h"

namespace vel::command {
namespace {

const std::string kListFooter =
    std::string("Example:\n  vel types list --json | jq -r 'select(.type == \"audio\") | .extension'\n\n") +
    kAboutTypeJson;

const std::string kFindFooter =
    std::string(
        "Examples:\n"
        "  vel types find jpg .TXT image/png\n"
        "  vel types find --mac TEXTttxt\n"
        "\n"
        "A TEXT with a slash is a content type, any other an extension, with or without its dot. Letter case counts\n"
        "for Macintosh codes alone. Of several types that match, the first one is shown, as a program finds it. The\n"
        "exit code is 66 when something is not found.\n"
        "\n") +
    kAboutTypeJson;

Json or_null(const std::string& text) { return text.empty() ? Json() : Json(json_text(text)); }

std::string name_of(const TypeRow& row) { return row.type + "/" + row.subtype; }
std::string or_dash(const std::string& text) { return text.empty() ? "-" : visible(text); }

std::optional<TypeRow> row_if(int result, const MagicRecord& record) {
    return result == 0 ? std::optional(row_of(record)) : std::nullopt;
}

std::optional<TypeRow> by_extension(const std::string& extension) {
    MagicRecord record;
    return row_if(GetMagicFromExtension(extension.c_str(), &record), record);
}

std::optional<TypeRow> find(const std::string& text) {
    const std::size_t slash = text.find('/');
    if (slash == std::string::npos) return by_extension(text.substr(text.starts_with('.') ? 1 : 0));
    char extension[sizeof MagicRecord::extension];
    const std::string type = text.substr(0, slash);
    const int found = GetDosExtFromCTandCST(extension, type.c_str(), text.c_str() + slash + 1);
    return found == 0 ? by_extension(extension) : std::nullopt;
}

std::optional<TypeRow> find_codes(const std::string& codes) {
    constexpr std::size_t kCode = 4;
    MagicRecord record;
    const std::string type = codes.substr(0, kCode);
    const std::string creator = codes.size() > kCode ? codes.substr(kCode) : "";
    return row_if(GetMagicFromMacTypes(&record, type.c_str(), creator.c_str(), nullptr), record);
}

}  // namespace

const char* const kAboutTypeJson =
    "The JSON object, one a type: extension, type, subtype, encoding (of a part that is sent), second_subtype,\n"
    "mac_type, creator. What is absent is null.";

void TypesShown::add(const TypeRow& row) {
    if (!json_) return rows_.push_back(row);
    output_.write(one_line({{"extension", json_text(row.extension)},
                            {"type", json_text(row.type)},
                            {"subtype", json_text(row.subtype)},
                            {"encoding", or_null(row.encoding)},
                            {"second_subtype", or_null(row.second_subtype)},
                            {"mac_type", or_null(row.mac_type)},
                            {"creator", or_null(row.creator)}})
                      .append("\n"));
}

void TypesShown::finish() {
    if (rows_.empty()) return;
    Table table({{"extension"}, {"type"}, {"encoding"}, {"mac type"}, {"creator"}});
    for (const TypeRow& row : rows_) {
        table.add({visible(row.extension), visible(name_of(row)), or_dash(row.encoding), or_dash(row.mac_type),
                   or_dash(row.creator)});
    }
    table.print(output_);
}

Exit run_types_list(Arguments arguments, Session& main) {
    CommandLine line("types list", "Lists all file types.", kListFooter);
    line.add_json();
    if (const auto exit = line.read(std::move(arguments), main)) return *exit;
    TypesShown shown(line.json, main.output);
    TypesTable(main).for_each([&](const TypeRow& row) { shown.add(row); });
    shown.finish();
    return Exit::success;
}

Exit run_types_find(Arguments arguments, Session& main) {
    CommandLine line("types find", "Finds file types.", kFindFooter);
    std::vector<std::string> texts;
    std::vector<std::string> codes;
    line.add_argument("TEXT", texts, "Extensions and content types");
    line.add_option("--mac", "CODES", codes, "Macintosh type and creator, as TEXTttxt").one_each();
    line.add_json();
    if (const auto exit = line.read(std::move(arguments), main)) return *exit;
    if (texts.empty() && codes.empty()) return line.misuse("give something to find", main);
    const TypesTable table(main);
    TypesShown shown(line.json, main.output);
    Exit worst = Exit::success;
    const auto show = [&](const std::string& wanted, const std::optional<TypeRow>& row) {
        if (row) return shown.add(*row);
        main.output.complain({}, visible(wanted) + ": no such type");
        worst = Exit::no_input;
    };
    for (const std::string& text : texts) show(text, find(text));
    for (const std::string& each : codes) show(each, find_codes(each));
    shown.finish();
    return worst;
}

}  // namespace vel::command
