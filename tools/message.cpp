#include "tools/message.h"

#include <array>
#include <filesystem>
#include <iterator>
#include <optional>
#include <string_view>
#include <utility>

#include "tools/entity.h"
#include "tools/exit_code.h"
#include "tools/private_copy.h"
#include "tools/refused_fields.h"
#include "tools/uncovered.h"

namespace vel::command {
namespace {

constexpr const char* kSection = "Options";
constexpr const char* kStrictKey = "StrictMimeParsing";
constexpr const char* kBlankKey = "AcceptBlankValueInContentTypeParm";

// Settings for one attempt; null leaves what ostra.ini says.
struct Grammar {
    const char* strict;
    const char* accepts_blank;
};

constexpr Grammar kConfigured{nullptr, nullptr};
constexpr Grammar kBlankAccepted{"YES", "YES"};
constexpr Grammar kTolerant{"NO", "YES"};  // reads a value up to the next ";" and so cuts quoted ones that hold it

class GrammarInForce {
  public:
    explicit GrammarInForce(const Grammar& grammar)
        : strict_(kSection, kStrictKey, grammar.strict), blank_(kSection, kBlankKey, grammar.accepts_blank) {}

  private:
    SettingInForce strict_;
    SettingInForce blank_;
};

// Taking a field away may bring another one to light, in parts that were not reached before.
constexpr int kRepairs = 4;

// What the attempts at a message came to.
struct Outcome {
    Pool pool;  // null: nothing could be read
    Fallback fallback = Fallback::none;
    std::vector<LogLine> refusal;    // the lines of the first attempt when it failed
    std::vector<LogLine> lines;      // the lines of the last one
    std::size_t fields_dropped = 0;  // of a repaired message
};

// A field that the end of the file cuts off is refused, and the one before it would be next.
constexpr std::string_view kBlankLine = "\r\n";

// A complaint of the library that is not about the message.
bool tells_of_the_machine(std::string_view line) {
    return lower(line).find("out of memory") != std::string::npos || line.ends_with("ReadFile failed.") ||
           line.ends_with("fileopen failed.");
}

class Attempts {
  public:
    Attempts(Input& input, const ParseOptions& options, Session& session)
        : input_(input), options_(options), session_(session) {}

    Outcome run() {
        outcome_.fallback = make();
        return std::move(outcome_);
    }

  private:
    Fallback make() {
        if (parse(kConfigured, input_.path)) return Fallback::none;
        outcome_.refusal = std::move(outcome_.lines);
        for (const Grammar& grammar : {kBlankAccepted, kTolerant}) {
            if (parse(grammar, input_.path)) return Fallback::lenient;
        }
        if (repair()) return Fallback::repaired;
        mime_msg_pool* pool = nullptr;
        ParseNonMimeMessage(input_.path.c_str(), &pool);
        keep(pool);
        return Fallback::flat;
    }

    bool parse(const Grammar& grammar, const std::string& path) {
        const GrammarInForce in_force(grammar);
        mime_msg_pool* pool = nullptr;
        MimeParseMessage(path.c_str(), options_.nested, &pool);
        return keep(pool);
    }

    // Keeps the result of one attempt. A machine that gave up says nothing about the message.
    bool keep(mime_msg_pool* pool) {
        outcome_.pool.reset(pool);
        outcome_.lines = session_.journal.take();
        if (pool) return true;
        for (const LogLine& line : outcome_.lines) {
            if (tells_of_the_machine(line.text)) throw Failure(Exit::io_error, line.text);
        }
        return false;
    }

    bool repair() {
        std::optional<PrivateFile> copy;
        for (int i = 0; i < kRepairs; ++i) {
            const std::string& path = copy ? copy->path() : input_.path;
            const std::vector<Range> refused = find_refused(path);
            if (refused.empty()) return false;
            outcome_.fields_dropped += refused.size();
            const bool reaches_end = refused.back().end == std::filesystem::file_size(path);
            PrivateFile next = copy_without(refused, path, reaches_end ? kBlankLine : "", session_.scratch);
            copy.emplace(std::move(next));
            if (!parse(kBlankAccepted, copy->path())) continue;
            input_.path = copy->path();
            input_.copies.push_back(std::move(*copy));
            return true;
        }
        return false;
    }

    std::vector<Range> find_refused(const std::string& path) {
        const GrammarInForce in_force(kBlankAccepted);
        const std::vector<Range> refused = refused_fields(path, options_.nested);
        session_.journal.take();
        return refused;
    }

    Input& input_;
    const ParseOptions& options_;
    Session& session_;
    Outcome outcome_;
};

// The parser for messages that are not MIME fills no MIME field and places no record.
bool came_from_mime_parser(const MimeMsg& root) {
    return root.mimeVersion != 0 || root.contentType || root.nodeKind != 0;
}

// The library says at the level of notices too why it refuses a field.
bool names_refused_field(const LogLine& line) { return line.text.find("\" field invalid") != std::string::npos; }

void show(const std::string& name, const std::vector<LogLine>& lines, int level, Output& output) {
    for (const LogLine& line : lines) {
        if (line.level <= level || names_refused_field(line)) output.complain(name, line.text);
    }
}

std::string remedy(const Outcome& outcome) {
    switch (outcome.fallback) {
        case Fallback::none: break;
        case Fallback::lenient: return "refused; read with the lenient parameter grammar";
        case Fallback::repaired:
            return "refused; read from a copy without " + std::to_string(outcome.fields_dropped) +
                   (outcome.fields_dropped == 1 ? " header field" : " header fields") +
                   "; offsets are those of the copy";
        case Fallback::flat: return "refused; read as a message that is not MIME";
    }
    return {};
}

void explain(const std::string& name, const Outcome& outcome, int level, Output& output) {
    show(name, outcome.refusal, level, output);
    if (outcome.pool && outcome.fallback != Fallback::none) output.complain(name, remedy(outcome));
    show(name, outcome.lines, level, output);
}

}  // namespace

const char* name_of(Fallback fallback) {
    constexpr std::array<const char*, 4> kNames{nullptr, "lenient", "repaired", "flat"};
    return kNames[static_cast<std::size_t>(fallback)];
}

ParsedMessage parse_message(const std::string& name, const ParseOptions& options, Session& session) {
    Input input = open_input(name, session);
    if (input.normalized) {
        session.output.complain(name, "header lines end in bare LF; offsets are those of a copy with CR LF");
    }
    session.journal.take();
    Outcome outcome = Attempts(input, options, session).run();
    explain(name, outcome, options.level, session.output);
    if (!outcome.pool) throw Failure(Exit::bad_data, "cannot be parsed");
    Tree tree(*outcome.pool);
    const bool mime = came_from_mime_parser(*outcome.pool->items[0]);
    std::vector<Range> uncovered = uncovered_ranges(*outcome.pool, tree, input.path);
    std::vector<LogLine> messages = std::move(outcome.refusal);
    std::move(outcome.lines.begin(), outcome.lines.end(), std::back_inserter(messages));
    return {name, std::move(input), std::move(outcome.pool), std::move(tree),
            mime, outcome.fallback, std::move(messages),     std::move(uncovered)};
}

}  // namespace vel::command
