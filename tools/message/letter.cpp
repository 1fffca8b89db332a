#include "tools/message/letter.h"

#include <optional>
#include <string>

#include "tools/io/blocks.h"
#include "tools/io/table.h"
#include "tools/message/body_file.h"
#include "tools/message/chief_fields.h"
#include "tools/message/draw_tree.h"
#include "tools/message/entity.h"
#include "tools/message/html_text.h"
#include "tools/message/parameters.h"
#include "tools/message/part_name.h"
#include "tools/message/reading_plan.h"
#include "tools/text/charset.h"
#include "tools/text/charset_names.h"
#include "tools/text/plain_text.h"
#include "tools/text/text_forms.h"

namespace vel::command {
namespace {

std::string charset_of(const MimeMsg& record) {
    const std::optional<Readable> charset = parameter(record.contentTypeParams, "charset");
    return charset ? charset->text : std::string();
}

class Letter {
  public:
    Letter(const ParsedMessage& message, bool html_as_text, Session& session)
        : message_(message), html_as_text_(html_as_text), session_(session), output_(session.output) {}

    Exit write() {
        const std::vector<Reads> plan = reading_plan(message_);
        output_.write(heading_of(message_).append("\n"));
        for (const int index : message_.tree.drawing_order()) {
            if (begins_message(message_, index)) write_header(index);
            attempt(index, [&] { take(index, plan[static_cast<std::size_t>(index)]); });
        }
        write_others();
        return exit_;
    }

  private:
    void take(int index, Reads reads) {
        switch (reads) {
            case Reads::nothing: return;
            case Reads::text: return write_text(index);
            case Reads::html: return write_html(index);
            case Reads::listed: return list(index);
        }
    }

    // Of what cannot be shown that is said, and it is listed.
    template <class Show>
    void attempt(int index, Show show) {
        try {
            show();
        } catch (const Failure& failure) {
            complain(index, std::string(": ").append(failure.what()));
            exit_ = worse(exit_, failure.exit());
            list(index, size_of_body(message_.record(index)));
        }
    }

    void write_header(int index) {
        const MimeMsg& record = message_.record(index);
        const int parent = message_.tree.parent(index);
        if (parent != kNoParent) write_note("part " + std::to_string(parent) + ", an enclosed message:");
        const std::string fields = chief_fields(message_.input.path, {record.headerStart, record.bodyStart});
        if (!fields.empty() && parent != kNoParent) output_.write("\n");
        output_.write(fields);
    }

    void write_note(const std::string& text) { output_.write(std::string("\n").append(text).append("\n")); }

    BodyFile body_of(int index) {
        MimeMsg& record = message_.record(index);
        return write_body(record, hides_content_in_header(record) ? Form::raw : Form::decoded, session_.scratch);
    }

    BodyFile text_of_part(int index) {
        BodyFile body = body_of(index);
        if (!body.decoded && is_encoded(message_.record(index)))
            complain(index, " does not decode; shown as it stands");
        return body;
    }

    void complain(int index, const std::string& what) {
        output_.complain(message_.name, std::string("part ").append(std::to_string(index)).append(what));
    }

    std::string charset_of_part(int index) {
        std::string charset = charset_of(message_.record(index));
        if (!known_charset(charset)) {
            complain(index, ": charset \"" + charset + "\" is not known; its text is shown as it stands");
        }
        return charset;
    }

    void write_text(int index) {
        const BodyFile body = text_of_part(index);
        const std::string charset = charset_of_part(index);
        if (size_of(body.file) > 0) write_file(body.file.get(), charset);
    }

    void write_file(const std::string& path, std::string_view charset) {
        output_.write("\n");
        const Descriptor file = open_for_reading(path);
        Utf8Converter converter(charset);
        PlainText plain;
        std::string converted, made;
        const auto write_made = [&] {
            plain.more(converted, made);
            output_.write(made);
            converted.clear();
            made.clear();
        };
        for_each_block(file.get(), [&](std::string_view block) {
            converter.more(block, converted);
            write_made();
            return true;
        });
        converter.finish(converted);
        write_made();
        plain.finish(made);
        output_.write(made);
    }

    void write_html(int index) {
        if (!html_as_text_) {
            write_note("part " + std::to_string(index) + " is text in HTML only: --html-as-text shows it");
            return list(index);
        }
        const BodyFile body = text_of_part(index);
        const PrivateFile text = html_as_text(body.file.get(), charset_of_part(index), session_.scratch);
        write_file(text.path(), kUtf8);
    }

    void list(int index) { list(index, size_of(body_of(index).file)); }

    void list(int index, uint64_t size) {
        const MimeMsg& record = message_.record(index);
        const std::optional<Readable> name = given_name(record);
        others_.add({std::to_string(index), std::to_string(size), visible(type_of(record)),
                     name ? shown(*name) : std::string("-")});
    }

    void write_others() {
        for (const Range& range : message_.uncovered) {
            others_.add({"-", std::to_string(range.end - range.start), "uncovered", "-"});
        }
        if (others_.empty()) return;
        output_.write("\n");
        others_.print(output_);
    }

    const ParsedMessage& message_;
    const bool html_as_text_;
    Session& session_;
    Output& output_;
    Exit exit_ = Exit::success;  // of what could not be shown
    Table others_{{{"part", Table::Align::right}, {"size", Table::Align::right}, {"type"}, {"name"}}};
};

}  // namespace

Exit write_letter(const ParsedMessage& message, bool html_as_text, Session& session) {
    return Letter(message, html_as_text, session).write();
}

}  // namespace vel::command
