#include "tools/compose/draft.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <thread>

#include "tools/compose/field_name.h"
#include "tools/compose/header_words.h"
#include "tools/compose/line_pieces.h"
#include "tools/compose/origin.h"
#include "tools/compose/part.h"
#include "tools/compose/text_chain.h"
#include "tools/io/library_scratch.h"
#include "vel/build.h"

namespace vel::command {
namespace {

constexpr const char* kEmptyFile = "/dev/null";

// How the builders write what comes from the command line: its words are encoded already, its addresses are complete.
class AsGiven {
    const SettingInForce hosts_{"Options", "QualifyRecipientHosts", "NO"};
    const SettingInForce charset_{"Gateway", "LocalCharSet", "UTF-8"};
};

std::vector<std::string> headers_of(const std::vector<Mailbox>& mailboxes) {
    std::vector<std::string> texts;
    for (const Mailbox& mailbox : mailboxes) texts.push_back(mailbox.header);
    return texts;
}

bool has_field(const Draft& draft, std::string_view name) {
    return std::any_of(draft.fields.begin(), draft.fields.end(),
                       [&](const std::string& field) { return same(field_name(field), name); });
}

std::vector<std::string> all_fields(const Draft& draft) {
    std::vector<std::string> fields;
    if (!has_field(draft, "MIME-Version")) fields.emplace_back("Mime-version: 1.0");
    if (!has_field(draft, "Date")) fields.push_back(date_line());
    if (!has_field(draft, "Message-ID")) fields.push_back(message_id_line(draft.from.canonical));
    fields.insert(fields.end(), draft.fields.begin(), draft.fields.end());
    return fields;
}

// What the builders take for the header block, by reference.
struct Heading {
    explicit Heading(const Draft& draft)
        : from(draft.from.header),
          subject(header_text(draft.subject, std::string_view("Subject: ").size())),
          to(headers_of(draft.to)),
          cc(headers_of(draft.cc)),
          bcc(draft.names_bcc ? headers_of(draft.bcc) : std::vector<std::string>()),
          extra(all_fields(draft)) {}

    const std::string from, subject;
    const TextChain to, cc, bcc, extra;
};

ResultFile expect_file(char* made, const LibraryScratch& scratch) {
    ResultFile file(made);
    if (!file) throw scratch.failure();
    struct stat status {};
    if (::stat(made, &status) != 0) throw Failure::of_system_call(Exit::io_error, made);
    if (is_too_large(static_cast<uint64_t>(status.st_size))) throw_too_large();
    return file;
}

// A message when there is a heading, else a part of one.
ResultFile build_single(const Heading* heading, const Part& part, Scratch& scratch) {
    const LibraryScratch library(scratch);
    const TextChain parameters(part.parameters);
    const std::string type(part.type.type), subtype(part.type.subtype);
    const char* const body = part.body.path.c_str();
    if (!heading) {
        return expect_file(MimeBuildMessage(nullptr, nullptr, nullptr, nullptr, type.c_str(), subtype.c_str(),
                                            parameters.get(), part.encoding, nullptr, nullptr, body, nullptr, 0),
                           library);
    }
    return expect_file(
        MimeBuildMessageWithBCC(heading->from.c_str(), heading->to.get(), heading->subject.c_str(), heading->cc.get(),
                                heading->bcc.get(), type.c_str(), subtype.c_str(), parameters.get(), part.encoding,
                                nullptr, nullptr, body, heading->extra.get(), 0),
        library);
}

std::string boundary_of(const std::string& path) {
    constexpr std::string_view kParameter = "boundary=\"";
    std::string boundary;
    for_each_piece(path, [&](const LinePiece& piece) {
        const std::size_t start = piece.text.find(kParameter);
        if (!begins(piece.text, "Content-type:") || start == piece.text.npos) return true;
        const std::string_view value = piece.text.substr(start + kParameter.size());
        boundary = value.substr(0, value.find('"'));
        return false;
    });
    return boundary;
}

bool has_line(const std::string& path, const std::string& beginning) {
    bool found = false;
    for_each_piece(path, [&](const LinePiece& piece) {
        found = piece.begins && piece.text.starts_with(beginning);
        return !found;
    });
    return found;
}

// Builds the parts and, around them, the message, which may have to stand on another file system.
class Multipart {
  public:
    explicit Multipart(Scratch& scratch) : scratch_(scratch) {}

    void add(const Part& part) {
        built_.push_back(build_single(nullptr, part, scratch_));
        if (part.type == kMessageType) enclosed_.push_back(built_.back().get());
        paths_.push_back(built_.back().get());
    }

    // The builder's boundary is new with every second.
    ResultFile build(const Heading& heading, Scratch& scratch) {
        for (;;) {
            ResultFile message = build_once(heading, scratch);
            const std::string delimiter = std::string("--").append(boundary_of(message.get()));
            const bool is_taken = std::any_of(enclosed_.begin(), enclosed_.end(),
                                              [&](const char* path) { return has_line(path, delimiter); });
            if (!is_taken) return message;
            std::this_thread::sleep_for(std::chrono::seconds(1));
        }
    }

  private:
    ResultFile build_once(const Heading& heading, Scratch& scratch) {
        const LibraryScratch library(scratch);
        std::vector<char*> paths = paths_;
        paths.push_back(nullptr);
        return expect_file(MimeBuildMultipartMessageWithBCC(
                               heading.from.c_str(), heading.to.get(), heading.subject.c_str(), heading.cc.get(),
                               heading.bcc.get(), paths.data(), nullptr, nullptr, heading.extra.get(), 0),
                           library);
    }

    Scratch& scratch_;  // of the parts
    std::vector<ResultFile> built_;
    std::vector<char*> paths_;
    std::vector<const char*> enclosed_;  // whose lines stand as they are
};

}  // namespace

void add_field(Draft& draft, const std::string& line) {
    constexpr std::array<std::string_view, 6> kOwn{"From", "To", "Cc", "Bcc", "Subject", "MIME-Version"};
    expect_one_line("--header", line);
    const std::string name(field_name(line));
    if (name.empty())
        throw Failure(Exit::usage,
                      std::string("--header: \"").append(line).append("\" is no header line, NAME: VALUE"));
    const bool is_own = std::any_of(kOwn.begin(), kOwn.end(), [&](std::string_view own) { return same(name, own); });
    if (is_own || begins(name, "Content-"))
        throw Failure(Exit::usage, std::string("--header: ").append(name).append(" is written anyway"));
    const std::string_view value = trimmed(std::string_view(line).substr(line.find(':') + 1));
    draft.fields.push_back(name + ": " + header_text(value, name.size() + 2));
}

// Parts are read in the order in which they are named.
ResultFile build_message(const Draft& draft, Session& session, Scratch& scratch) {
    const AsGiven as_given;
    const Heading heading(draft);
    const auto text = [&](bool enclosed) {
        const std::string file = draft.text.value_or(kEmptyFile);
        return under_name(file, [&] { return text_part(file, draft.charset, enclosed, session); });
    };
    if (draft.attachments.empty()) return build_single(&heading, text(false), scratch);
    Multipart multipart(session.scratch);
    if (draft.text) multipart.add(text(true));
    for (const std::string& file : draft.attachments) {
        multipart.add(under_name(file, [&] { return attached_part(file, draft.type_of, session); }));
    }
    return multipart.build(heading, scratch);
}

}  // namespace vel::command
