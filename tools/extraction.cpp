#include "tools/extraction.h"

#include "tools/entity.h"
#include "tools/exit_code.h"
#include "tools/output.h"
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

std::string part_label(int index) { return "part " + std::to_string(index); }

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
        const Form form = hides_content_in_header(record) ? Form::raw : form_;
        const BodyFile body = write_body(record, form);
        const uint64_t size = size_of(body.file);
        if (!destination_.has_room(size)) return leave_out();
        const std::string path = destination_.place(file_name(record, index, form), body.file.get(), size);
        result_.files.push_back({index, path, size, type_of(record), given_name(record),
                                 record.trueName ? std::optional<std::string>(record.trueName) : std::nullopt,
                                 body.decoded, form == Form::raw});
    }

    // Runs one of the two; what it cannot write is said, and the next one has its turn.
    template <class Write>
    void attempt(const std::string& what, Write write) {
        try {
            write();
        } catch (const Failure& failure) {
            complain(message_.name, what + ": " + failure.what());
            result_.exit = worse(result_.exit, failure.exit());
        }
    }

    void uncovered(std::size_t number) {
        const Range range = message_.uncovered[number - 1];
        const uint64_t size = range.end - range.start;
        if (!destination_.has_room(size)) return leave_out();
        const PrivateFile copy = copy_range(range, message_.input.path, session_.scratch);
        const std::string name = "uncovered-" + std::to_string(number) + kEntityExtension;
        const std::string path = destination_.place(name, copy.path().c_str(), size);
        result_.files.push_back({std::nullopt, path, size, "uncovered", std::nullopt, std::nullopt, false, true});
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
        extractor.attempt(part_label(*part), [&] { extractor.part(*part); });
        return extractor.finish();
    }
    for (int i = 0; i < message.tree.count(); ++i) {
        const MimeMsg& record = message.record(i);
        if (has_content(record) && !is_empty_remainder(record, i)) {
            extractor.attempt(part_label(i), [&] { extractor.part(i); });
        }
    }
    for (std::size_t i = 1; i <= message.uncovered.size(); ++i) {
        extractor.attempt("uncovered bytes", [&] { extractor.uncovered(i); });
    }
    return extractor.finish();
}

MimeMsg& wanted_part(const ParsedMessage& message, int part) {
    if (part < 0 || part >= message.tree.count()) {
        throw Failure(Exit::bad_data, "has no part " + std::to_string(part));
    }
    return message.record(part);
}

}  // namespace vel::command
