// vel check: what is wrong with messages.
#include <nlohmann/json.hpp>

#include "tools/message/findings.h"
#include "tools/message/message_json.h"
#include "tools/text/text_forms.h"
#include "tools/verbs/command_line.h"
#include "tools/verbs/many_files.h"

namespace vel::command {
namespace {

const std::string kFooter =
    std::string(
        "Example:\n"
        "  printf 'MIME-Version: 1.0\\r\\nContent-ID: 17\\r\\n\\r\\ntext\\r\\n' | vel check -\n"
        "\n"
        "Says, in the order of the file, line by line: which header fields the library refuses or corrects and why,\n"
        "how a message that it refuses is read all the same (vel parse --help), what belongs to no entity, which\n"
        "bodies do not decode, and where a header block goes on too long. Behind a fault stand its place in bytes\n"
        "and the library's own words. A remark is no fault: line ends of bare LF, a line of the header block that is\n"
        "no field, the rest of one longer than 1024 bytes, a Date that is none, what is no address in a field of\n"
        "addresses. The exit code is 65 when there is a fault.\n"
        "\n"
        "The JSON object: file, mime, normalized, fallback, removed, messages (as vel parse has them), clean,\n"
        "findings. A finding: severity (\"fault\", \"remark\"), line, start, end (equal: a place), field, part, what,\n"
        "said (the library's words). What is absent is null; offsets are those of the file, or of its CR LF copy\n"
        "when it is normalized.\n"
        "\n") +
    kAboutJsonTexts;

const char* name_of(Severity severity) { return severity == Severity::fault ? "fault" : "remark"; }

std::string bytes_of(const Finding& finding) {
    const auto& [start, end] = finding.range;
    return start == end ? "byte " + std::to_string(start)
                        : "bytes " + std::to_string(start) + "-" + std::to_string(end);
}

void print(const std::string& file, const Finding& finding, Output& output) {
    std::string line = visible(file) + ":" + std::to_string(finding.line) + ": " + name_of(finding.severity) + ": ";
    if (finding.part) line += "part " + std::to_string(*finding.part) + ": ";
    if (!finding.field.empty()) line += visible(finding.field) + " ";
    line += visible(finding.what) + " (" + bytes_of(finding);
    if (!finding.said.empty()) line += "; the library: " + visible(finding.said);
    output.write(line.append(")\n"));
}

Json finding_json(const Finding& finding) {
    const auto text = [](const std::string& value) { return value.empty() ? Json() : Json(json_text(value)); };
    return {
        {"severity", name_of(finding.severity)},
        {"line", finding.line},
        {"start", finding.range.start},
        {"end", finding.range.end},
        {"field", text(finding.field)},
        {"part", finding.part ? Json(*finding.part) : Json()},
        {"what", text(finding.what)},
        {"said", text(finding.said)},
    };
}

void write_json(const ParsedMessage& message, const std::vector<Finding>& findings, bool clean, Output& output) {
    Json object = message_facts(message);
    object["clean"] = clean;
    object["findings"] = Json::array();
    for (const Finding& finding : findings) object["findings"].push_back(finding_json(finding));
    output.write(one_line(object).append("\n"));
}

Exit exit_of(const std::vector<Finding>& findings) {
    Exit exit = Exit::success;
    for (const Finding& finding : findings) {
        if (finding.severity == Severity::fault) exit = worse(exit, finding.exit);
    }
    return exit;
}

}  // namespace

Exit run_check(Arguments arguments, Session& main) {
    CommandLine line("check", "Tells what is wrong with messages, and where.", kFooter);
    line.add_files();
    line.add_json();
    line.add_nested();
    if (const auto exit = line.read(std::move(arguments), main)) return *exit;
    return for_each_file(line, main, [&](const std::string& file, Session& session) {
        const ParsedMessage message = read_message(file, line.parse_options, session);
        const std::vector<Finding> findings = findings_of(message, line.parse_options, session);
        const Exit exit = exit_of(findings);
        const bool clean = exit == Exit::success;
        if (line.json) {
            write_json(message, findings, clean, session.output);
        } else {
            for (const Finding& finding : findings) print(file, finding, session.output);
            if (clean) session.output.write(visible(file) + ": no fault\n");
        }
        return exit;
    });
}

}  // namespace vel::command
