#include "tools/message/message_json.h"

#include <charconv>
#include <cmath>

#include <nlohmann/json.hpp>

#include "tools/message/part_name.h"
#include "tools/text/text_forms.h"

namespace vel::command {
namespace {

Json text_or_null(const char* text) { return text ? Json(json_text(text)) : Json(); }

// The shortest text that gives this number back, as a number: 1.1, not 1.10000002.
Json version_or_null(float version) {
    if (version == 0 || !std::isfinite(version)) return {};
    char text[64];
    const char* end = std::to_chars(text, text + sizeof text, version).ptr;
    double value = 0;
    std::from_chars(text, end, value);
    return value;
}

Json texts_json(const ms* chain) {
    Json texts = Json::array();
    for (const ms* node = chain; node; node = node->next) texts.push_back(text_or_null(node->text));
    return texts;
}

Json part_json(const ParsedMessage& message, int index, LineReader& lines) {
    const MimeMsg& record = message.record(index);
    const int parent = message.tree.parent(index);
    Json children = Json::array();
    for (const int child : message.tree.children(index)) children.push_back(child);
    return {
        {"index", index},
        {"parent", parent == kNoParent ? Json() : Json(parent)},
        {"depth", message.tree.depth(index)},
        {"kind", record.nodeKind},
        {"mime_version", version_or_null(record.mimeVersion)},
        {"type", text_or_null(record.contentType)},
        {"subtype", text_or_null(record.contentSubtype)},
        {"encoding", text_or_null(record.contentTransferEncoding)},
        {"disposition", text_or_null(record.contentDisposition)},
        {"id", text_or_null(record.contentID)},
        {"description", text_or_null(record.contentDescription)},
        {"params", texts_json(record.contentTypeParams)},
        {"disposition_params", texts_json(record.contentDispositionParams)},
        {"boundary", text_or_null(record.boundary)},
        {"header_start", record.headerStart},
        {"body_start", record.bodyStart},
        {"body_end", record.bodyEnd},
        {"children", std::move(children)},
        {"decoded",
         {{"name", readable_json(given_name(record))}, {"description", readable_json(description_of(record, lines))}}},
    };
}

Json removed_json(const std::vector<RemovedField>& removed) {
    Json list = Json::array();
    for (const auto& [field, line] : removed) {
        list.push_back({
            {"name", json_text(field.name)},
            {"why", name_of(field.trouble)},
            {"line", line},
            {"start", field.range.start},
            {"end", field.range.end},
        });
    }
    return list;
}

}  // namespace

Json messages_json(const std::vector<LogLine>& lines) {
    Json messages = Json::array();
    for (const LogLine& line : lines) messages.push_back({{"level", line.level}, {"text", json_text(line.text)}});
    return messages;
}

Json readable_json(const std::optional<Readable>& text) {
    if (!text) return {};
    return {{"text", json_text(text->text)}, {"converted", text->converted}};
}

Json message_facts(const ParsedMessage& message) {
    Json messages = messages_json(message.refusal);
    for (Json& line : messages_json(message.messages)) messages.push_back(std::move(line));
    return {
        {"file", json_text(message.name)},          {"mime", message.mime},
        {"normalized", message.input.normalized},   {"fallback", text_or_null(name_of(message.fallback))},
        {"removed", removed_json(message.removed)}, {"messages", std::move(messages)},
    };
}

Json ranges_json(const std::vector<Range>& ranges) {
    Json list = Json::array();
    for (const Range& range : ranges) list.push_back({{"start", range.start}, {"end", range.end}});
    return list;
}

void write_json(const ParsedMessage& message, Output& output) {
    Json facts = message_facts(message);
    facts["count"] = message.tree.count();
    facts["leaves"] = message.tree.leaves();
    facts["multiparts"] = message.tree.containers();
    facts["uncovered"] = ranges_json(message.uncovered);
    // A message may have a hundred thousand parts: they are written one at a time, before the last brace.
    std::string text = one_line(facts);
    text.back() = ',';
    output.write(text.append("\"parts\":["));
    LineReader lines(message.input.path);
    for (int i = 0; i < message.tree.count(); ++i) {
        if (i > 0) output.write(",");
        output.write(one_line(part_json(message, i, lines)));
    }
    output.write("]}\n");
}

}  // namespace vel::command
