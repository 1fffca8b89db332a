#include "tools/io/transfer.h"

#include <cerrno>
#include <filesystem>

#include "tools/io/blocks.h"
#include "tools/io/library_owned.h"
#include "tools/io/library_scratch.h"

namespace vel::command {
namespace {

// The search for a name that is free ends in ENOENT.
bool is_of_the_system(int error) { return error != 0 && error != ENOENT; }

Failure failure_to_read(int error) {
    errno = error;
    return Failure::of_system_call(error == EISDIR || error == EBADF ? Exit::no_input : Exit::io_error, "");
}

}  // namespace

int Transfer::stream() {
    if (name_ == "-") return STDIN_FILENO;
    return opened_.emplace(open_for_reading(name_)).get();
}

const std::string& Transfer::path() {
    if (!input_) input_ = open_as_it_stands(name_, session_);
    return input_->path;
}

int32_t Transfer::size() { return static_cast<int32_t>(std::filesystem::file_size(path())); }

void Transfer::write(const std::function<Wrong(int out)>& call) {
    const int out = target_.descriptor();
    run([&] { return call(out); });
    target_.finish();
}

void Transfer::write_new(const std::function<Wrong(const char* path)>& call) {
    const PrivateFile made(target_.scratch().new_path());
    run([&] { return call(made.path().c_str()); });
    target_.take(made.path());
}

void Transfer::write_made(const std::function<Wrong(char** path)>& call) {
    const LibraryScratch written_to(target_.scratch());
    char* path = nullptr;
    run([&] { return call(&path); });
    const ResultFile made(path);
    target_.take(made.get());
}

void Transfer::run(const std::function<Wrong()>& call) {
    errno = 0;
    const Wrong wrong = call();
    const int error = errno;
    for (const LogLine& said : session_.journal.take()) {
        if (wrong && said.level == kErrorLevel) session_.output.complain(name_, said.text);
    }
    if (!wrong) return;
    if (!is_of_the_system(error)) throw Failure(Exit::bad_data, wrong);
    if (target_.is_to_blame_for(error)) target_.fail(error);
    throw failure_to_read(error);
}

}  // namespace vel::command
