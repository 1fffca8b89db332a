// The command's private temporary directories.
#ifndef VEL_TOOLS_IO_SCRATCH_H
#define VEL_TOOLS_IO_SCRATCH_H

#include <list>
#include <mutex>
#include <string>
#include <utility>

namespace vel::command {

// Made (0700) when it is first asked for, removed with all that is in it in the end. Any thread may call.
class Scratch {
  public:
    Scratch();  // below $TMPDIR, or /tmp
    explicit Scratch(std::string parent) : parent_(std::move(parent)) {}
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    ~Scratch();

    // Another one, below a directory that is made when it is missing, so that a finished file is moved
    // there and not copied. It lives as long as this one.
    Scratch& below(const std::string& parent);

    // The directory; made now, if need be. Throws Failure.
    const std::string& directory();

    // A path in it that was not given out before. Throws Failure.
    std::string new_path();

    // Keeps the directory from being abandoned while the result lives: for steps that must not be cut
    // in two.
    std::unique_lock<std::mutex> hold() { return std::unique_lock(mutex_); }

    // Removes everything from another thread, after which whoever asks for the directory waits for
    // the end of the process.
    void abandon();

  private:
    const std::string& made();
    void remove();

    std::mutex mutex_;
    std::string parent_;  // empty: the usual place for temporary files
    std::string directory_;
    unsigned count_ = 0;
    std::list<Scratch> others_;
};

// A file that is removed in the end.
class PrivateFile {
  public:
    explicit PrivateFile(std::string path) : path_(std::move(path)) {}
    PrivateFile(PrivateFile&& other) noexcept : path_(std::exchange(other.path_, {})) {}
    PrivateFile& operator=(PrivateFile&&) = delete;
    ~PrivateFile();
    const std::string& path() const { return path_; }

  private:
    std::string path_;
};

}  // namespace vel::command

#endif
