// vel types add, remove, import and export.
#include <nlohmann/json.hpp>

#include "tools/io/blocks.h"
#include "tools/io/input.h"
#include "tools/io/target.h"
#include "tools/text/text_forms.h"
#include "tools/types/table.h"
#include "tools/types/types_file.h"
#include "tools/verbs/command_line.h"
#include "tools/verbs/types_verbs.h"

namespace vel::command {
namespace {

constexpr const char* kAddFooter =
    "Examples:\n"
    "  vel types add --extension foo --type application/x-foo --mac 'FOO foo!'\n"
    "  vel types add --replace --extension txt --type text/plain --encoding quoted-printable\n"
    "\n"
    "The exit code is 65 when a text does not fit, or the extension is there already and --replace is not given.\n";

constexpr const char* kRemoveFooter =
    "Example:\n"
    "  vel types remove foo\n"
    "\n"
    "Removes the first type of each extension. The exit code is 66 when there is none.\n";

constexpr const char* kImportFooter =
    "Example:\n"
    "  vel types export -o types.csv && $EDITOR types.csv && vel types import --clear types.csv\n"
    "\n"
    "A type replaces the one of the same extension; others are added behind the last. Either all types of the file\n"
    "are put in, at once, or none; the exit code is 65, and standard error tells the lines, when one of them is\n"
    "wrong. The file is as vel types export writes it: comma-separated texts, the first line being\n"
    "  extension,type,subtype,encoding,second subtype,mac type,creator\n";

constexpr const char* kExportFooter =
    "Example:\n"
    "  vel types export | grep ',audio,'\n"
    "\n"
    "Writes comma-separated texts (RFC 4180), a line a type, as vel types import reads them.\n";

// A types file is far smaller.
constexpr std::size_t kLargestFile = 64 * 1024 * 1024;

struct Added {
    TypeRow row;
    std::string type;
    std::string mac;
    bool replace = false;
};

void declare(CommandLine& line, Added& added) {
    added.row.encoding = "base64";
    line.add_option("--extension", "TEXT", added.row.extension, "At most 9 bytes, without the dot").required();
    line.add_option("--type", "TYPE/SUBTYPE", added.type, "The content type").required();
    line.add_option("--encoding", "NAME", added.row.encoding, "base64, also by default, or quoted-printable");
    line.add_option("--second-subtype", "TEXT", added.row.second_subtype, "Another subtype");
    line.add_option("--mac", "CODES", added.mac, "Macintosh type and creator, four bytes each");
    line.add_flag("--replace", added.replace, "Replace the type of that extension, if there is one");
}

void split_texts(Added& added) {
    constexpr std::size_t kCode = 4;
    const std::size_t slash = added.type.find('/');
    added.row.type = added.type.substr(0, slash);
    added.row.subtype = slash == std::string::npos ? "" : added.type.substr(slash + 1);
    added.row.mac_type = added.mac.substr(0, kCode);
    added.row.creator = added.mac.size() > kCode ? added.mac.substr(kCode) : "";
}

std::string whole_file(const std::string& name, Session& session) {
    const Input input = open_as_it_stands(name, session);
    const Descriptor file = open_for_reading(input.path);
    std::string text;
    for_each_block(file.get(), [&](std::string_view block) {
        text += block;
        return text.size() <= kLargestFile;
    });
    if (text.size() > kLargestFile) throw Failure(Exit::bad_data, "is too large for a types file");
    return text;
}

}  // namespace

Exit run_types_add(Arguments arguments, Session& main) {
    CommandLine line("types add", "Adds a file type.", kAddFooter);
    Added added;
    declare(line, added);
    if (const auto exit = line.read(std::move(arguments), main)) return *exit;
    split_texts(added);
    const TypeRow& row = added.row;
    if (const std::string fault = fault_of(row); !fault.empty()) throw Failure(Exit::bad_data, fault);
    TypesTable table(main);
    const bool is_there = table.has(row.extension);
    if (is_there && !added.replace) {
        throw Failure(Exit::bad_data, row.extension + ": is there already; --replace replaces it");
    }
    is_there ? table.replace(row) : table.add(row);
    return Exit::success;
}

Exit run_types_remove(Arguments arguments, Session& main) {
    CommandLine line("types remove", "Takes file types out of the table.", kRemoveFooter);
    std::vector<std::string> extensions;
    line.add_argument("EXTENSION", extensions, "Extensions, without the dot").required();
    if (const auto exit = line.read(std::move(arguments), main)) return *exit;
    TypesTable table(main);
    Exit worst = Exit::success;
    for (const std::string& extension : extensions) {
        if (table.has(extension)) {
            table.remove(extension);
        } else {
            main.output.complain({}, visible(extension) + ": no such type");
            worst = Exit::no_input;
        }
    }
    return worst;
}

Exit run_types_import(Arguments arguments, Session& main) {
    CommandLine line("types import", "Puts the types of a file into the table.", kImportFooter);
    std::string name;
    bool clear = false;
    line.add_argument("FILE", name, "Types file; \"-\" is standard input").required();
    line.add_flag("--clear", clear, "Take all other types out");
    line.add_json();
    if (const auto exit = line.read(std::move(arguments), main)) return *exit;
    const TypesFile file = read_types(whole_file(name, main));
    for (const std::string& fault : file.faults) main.output.complain(name, "line " + fault);
    if (!file.faults.empty()) return Exit::bad_data;
    const TypesTable table(main);  // which puts the seeds in, where there is none
    const Imported done = import_types(file.rows, clear, main);
    if (line.json) {
        const Json counts{{"added", done.added}, {"replaced", done.replaced}, {"removed", done.removed}};
        main.output.write(one_line(counts).append("\n"));
    } else {
        main.output.write(std::to_string(done.added).append(" added, ") + std::to_string(done.replaced) +
                          " replaced, " + std::to_string(done.removed) + " removed\n");
    }
    return Exit::success;
}

Exit run_types_export(Arguments arguments, Session& main) {
    CommandLine line("types export", "Writes all file types into a file.", kExportFooter);
    line.add_output();
    if (const auto exit = line.read(std::move(arguments), main)) return *exit;
    std::string text = types_heading();
    TypesTable(main).for_each([&](const TypeRow& row) { text += types_line(row); });
    Target target(line.output, main);
    if (!write_all(target.descriptor(), text)) target.fail(errno);
    target.finish();
    return Exit::success;
}

}  // namespace vel::command
