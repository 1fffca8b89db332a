// Kept: of several names the last one goes into the disposition, as "file" and the parameter as it was given, so
// that NAME makes fileNAME (add_disposition).
#include "build/content.h"

#include "build/header_value.h"
#include "build/texts.h"
#include "frame/owned.h"

namespace vel {
namespace {

bool begins(const char* parameter, std::string_view beginning) {
    return ascii::starts_with_ignoring_case(parameter, beginning);
}

void add_line(std::string& lines, std::string_view field, const char* value) {
    if (!is_empty(value)) lines.append(field).append(value).append(kLineEnd);
}

// A parameter in quotes; as it is when that cannot be done.
void add_parameter(std::string& lines, std::string_view before, const char* parameter) {
    const COwned<char> quoted(process_param(parameter));
    lines.append(before).append(quoted ? quoted.get() : parameter);
}

void add_disposition(std::string& lines, const Content& content) {
    const bool is_shown = content.is("text", "plain") || content.is("message");
    lines.append("Content-disposition: ").append(is_shown ? "inline" : "attachment");
    const char* name = nullptr;
    for_each_text(content.parameters, [&](const char* parameter) {
        if (begins(parameter, kNameParameter)) name = parameter;
    });
    if (name) add_parameter(lines, "; file", name);
    lines.append(kLineEnd);
}

}  // namespace

const char* Content::parameter(std::string_view beginning) const {
    for (const ms* node = parameters; node; node = node->next) {
        if (node->text && begins(node->text, beginning)) return node->text;
    }
    return nullptr;
}

void add_parameters(std::string& lines, const ms* parameters) {
    for_each_text(parameters, [&](const char* parameter) { add_parameter(lines, "; ", parameter); });
}

std::string lines_of(const Content& content) {
    std::string lines("Content-type: ");
    lines.append(content.type).append("/").append(content.subtype);
    add_parameters(lines, content.parameters);
    lines.append(kLineEnd);
    lines.append("Content-transfer-encoding: ").append(content.encoding).append(kLineEnd);
    add_line(lines, "Content-description: ", content.description);
    add_line(lines, "Content-Id: ", content.id);
    add_disposition(lines, content);
    return lines;
}

}  // namespace vel
