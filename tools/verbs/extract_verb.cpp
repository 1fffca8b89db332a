// vel extract: the bodies of messages as files.
#include <nlohmann/json.hpp>

#include "tools/io/blocks.h"
#include "tools/io/output.h"
#include "tools/io/table.h"
#include "tools/message/draw_tree.h"
#include "tools/message/extraction.h"
#include "tools/message/message_json.h"
#include "tools/text/text_forms.h"
#include "tools/verbs/command_line.h"
#include "tools/verbs/many_files.h"

namespace vel::command {
namespace {

const std::string kFooter =
    std::string(
        "Examples:\n"
        "  printf 'Content-Transfer-Encoding: base64\\nMIME-Version: 1.0\\n\\ndGV4dAo=\\n' | vel extract - -o parts\n"
        "  vel extract -r ~/Maildir -o attachments --max-bytes 1G\n"
        "\n"
        "Every body that is not a container's is written, decoded, under the name that the message gives it, in UTF-8 "
        "and\n"
        "made safe: no path, no control characters, no device names, at most 200 bytes. Without a name it is part-N "
        "with\n"
        "an extension for its type, N being the index that vel parse shows. A name that is taken gets a number;\n"
        "nothing is overwritten. BinHex becomes an AppleSingle file, which holds both forks, with .as for its .hqx or\n"
        "behind its name. A text is written without the files embedded in it, which are written too. What belongs to\n"
        "no entity (vel parse --help) becomes uncovered-N.eml. A body that does not decode is written as it stands,\n"
        "and said so; so is a part without a blank line, header lines and all.\n"
        "\n"
        "Messages that the library refuses are read as vel parse reads them, with exit code 65. When a limit leaves\n"
        "something out, the exit code is 73. What cannot be written does not hold up the rest.\n"
        "\n"
        "The JSON object: file, mime, normalized, fallback, removed (as vel parse has it), messages (level, text),\n"
        "uncovered (start, end), files, left_out (how many the limits left out). A file: part (null: uncovered\n"
        "bytes), path, size, type, name (in the message: text in UTF-8, converted; when that is false the text is as "
        "it\n"
        "stands), true_name (in a uuencoded or BinHex body, as it stands), decoded.\n"
        "\n") +
    kAboutJsonTexts;

struct Options {
    std::string directory;
    std::optional<int> part;
    bool raw = false;
    bool whole_text = false;
    bool to_stdout = false;
    Limits limits;

    Form form() const { return raw ? Form::raw : whole_text ? Form::whole_text : Form::decoded; }
};

void declare(CommandLine& line, Options& options) {
    auto directory =
        line.add_option("-o,--output", "DIR", options.directory, "Directory to write to, made when missing");
    auto part = line.add_number("--part", options.part, "Write this part only, any kind, by its index");
    auto raw = line.add_flag("--raw", options.raw, "Write header block and body as stored, undecoded");
    line.add_flag("--whole-text", options.whole_text, "Leave embedded files in their text too").excludes(raw);
    line.add_flag("--stdout", options.to_stdout, "Write the part to standard output").needs(part).excludes(directory);
    line.add_size("--max-bytes", options.limits.bytes,
                  "Write at most so many bytes in all; 10K, 5M, 1G: powers of 1024");
    line.add_number("--max-files", options.limits.files, "Write at most so many files in all");
}

// Empty when the options go together.
std::string misuse(const Options& options, const CommandLine& line) {
    if (options.to_stdout && line.json) return "--stdout excludes --json";
    if (options.to_stdout && (line.recursive || line.files.size() > 1)) return "--stdout takes one FILE";
    if (!options.to_stdout && options.directory.empty()) return "-o DIR is required";
    return {};
}

Json file_json(const Written& file) {
    return {
        {"part", file.part ? Json(*file.part) : Json()},
        {"path", json_text(file.path)},
        {"size", file.size},
        {"type", file.part ? Json(json_text(file.type)) : Json()},
        {"name", readable_json(file.name)},
        {"true_name", file.true_name ? Json(json_text(*file.true_name)) : Json()},
        {"decoded", file.decoded},
    };
}

void print_json(const ParsedMessage& message, const Extraction& extraction, Output& output) {
    Json object = message_facts(message);
    object["uncovered"] = ranges_json(message.uncovered);
    object["files"] = Json::array();
    for (const Written& file : extraction.files) object["files"].push_back(file_json(file));
    object["left_out"] = extraction.left_out;
    output.write(one_line(object).append("\n"));
}

void print_table(const ParsedMessage& message, const Extraction& extraction, Output& output) {
    using enum Table::Align;
    output.write(heading_of(message).append("\n"));
    Table table({{"part", right}, {"size", right}, {"type"}, {"file"}, {"name in the message"}});
    for (const Written& file : extraction.files) {
        table.add({file.part ? std::to_string(*file.part) : "-", std::to_string(file.size), visible(file.type),
                   visible(file.path), file.name ? shown(*file.name) : "-"});
    }
    table.print(output);
}

void complain_about(const ParsedMessage& message, const Extraction& extraction, Form form, Output& output) {
    for (const Written& file : extraction.files) {
        if (file.decoded || !file.part || form == Form::raw) continue;
        output.complain(message.name, "part " + std::to_string(*file.part) +
                                          (file.with_header ? " has no blank line; written with its header lines"
                                                            : " does not decode; written as it stands"));
    }
    if (extraction.left_out > 0) {
        output.complain(message.name, std::to_string(extraction.left_out) +
                                          " more not written, --max-bytes or --max-files is reached");
    }
}

void print_body(const ParsedMessage& message, const Options& options, Session& session) {
    Output& output = session.output;
    MimeMsg& record = wanted_part(message, *options.part);
    const BodyFile body = write_body(record, options.form(), session.scratch);
    if (!body.decoded && !options.raw) output.complain(message.name, "the part does not decode; written as it stands");
    for_each_block(open_for_reading(body.file.get()).get(), [&](std::string_view block) {
        output.write(block);
        return true;
    });
}

}  // namespace

Exit run_extract(Arguments arguments, Session& main) {
    CommandLine line("extract", "Writes the bodies of messages into files, decoded.", kFooter);
    Options options;
    line.add_files();
    line.add_json();
    line.add_nested();
    line.add_verbose();
    declare(line, options);
    if (const auto exit = line.read(std::move(arguments), main)) return *exit;
    if (const std::string wrong = misuse(options, line); !wrong.empty()) return line.misuse(wrong, main);
    std::optional<Destination> destination;
    if (!options.to_stdout) {
        destination.emplace(options.directory, options.limits, main.scratch);
        main.output.streams().go_on_without_reader();  // who reads the table does not decide what is written
    }
    return for_each_file(line, main, [&](const std::string& file, Session& session) {
        const ParsedMessage message = parse_message(file, line.parse_options, session);
        if (!destination) {
            print_body(message, options, session);
            return message.exit();
        }
        const Extraction extraction = extract(message, options.part, options.form(), *destination, session.output);
        complain_about(message, extraction, options.form(), session.output);
        line.json ? print_json(message, extraction, session.output) : print_table(message, extraction, session.output);
        const Exit exit = worse(message.exit(), extraction.exit);
        return extraction.left_out > 0 ? worse(exit, Exit::cannot_create) : exit;
    });
}

}  // namespace vel::command
