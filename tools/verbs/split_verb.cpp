// vel split: a mailbox file into message files.
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <nlohmann/json.hpp>

#include "tools/io/blocks.h"
#include "tools/io/destination.h"
#include "tools/io/progress.h"
#include "tools/io/scratch_file.h"
#include "tools/message/date_reading.h"
#include "tools/message/mailbox_cutter.h"
#include "tools/message/message_json.h"
#include "tools/text/ascii.h"
#include "tools/text/text_forms.h"
#include "tools/verbs/command_line.h"
#include "tools/verbs/many_files.h"

namespace vel::command {
namespace {

const std::string kFooter =
    std::string(
        "Example:\n"
        "  vel split archive.mbox -o messages && vel parse -r messages\n"
        "\n"
        "A message begins behind a line that begins with \"From \", holds two colons and ends in a year, wherever the\n"
        "line stands. The messages become message-00001.eml and so on, byte for byte, without that line and without\n"
        "the one blank line that a mailbox has before the next one and at its end. A name that is taken gets a\n"
        "number; nothing is overwritten. Text before the first message becomes message-00000.eml, with exit code\n"
        "65; so does a file without any separator line, of which nothing is written. The mailbox may have any size.\n"
        "The messages of several mailboxes are numbered on, in the order in which the mailboxes are named. From\n"
        "message-100000.eml on the names are longer and no longer sort by number (sort -V does).\n"
        "\n"
        "The JSON object, one a message: file (the mailbox), number (as in the name; 0: text before the first\n"
        "message), path, size, offset (of the separator line in the mailbox), separator, sender, date (null where it "
        "is none: layout and what vel date\n"
        "shows).\n"
        "\n") +
    kAboutJsonTexts;

struct Options {
    std::string directory;
    MailboxCutter::Options cutting;
};

void declare(CommandLine& line, Options& options) {
    line.add_files("MBOX", "Mailbox files");
    line.add_option("-o,--output", "DIR", options.directory, "Directory to write to, made when missing").required();
    line.add_flag("--keep-separator", options.cutting.keep_separator,
                  "Keep separator and blank lines: the files joined give the mailbox again, without blank "
                  "lines at its very beginning");
    line.add_flag("--unquote", options.cutting.unquote, "Take one \">\" off lines such as \">From \"");
    line.add_json();
}

// What a separator line says: "From ", the sender, a blank, the date.
struct Separator {
    std::string line;  // without its line end
    std::string sender;
    std::string date;

    explicit Separator(std::string_view text) : line(text.substr(0, text.find_last_not_of("\r\n") + 1)) {
        const std::string_view rest = trimmed(std::string_view(line).substr(line.find(' ') + 1));
        const std::size_t blank = std::min(rest.size(), rest.find(' '));
        sender = rest.substr(0, blank);
        date = trimmed(rest.substr(blank));
    }
};

// Writes the pieces of a mailbox into files and tells of each.
class Splitter : public MailboxCutter::Sink {
  public:
    // before: how many messages of other mailboxes have been written; those of this one are added.
    Splitter(const std::string& mailbox, bool json, Destination& destination, uint64_t& before, Output& output)
        : mailbox_(mailbox), json_(json), destination_(destination), before_(before), output_(output) {}
    ~Splitter() override { before_ += number_; }

    void begin(std::string_view separator, uint64_t offset) override {
        if (!separator.empty() && ++number_ == 1) place_text_before();
        separator_ = separator.empty() ? std::nullopt : std::optional<Separator>(separator);
        offset_ = offset;
        file_.emplace(destination_.scratch());
    }

    void content(std::string_view bytes) override { file_->write(bytes); }

    void end() override {
        if (number_ > 0) place();
    }

    Exit finish() {
        if (number_ == 0 && file_) {
            output_.complain(mailbox_, "no separator line: no mailbox; nothing is written");
            return Exit::bad_data;
        }
        if (!json_)
            output_.write(visible(mailbox_) + ": " + std::to_string(number_) + " message" +
                          (number_ == 1 ? "\n" : "s\n"));
        return exit_;
    }

  private:
    void place_text_before() {
        if (!file_) return;
        output_.complain(mailbox_, "text stands before the first separator line");
        exit_ = Exit::bad_data;
        number_ = 0;
        place();
        number_ = 1;
    }

    void place() {
        const uint64_t size = file_->size();
        const PrivateFile whole = file_->finish();
        const std::string path = destination_.place(name_of_message(), whole.path().c_str(), size);
        file_.reset();
        json_ ? write_json(path, size) : write_row(path, size);
        output_.flush();  // when the run is interrupted, the list holds what stands in the directory
    }

    uint64_t number_in_name() const { return number_ == 0 ? 0 : before_ + number_; }

    std::string name_of_message() const {
        char name[64];
        std::snprintf(name, sizeof name, "message-%05llu.eml", static_cast<unsigned long long>(number_in_name()));
        return name;
    }

    void write_row(const std::string& path, uint64_t size) {
        char start[64];
        std::snprintf(start, sizeof start, "%10llu  ", static_cast<unsigned long long>(size));
        std::string row = start + visible(path);
        if (separator_)
            row.append("  ").append(visible(separator_->sender)).append("  ").append(visible(separator_->date));
        output_.write(row.append("\n"));
    }

    void write_json(const std::string& path, uint64_t size) {
        Json object{{"file", json_text(mailbox_)},
                    {"number", number_in_name()},
                    {"path", json_text(path)},
                    {"size", size},
                    {"offset", offset_}};
        for (const char* key : {"separator", "sender", "date"}) object[key] = nullptr;
        if (separator_) {
            object["separator"] = json_text(separator_->line);
            object["sender"] = json_text(separator_->sender);
            if (const auto date = read_date(separator_->date)) {
                object["date"] = {{"layout", vel::command::name_of(date->layout)}};
                object["date"].update(time_json(date->time));
            }
        }
        output_.write(one_line(object).append("\n"));
    }

    const std::string& mailbox_;
    const bool json_;
    Destination& destination_;
    uint64_t& before_;
    Output& output_;
    std::optional<ScratchFile> file_;
    std::optional<Separator> separator_;
    uint64_t offset_ = 0;
    uint64_t number_ = 0;
    Exit exit_ = Exit::success;
};

uint64_t size_of_file(int fd) {
    struct stat status {};
    return ::fstat(fd, &status) == 0 && S_ISREG(status.st_mode) ? static_cast<uint64_t>(status.st_size) : 0;
}

// In the mailbox's turn, since the numbers run on from one to the next.
Exit split(const std::string& mailbox, const CommandLine& line, const Options& options, Destination& destination,
           uint64_t& before, Output& output) {
    output.wait_for_turn();
    const bool standard_input = mailbox == "-";
    const Descriptor file = standard_input ? Descriptor() : open_for_reading(mailbox);
    const int fd = standard_input ? STDIN_FILENO : file.get();
    Splitter splitter(mailbox, line.json, destination, before, output);
    MailboxCutter cutter(options.cutting, splitter);
    Progress progress(output.streams(), Progress::Unit::bytes, size_of_file(fd));
    for_each_block(fd, [&](std::string_view block) {
        cutter.feed(block);
        progress.advance(block.size());
        return true;
    });
    cutter.finish();
    return splitter.finish();
}

}  // namespace

Exit run_split(Arguments arguments, Session& main) {
    CommandLine line("split", "Cuts mailbox files into messages.", kFooter);
    Options options;
    declare(line, options);
    if (const auto exit = line.read(std::move(arguments), main)) return *exit;
    Destination destination(options.directory, {}, main.scratch);
    main.output.streams().go_on_without_reader();
    uint64_t before = 0;
    return for_each_file(line, main, [&](const std::string& mailbox, Session& session) {
        return split(mailbox, line, options, destination, before, session.output);
    });
}

}  // namespace vel::command
