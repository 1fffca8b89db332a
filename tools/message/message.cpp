#include "tools/message/message.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <optional>
#include <string_view>
#include <utility>

#include "tools/io/exit_code.h"
#include "tools/message/entity.h"
#include "tools/message/uncovered.h"

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

constexpr int kRepairs = 4;

constexpr std::size_t kMostNamed = 5;  // of the fields that a copy lacks

// What the attempts at a message came to.
struct Outcome {
    Pool pool;  // null: nothing could be read
    Fallback fallback = Fallback::none;
    std::vector<LogLine> refusal;  // the lines of the first attempt when it failed
    std::vector<LogLine> lines;    // the lines of the last one
    std::vector<RemovedField> removed;
    RemovedRanges removed_ranges;
};

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
        const GrammarInForce in_force(kBlankAccepted);
        Repair repair(input_.path, options_.nested, session_);
        for (int i = 0; i < kRepairs && repair.make_copy(); ++i) {
            if (!parse(kBlankAccepted, repair.path())) continue;
            outcome_.removed = repair.fields();
            outcome_.removed_ranges = repair.ranges();
            input_.path = repair.path();
            input_.copies.push_back(repair.release());
            return true;
        }
        return false;
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

void show(const std::string& name, const std::vector<LogLine>& lines, int level, Output& output) {
    for (const LogLine& line : lines) {
        if (line.level <= level || is_about_field(line)) output.complain(name, line.text);
    }
}

std::string names_of(const std::vector<RemovedField>& removed) {
    std::string names;
    for (std::size_t i = 0; i < std::min(kMostNamed, removed.size()); ++i) {
        names.append(i == 0 ? "" : ", ").append(description_of(removed[i]));
    }
    if (removed.size() > kMostNamed) names += " and " + std::to_string(removed.size() - kMostNamed) + " more";
    return names;
}

}  // namespace

const char* name_of(Fallback fallback) {
    constexpr std::array<const char*, 4> kNames{nullptr, "lenient", "repaired", "flat"};
    return kNames[static_cast<std::size_t>(fallback)];
}

std::string remedy_of(const ParsedMessage& message) {
    switch (message.fallback) {
        case Fallback::none: break;
        case Fallback::lenient: return "refused; read with the lenient parameter grammar";
        case Fallback::repaired: return "refused; read from a copy without " + names_of(message.removed);
        case Fallback::flat: return "refused; read as a message that is not MIME";
    }
    return {};
}

ParsedMessage read_message(const std::string& name, const ParseOptions& options, Session& session) {
    Input input = open_input(name, session);
    std::string file = input.path;
    session.journal.take();
    Outcome outcome = Attempts(input, options, session).run();
    if (!outcome.pool) {
        show(name, outcome.refusal, options.level, session.output);
        show(name, outcome.lines, options.level, session.output);
        throw Failure(Exit::bad_data, "cannot be parsed");
    }
    Tree tree(*outcome.pool);
    const bool mime = came_from_mime_parser(*outcome.pool->items[0]);
    std::vector<Range> uncovered = uncovered_ranges(*outcome.pool, tree, input.path);
    return {
        .name = name,
        .file = std::move(file),
        .input = std::move(input),
        .pool = std::move(outcome.pool),
        .tree = std::move(tree),
        .mime = mime,
        .fallback = outcome.fallback,
        .refusal = std::move(outcome.refusal),
        .messages = std::move(outcome.lines),
        .removed = std::move(outcome.removed),
        .removed_ranges = std::move(outcome.removed_ranges),
        .uncovered = std::move(uncovered),
    };
}

ParsedMessage parse_message(const std::string& name, const ParseOptions& options, Session& session) {
    ParsedMessage message = read_message(name, options, session);
    if (message.input.normalized) {
        session.output.complain(name, "header lines end in bare LF; offsets are those of a copy with CR LF");
    }
    show(name, message.refusal, options.level, session.output);
    if (message.fallback != Fallback::none) {
        const char* caution = message.fallback == Fallback::repaired ? "; offsets are those of the copy" : "";
        session.output.complain(name, remedy_of(message) + caution);
    }
    show(name, message.messages, options.level, session.output);
    return message;
}

}  // namespace vel::command
