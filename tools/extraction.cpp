#include "tools/extraction.h"

#include "tools/entity.h"
#include "tools/exit_code.h"
#include "tools/part_name.h"
#include "tools/private_copy.h"
#include "tools/safe_name.h"

namespace vel::command {
namespace {

constexpr const char* kEntityExtension = ".eml";  // of what is a header block with a body

// A flat message has a piece of text behind each attachment, also where nothing follows.
bool is_empty_remainder(const MimeMsg& record, int index) {
    return index > 0 && !record.contentType && record.headerStart == record.bodyStart && size_of_body(record) == 0;
}

std::string file_name(const MimeMsg& record, int index, Form form) {
    std::string name = safe_name(given_name(record).value_or(""));
    if (name.empty()) name = "part-" + std::to_string(index) + extension_of(record);
    if (form == Form::raw) name += kEntityExtension;
    return name;
}

class Extractor {
  public:
    Extractor(const ParsedMessage& message, Form form, Destination& destination, Session& session)
        : message_(message), form_(form), destination_(destination), session_(session) {}

    void part(int index) {
        MimeMsg& record = message_.record(index);
        if (!destination_.has_room(0)) return leave_out();
        const BodyFile body = write_body(record, form_);
        const uint64_t size = size_of(body.file);
        if (!destination_.has_room(size)) return leave_out();
        const std::string path = destination_.place(file_name(record, index, form_), body.file.get(), size);
        result_.files.push_back({index, path, size, type_of(record), given_name(record),
                                 record.trueName ? std::optional<std::string>(record.trueName) : std::nullopt,
                                 body.decoded});
    }

    void uncovered(std::size_t number) {
        const Range range = message_.uncovered[number - 1];
        const uint64_t size = range.end - range.start;
        if (!destination_.has_room(size)) return leave_out();
        const PrivateFile copy = copy_range(range, message_.input.path, session_.scratch);
        const std::string name = "uncovered-" + std::to_string(number) + kEntityExtension;
        const std::string path = destination_.place(name, copy.path().c_str(), size);
        result_.files.push_back({std::nullopt, path, size, "uncovered", std::nullopt, std::nullopt, false});
    }

    Extraction finish() { return std::move(result_); }

  private:
    void leave_out() { ++result_.left_out; }

    const ParsedMessage& message_;
    const Form form_;
    Destination& destination_;
    Session& session_;
    Extraction result_;
};

}  // namespace

Extraction extract(const ParsedMessage& message, std::optional<int> part, Form form, Destination& destination,
                   Session& session) {
    Extractor extractor(message, form, destination, session);
    if (part) {
        wanted_part(message, *part);
        extractor.part(*part);
        return extractor.finish();
    }
    for (int i = 0; i < message.tree.count(); ++i) {
        const MimeMsg& record = message.record(i);
        if (has_content(record) && !is_empty_remainder(record, i)) extractor.part(i);
    }
    for (std::size_t i = 1; i <= message.uncovered.size(); ++i) extractor.uncovered(i);
    return extractor.finish();
}

MimeMsg& wanted_part(const ParsedMessage& message, int part) {
    if (part < 0 || part >= message.tree.count()) {
        throw Failure(Exit::bad_data, "has no part " + std::to_string(part));
    }
    return message.record(part);
}

}  // namespace vel::command
