// The verbs of the command. Each has a file of its own and a row in the table of verb.cpp.
//
// How a verb is written:
//
//   Exit run_count(Arguments arguments, Session& main) {
//       CommandLine line("count", "Counts entities.", kFooter);
//       line.add_files();
//       line.add_json();
//       line.add_flag("--deep", deep, "...");  // options of its own
//       if (const auto exit = line.read(std::move(arguments), main)) return *exit;
//       return for_each_file(line, main, [&](const std::string& file, Session& session) {
//           const ParsedMessage message = parse_message(file, line.parse_options, session);
//           session.output.write(std::to_string(message.tree.count()).append("\n"));
//           return Exit::success;
//       });
//   }
//
// The function that works on one file runs on several threads at once: it uses its own session, not main,
// and what it captures it only reads. Data goes through session.output.write, a message through
// session.output.complain; both come out in the order of the files. What must happen in that order, such as
// giving out names in a directory, comes behind session.output.wait_for_turn(). Failure gives a file up.
// A verb without files does its work with main itself. One that makes one file out of another is written with
// transfer_file (one_file.h).
#ifndef VEL_TOOLS_VERBS_VERB_H
#define VEL_TOOLS_VERBS_VERB_H

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/io/exit_code.h"
#include "tools/io/session.h"

namespace vel::command {

using Arguments = std::vector<std::string>;  // what stands behind the verb

struct Verb {
    std::string_view name;
    std::string_view summary;
    Exit (*run)(Arguments arguments, Session& main);
};

std::span<const Verb> verbs();

// The lines of a table of verbs in a help.
std::string summary_of(std::span<const Verb> verbs);

// The verb of a table that has this name; null when none has.
const Verb* verb_named(std::span<const Verb> verbs, std::string_view name);

Exit run_parse(Arguments arguments, Session& main);
Exit run_show(Arguments arguments, Session& main);
Exit run_extract(Arguments arguments, Session& main);
Exit run_headers(Arguments arguments, Session& main);
Exit run_dsn(Arguments arguments, Session& main);
Exit run_check(Arguments arguments, Session& main);
Exit run_split(Arguments arguments, Session& main);
Exit run_build(Arguments arguments, Session& main);
Exit run_send(Arguments arguments, Session& main);
Exit run_bounce(Arguments arguments, Session& main);
Exit run_encode(Arguments arguments, Session& main);
Exit run_decode(Arguments arguments, Session& main);
Exit run_word(Arguments arguments, Session& main);
Exit run_japanese(Arguments arguments, Session& main);
Exit run_address(Arguments arguments, Session& main);
Exit run_date(Arguments arguments, Session& main);
Exit run_init(Arguments arguments, Session& main);
Exit run_config(Arguments arguments, Session& main);
Exit run_notify(Arguments arguments, Session& main);
Exit run_log(Arguments arguments, Session& main);
Exit run_queue(Arguments arguments, Session& main);
Exit run_types(Arguments arguments, Session& main);

// Runs what the arguments, without the program's name, ask for.
Exit run_command(Arguments arguments, Session& main);

}  // namespace vel::command

#endif
