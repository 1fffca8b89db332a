#include "tools/io/input.h"

#include <sys/stat.h>

#include <string_view>

#include "tools/io/blocks.h"
#include "tools/io/exit_code.h"
#include "tools/io/private_copy.h"

namespace vel::command {
namespace {

constexpr std::string_view kStandardInput = "-";

// Nothing for a regular file, which is read where it is.
std::vector<PrivateFile> private_copy(const std::string& name, Session& session, const char* about_directory) {
    std::vector<PrivateFile> copies;
    if (name == kStandardInput) {
        session.output.wait_for_turn();  // who is named first reads it
        copies.push_back(copy_stream(STDIN_FILENO, session.scratch));
        return copies;
    }
    const Descriptor file = open_for_reading(name);
    struct stat status {};
    if (::fstat(file.get(), &status) != 0) throw Failure::of_system_call(Exit::io_error, "");
    if (S_ISDIR(status.st_mode)) throw Failure(Exit::no_input, about_directory);
    if (!S_ISREG(status.st_mode)) {
        copies.push_back(copy_stream(file.get(), session.scratch));
    } else if (is_too_large(static_cast<uint64_t>(status.st_size))) {
        throw_too_large();
    }
    return copies;
}

// Reads a header block for the kind of its line ends.
class LineEndSearch {
  public:
    // False when nothing more needs to be read.
    bool read(std::string_view block) {
        for (const char c : block) {
            if (c != '\n') {
                blank_ = blank_ && c == '\r' && last_ == '\n';
            } else if (last_ != '\r') {
                found_ = true;
                return false;
            } else if (blank_) {
                return false;
            } else {
                blank_ = true;
            }
            last_ = c;
        }
        return true;
    }

    bool found() const { return found_; }

  private:
    char last_ = '\n';
    bool blank_ = true;  // the line has nothing but, perhaps, a CR
    bool found_ = false;
};

}  // namespace

bool has_bare_line_ends(const std::string& path) {
    LineEndSearch search;
    for_each_block(open_for_reading(path).get(), [&](std::string_view block) { return search.read(block); });
    return search.found();
}

Input open_as_it_stands(const std::string& name, Session& session, const char* about_directory) {
    Input input;
    input.copies = private_copy(name, session, about_directory);
    input.path = input.copies.empty() ? name : input.copies.back().path();
    return input;
}

Input open_input(const std::string& name, Session& session) {
    Input input = open_as_it_stands(name, session, "is a directory; --recursive reads what is in it");
    if (has_bare_line_ends(input.path)) {
        input.copies.push_back(copy_with_line_ends(input.path, session.scratch));
        input.path = input.copies.back().path();
        input.normalized = true;
    }
    return input;
}

}  // namespace vel::command
