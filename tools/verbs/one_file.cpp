#include "tools/verbs/one_file.h"

#include "tools/verbs/many_files.h"

namespace vel::command {

Exit transfer_file(CommandLine& line, Session& main, const std::function<void(Transfer&)>& work) {
    if (line.files.empty()) line.files = {"-"};
    Target target(line.output, main);
    return for_each_file(line, main, [&](const std::string& file, Session& session) {
        Transfer transfer(file, target, session);
        work(transfer);
        return Exit::success;
    });
}

}  // namespace vel::command
