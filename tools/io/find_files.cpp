#include "tools/io/find_files.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <system_error>
#include <utility>

namespace vel::command {
namespace {

struct DirectoryClosed {
    void operator()(DIR* directory) const { ::closedir(directory); }
};

enum class Kind { file, directory, other };

struct Entry {
    std::string name;
    Kind kind;
};

std::string path_of(const std::string& directory, const std::string& name) {
    return directory.ends_with('/') ? directory + name : directory + "/" + name;
}

Kind kind_of(const struct stat& status) {
    return S_ISREG(status.st_mode) ? Kind::file : S_ISDIR(status.st_mode) ? Kind::directory : Kind::other;
}

// Of a link, not of what it points to.
Kind kind_of(const std::string& directory, const dirent& entry) {
    switch (entry.d_type) {
        case DT_REG: return Kind::file;
        case DT_DIR: return Kind::directory;
        case DT_UNKNOWN: break;  // the file system does not say
        default: return Kind::other;
    }
    struct stat status {};
    return ::lstat(path_of(directory, entry.d_name).c_str(), &status) == 0 ? kind_of(status) : Kind::other;
}

// Sorted. False with errno when it cannot be read.
bool list(const std::string& directory, std::vector<Entry>& entries) {
    const std::unique_ptr<DIR, DirectoryClosed> open(::opendir(directory.c_str()));
    if (!open) return false;
    for (;;) {
        errno = 0;
        const dirent* entry = ::readdir(open.get());
        if (!entry) break;
        const std::string name = entry->d_name;
        if (name != "." && name != "..") entries.push_back({name, kind_of(directory, *entry)});
    }
    if (errno != 0) return false;
    std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) { return a.name < b.name; });
    return true;
}

bool is_maildir(const std::vector<Entry>& entries) {
    return std::count_if(entries.begin(), entries.end(), [](const Entry& entry) {
               return entry.kind == Kind::directory &&
                      (entry.name == "cur" || entry.name == "new" || entry.name == "tmp");
           }) == 3;
}

// Keeps the way back in a list of its own, so that depth costs no stack.
class Walk {
  public:
    explicit Walk(std::vector<FoundFile>& found) : found_(found) {}

    void run(const std::string& directory) {
        const std::size_t before = found_.size();
        ahead_.push_back({directory, Role::any});
        while (!ahead_.empty()) {
            const Step step = std::move(ahead_.back());
            ahead_.pop_back();
            if (step.role == Role::file) {
                found_.push_back({step.path});
            } else {
                enter(step);
            }
        }
        if (found_.size() == before) found_.push_back({directory, "no files are found in it"});
    }

  private:
    enum class Role {
        file,
        any,
        messages,  // cur or new of a Maildir
        maildir,   // counts only when it is one
    };

    struct Step {
        std::string path;
        Role role;
    };

    void enter(const Step& step) {
        std::vector<Entry> entries;
        if (!list(step.path, entries)) {
            found_.push_back({step.path, std::generic_category().message(errno)});
            return;
        }
        const bool maildir = step.role != Role::messages && is_maildir(entries);
        if (step.role == Role::maildir && !maildir) return;
        for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry) {
            if (maildir) {
                add_of_maildir(step.path, *entry);
            } else {
                add(step.path, *entry, step.role);
            }
        }
    }

    void add_of_maildir(const std::string& directory, const Entry& entry) {
        if (entry.kind != Kind::directory || entry.name == "tmp") return;
        const bool messages = entry.name == "cur" || entry.name == "new";
        ahead_.push_back({path_of(directory, entry.name), messages ? Role::messages : Role::maildir});
    }

    void add(const std::string& directory, const Entry& entry, Role role) {
        const bool hidden = entry.name.starts_with('.');
        if (entry.kind == Kind::file && !hidden) ahead_.push_back({path_of(directory, entry.name), Role::file});
        if (entry.kind == Kind::directory && role == Role::any) {
            ahead_.push_back({path_of(directory, entry.name), hidden ? Role::maildir : Role::any});
        }
    }

    std::vector<FoundFile>& found_;
    std::vector<Step> ahead_;  // in reverse
};

bool is_directory(const std::string& name) {
    struct stat status {};
    return name != "-" && ::stat(name.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

}  // namespace

std::vector<FoundFile> find_files(const std::vector<std::string>& names, bool recursive) {
    std::vector<FoundFile> found;
    for (const std::string& name : names) {
        if (recursive && is_directory(name)) {
            Walk(found).run(name);
        } else {
            found.push_back({name});
        }
    }
    return found;
}

}  // namespace vel::command
