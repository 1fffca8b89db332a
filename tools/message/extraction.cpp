#include "tools/message/extraction.h"

#include <utility>

#include "tools/io/exit_code.h"
#include "tools/io/private_copy.h"
#include "tools/message/entity.h"
#include "tools/message/part_name.h"
#include "tools/text/ascii.h"
#include "tools/text/safe_name.h"

namespace vel::command {
namespace {

constexpr const char* kEntityExtension = ".eml";      // of what is a header block with a body
constexpr const char* kAppleSingleExtension = ".as";  // of both forks in one file
constexpr std::string_view kBinhexExtension = ".hqx";

// A flat message has a piece of text behind each attachment, also where nothing follows.
bool is_empty_remainder(const MimeMsg& record, int index) {
    return index > 0 && !record.contentType && record.headerStart == record.bodyStart && size_of_body(record) == 0;
}

// Both forks in one file are neither BinHex text nor what opens by the name of the file within.
void tell_apple_single(std::string& name) {
    if (lower(name).ends_with(kBinhexExtension)) name.resize(name.size() - kBinhexExtension.size());
    name += kAppleSingleExtension;
}

std::string file_name(const MimeMsg& record, int index, Form form, bool apple_single) {
    const std::optional<Readable> given = given_name(record);
    std::string name = given ? safe_name(given->text) : std::string();
    if (name.empty()) name = "part-" + std::to_string(index) + extension_of(record);
    if (form == Form::raw) name += kEntityExtension;
    if (apple_single) tell_apple_single(name);
    return name;
}

// One part on its way into the destination.
struct Part {
    int index;
    Form form;
    std::optional<BodyFile> body = {};  // as long as it is kept
    std::optional<uint64_t> size = {};  // once the body has been written
};

class Extractor {
  public:
    Extractor(const ParsedMessage& message, Form form, Destination& destination, Output& output)
        : message_(message), form_(form), destination_(destination), output_(output) {}

    void add(int index) {
        parts_.push_back({index, hides_content_in_header(message_.record(index)) ? Form::raw : form_});
    }

    // While the turn is another file's. A failure tells nothing yet: it is met again in the turn.
    void decode_ahead() {
        Limits left = destination_.limits();
        for (Part& part : parts_) {
            if (output_.has_turn() || left.files == 0) return;
            try {
                decode(part);
            } catch (const Failure&) {
                return;
            }
            if (*part.size > left.bytes) {
                part.body.reset();
                continue;
            }
            left.bytes -= *part.size;
            --left.files;
        }
    }

    void place_parts() {
        for (Part& part : parts_) {
            attempt("part " + std::to_string(part.index), [&] { place(part); });
        }
    }

    void place_uncovered() {
        for (std::size_t i = 1; i <= message_.uncovered.size(); ++i) {
            attempt("uncovered bytes", [&] { place_range(i); });
        }
    }

    Extraction finish() { return std::move(result_); }

  private:
    void decode(Part& part) {
        part.body = write_body(message_.record(part.index), part.form, destination_.scratch());
        part.size = size_of(part.body->file);
    }

    bool leaves_out(uint64_t size) {
        if (destination_.has_room(size)) return false;
        ++result_.left_out;
        return true;
    }

    void place(Part& part) {
        if (leaves_out(part.size.value_or(0))) return part.body.reset();
        if (!part.body) {
            decode(part);
            if (leaves_out(*part.size)) return part.body.reset();
        }
        const MimeMsg& record = message_.record(part.index);
        const std::string name = file_name(record, part.index, part.form, part.body->apple_single);
        const std::string path = destination_.place(name, part.body->file.get(), *part.size);
        result_.files.push_back({part.index, path, *part.size, type_of(record), given_name(record),
                                 record.trueName ? std::optional<std::string>(record.trueName) : std::nullopt,
                                 part.body->decoded, part.form == Form::raw});
        part.body.reset();
    }

    void place_range(std::size_t number) {
        const Range range = message_.uncovered[number - 1];
        const uint64_t size = range.end - range.start;
        if (leaves_out(size)) return;
        const PrivateFile copy = copy_range(range, message_.input.path, destination_.scratch());
        const std::string name = "uncovered-" + std::to_string(number) + kEntityExtension;
        const std::string path = destination_.place(name, copy.path().c_str(), size);
        result_.files.push_back({std::nullopt, path, size, "uncovered", std::nullopt, std::nullopt, false, true});
    }

    // What cannot be written is said, and the next one has its turn.
    template <class Write>
    void attempt(const std::string& what, Write write) {
        try {
            write();
        } catch (const Failure& failure) {
            output_.complain(message_.name, what + ": " + failure.what());
            result_.exit = worse(result_.exit, failure.exit());
        }
    }

    const ParsedMessage& message_;
    const Form form_;
    Destination& destination_;
    Output& output_;
    std::vector<Part> parts_;
    Extraction result_;
};

}  // namespace

Extraction extract(const ParsedMessage& message, std::optional<int> part, Form form, Destination& destination,
                   Output& output) {
    Extractor extractor(message, form, destination, output);
    if (part) {
        wanted_part(message, *part);
        extractor.add(*part);
    } else {
        for (int i = 0; i < message.tree.count(); ++i) {
            const MimeMsg& record = message.record(i);
            if (has_content(record) && !is_empty_remainder(record, i)) extractor.add(i);
        }
    }
    extractor.decode_ahead();
    output.wait_for_turn();
    extractor.place_parts();
    if (!part) extractor.place_uncovered();
    return extractor.finish();
}

MimeMsg& wanted_part(const ParsedMessage& message, int part) {
    if (part < 0 || part >= message.tree.count()) {
        throw Failure(Exit::bad_data, "has no part " + std::to_string(part));
    }
    return message.record(part);
}

}  // namespace vel::command
