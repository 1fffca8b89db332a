// vel config: the settings that are in force, and what is wrong with them.
#include <nlohmann/json.hpp>

#include "tools/io/table.h"
#include "tools/message/message_json.h"
#include "tools/settings/effective.h"
#include "tools/text/text_forms.h"
#include "tools/verbs/command_line.h"
#include "tools/verbs/verb.h"

namespace vel::command {
namespace {

const std::string kFooter =
    std::string(
        "Example:\n"
        "  OSTRA_CONFIG_DIR=/srv/mail vel config | grep fault:\n"
        "\n"
        "Shows each setting as the library reads it, cut to its buffer, and where it comes from: a line of\n"
        "ostra.ini, which is looked for in the directory that $OSTRA_CONFIG_DIR names, else in /etc/ostra; or the\n"
        "default. Then says what is wrong: keys and sections that nobody reads, also where no more than a letter's\n"
        "case is, settings that an earlier line hides, values that are cut or not of their kind, a time zone that is\n"
        "none and so means UTC, no host or domain, files and directories that cannot be used. Nothing is changed. A\n"
        "remark is no fault. The exit code is 78 when there is a fault.\n"
        "\n"
        "The JSON objects, by their kind. \"file\": path, by (\"environment\", \"default\"), trouble (why it holds no\n"
        "settings). \"setting\": section, key, value, source (\"file\", \"default\"), line, default, bytes (that a "
        "value\n"
        "may have). \"finding\": severity (\"fault\", \"remark\"), line, what. What is absent is null.\n"
        "\n") +
    kAboutJsonTexts;

Json or_null(const std::string& text) { return text.empty() ? Json() : Json(json_text(text)); }
Json line_json(uint64_t line) { return line == 0 ? Json() : Json(line); }
const char* severity_of(const ConfigFinding& finding) { return finding.remark ? "remark" : "fault"; }

void write_json(const Configuration& configuration, Output& output) {
    const auto write = [&](const Json& object) { output.write(one_line(object).append("\n")); };
    const SettingsFile& file = configuration.file;
    write({{"kind", "file"},
           {"path", json_text(file.path)},
           {"by", file.by_environment ? "environment" : "default"},
           {"trouble", or_null(file.trouble)}});
    for (const Effective& setting : configuration.settings) {
        const SettingRow& row = *setting.row;
        write({{"kind", "setting"},
               {"section", row.section},
               {"key", row.key},
               {"value", json_text(setting.value)},
               {"source", setting.line == 0 ? "default" : "file"},
               {"line", line_json(setting.line)},
               {"default", row.fallback},
               {"bytes", row.size == 0 ? Json() : Json(row.size - 1)}});
    }
    for (const ConfigFinding& finding : configuration.findings) {
        write({{"kind", "finding"},
               {"severity", severity_of(finding)},
               {"line", line_json(finding.line)},
               {"what", json_text(finding.what)}});
    }
}

void print(const Configuration& configuration, Output& output) {
    const SettingsFile& file = configuration.file;
    std::string head = visible(file.path).append(file.by_environment ? ", by OSTRA_CONFIG_DIR" : "");
    if (!file.trouble.empty()) head.append(", ").append(file.trouble);
    output.write(head.append("\n"));
    Table table({{"section"}, {"key"}, {"value"}, {"source"}});
    for (const Effective& setting : configuration.settings) {
        const std::string source = setting.line == 0 ? "default" : "line " + std::to_string(setting.line);
        table.add(
            {setting.row->section, setting.row->key, setting.value.empty() ? "-" : visible(setting.value), source});
    }
    table.print(output);
    for (const ConfigFinding& finding : configuration.findings) {
        std::string line = visible(file.path) + ":";
        if (finding.line > 0) line += std::to_string(finding.line) + ":";
        output.write(line.append(" ").append(severity_of(finding)).append(": ").append(visible(finding.what)) + "\n");
    }
}

}  // namespace

Exit run_config(Arguments arguments, Session& main) {
    CommandLine line("config", "Shows the settings that are in force, and what is wrong with them.", kFooter);
    line.add_json();
    if (const auto exit = line.read(std::move(arguments), main)) return *exit;
    const Configuration configuration = read_configuration();
    line.json ? write_json(configuration, main.output) : print(configuration, main.output);
    if (configuration.findings_left_out > 0) {
        main.output.complain({}, std::to_string(configuration.findings_left_out) + " more findings are not shown");
    }
    const auto is_fault = [](const ConfigFinding& finding) { return !finding.remark; };
    const auto& findings = configuration.findings;
    return std::any_of(findings.begin(), findings.end(), is_fault) ? Exit::config : Exit::success;
}

}  // namespace vel::command
