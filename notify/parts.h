// The parts of a notice while it is being made: files of the builders, which go in the end.
#ifndef VEL_NOTIFY_PARTS_H
#define VEL_NOTIFY_PARTS_H

#include <cstdio>
#include <memory>
#include <string_view>
#include <vector>

#include "frame/new_file.h"
#include "vel/frame.h"

namespace vel {

struct FileRemoved {
    void operator()(char* path) const {
        std::remove(path);
        std::free(path);
    }
};

// The malloc'ed path of a file that goes with it.
using BuiltFile = std::unique_ptr<char, FileRemoved>;

// Why there is no part.
enum class Trouble { none, no_name, no_file, unopened, unreadable, unwritten, unbuilt };

constexpr Trouble unless_written(bool is_whole) { return is_whole ? Trouble::none : Trouble::unwritten; }

// What the log says of each trouble; null: nothing.
struct Complaints {
    const char* no_name;
    const char* no_file;
    const char* unopened;
    const char* unreadable;
    const char* unwritten;
    const char* unbuilt;

    const char* of(Trouble trouble) const;
};

// Logs what failed, when there is something to say. Returns -1.
int failed(const char* complaint);

// Writes the texts of a chain, each with a line end behind it; nodes without a text are passed over.
bool put_lines(const ms* lines, std::string_view line_end, NewFile& file);

// As the builders take them.
struct Kind {
    const char* type;
    const char* subtype;
    const char* encoding;
    const ms* parameters = nullptr;
};

struct Heading;

// Of no more use when a part could not be added.
class Parts {
  public:
    // Adds a part whose body stands in a file.
    Trouble add(const Kind& kind, const char* body);

    // Adds a part whose body write(file) writes, a NewFile; it returns what went wrong.
    template <class Write>
    Trouble add_text(const Kind& kind, Write write);

    // Joins the parts, which go then. Null when that fails.
    BuiltFile join(const Heading& heading, const char* subtype, const ms* parameters = nullptr);

  private:
    std::vector<BuiltFile> files_;
};

template <class Write>
Trouble Parts::add_text(const Kind& kind, Write write) {
    COwned<char> name(_veltempnam(nullptr, "MIME"));
    if (!name) return Trouble::no_name;
    auto file = NewFile::create_at(std::move(name), NewFile::Writes::buffered);
    if (!file) return Trouble::no_file;
    if (const Trouble trouble = write(*file); trouble != Trouble::none) return trouble;
    const BuiltFile body(file->keep());
    return body ? add(kind, body.get()) : Trouble::unwritten;
}

}  // namespace vel

#endif
