// vel types of: as what a file would be sent.
#include <nlohmann/json.hpp>

#include "tools/io/table.h"
#include "tools/text/text_forms.h"
#include "tools/types/gateway_type.h"
#include "tools/types/table.h"
#include "tools/verbs/command_line.h"
#include "tools/verbs/types_verbs.h"

namespace vel::command {
namespace {

const std::string kFooter =
    std::string(
        "Example:\n"
        "  vel types of photo.JPG letter.doc\n"
        "\n"
        "What a file's extension stands for in the table, and as what a message that the gateway makes by itself has\n"
        "it attached (vel notify): a file of ASCII alone as text/basic in 7bit, whatever its name; any other by its "
        "extension,\n"
        "which is at most 9 bytes behind the last dot; or as application/x-unknown in base64. The exit code is 66\n"
        "when a file cannot be read.\n"
        "\n"
        "The JSON object, one a file: file, extension, known (in the table), type, ascii (the file), sent_as,\n"
        "encoding. What is absent is null.\n"
        "\n") +
    kAboutJsonTexts;

struct Verdict {
    std::string file;
    std::string extension;
    bool ascii;
    std::string type;  // by the extension; empty when it is not known
    std::string sent_as;
    std::string encoding;
};

Verdict verdict_on(const std::string& file) {
    Verdict verdict{file, looked_up_extension(file), is_ascii_file(file), "", "application/x-unknown", "base64"};
    if (const auto record = type_by_extension(file)) {
        const TypeRow row = row_of(*record);
        verdict.type = verdict.sent_as = row.type + "/" + row.subtype;
        verdict.encoding = row.encoding;
    }
    if (verdict.ascii) {
        verdict.sent_as = "text/basic";
        verdict.encoding = "7bit";
    }
    return verdict;
}

Json or_null(const std::string& text) { return text.empty() ? Json() : Json(json_text(text)); }

void write_object(const Verdict& verdict, Output& output) {
    output.write(one_line({{"file", json_text(verdict.file)},
                           {"extension", or_null(verdict.extension)},
                           {"known", !verdict.type.empty()},
                           {"type", or_null(verdict.type)},
                           {"ascii", verdict.ascii},
                           {"sent_as", json_text(verdict.sent_as)},
                           {"encoding", or_null(verdict.encoding)}})
                     .append("\n"));
}

}  // namespace

Exit run_types_of(Arguments arguments, Session& main) {
    CommandLine line("types of", "Tells as what files would be sent.", kFooter);
    std::vector<std::string> files;
    line.add_argument("FILE", files, "Files of any kind").required();
    line.add_json();
    if (const auto exit = line.read(std::move(arguments), main)) return *exit;
    const TypesTable types(main);
    Table table({{"file"}, {"by its extension"}, {"sent as"}, {"encoding"}});
    Exit worst = Exit::success;
    for (const std::string& file : files) {
        try {
            const Verdict verdict = verdict_on(file);
            if (line.json) write_object(verdict, main.output);
            table.add({visible(file), verdict.type.empty() ? "-" : visible(verdict.type), visible(verdict.sent_as),
                       visible(verdict.encoding)});
        } catch (const Failure& failure) {
            main.output.complain(file, failure.what());
            worst = worse(worst, failure.exit());
        }
    }
    if (!line.json && !table.empty()) table.print(main.output);
    return worst;
}

}  // namespace vel::command
