// The descriptor calls and the pointer calls: two ways to name one open file. They differ in how the
// record is found and in what a failing open logs.
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>

#include "frame/access.h"
#include "frame/file_pool.h"
#include "frame/line_file.h"
#include "frame/log.h"
#include "frame/settings.h"

namespace vel {
namespace {

constexpr Setting<10> kLogFileIO{"Debug", "LogFileIO", "FALSE"};
constexpr mode_t kFileMode = 0600;

// Logs an open or a close when the operator asked for it.
bool traces_files() { return is(read_directly(kLogFileIO), "TRUE"); }

void trace_open(const char* call, const VEL_FILE* file) {
    if (traces_files()) log_line(kLogError, "%s: %s, FileHandle #%d", call, file->name, file->fd);
}

// Positions are 32 bits, so a longer file is refused rather than wrapped.
bool fits(int fd) {
    struct stat status {};
    if (::fstat(fd, &status) == -1) return false;
    if (!S_ISREG(status.st_mode) || status.st_size <= INT32_MAX) return true;
    errno = EFBIG;
    return false;
}

Descriptor open_existing(const char* path, int access) {
    Descriptor fd(::open(path, (access & kForWriting ? O_WRONLY : O_RDONLY) | O_CLOEXEC, kFileMode));
    return fd && !fits(fd.get()) ? Descriptor() : std::move(fd);
}

// Kept: an existing file is not truncated.
Descriptor open_created(const char* path) {
    return Descriptor(::open(path, O_WRONLY | O_CREAT | O_CLOEXEC, kFileMode));
}

bool is_empty(const char* path) { return !path || !*path; }

// The record of an open descriptor, which it takes over; null, with the descriptor closed, without
// memory.
VEL_FILE* make_record(Descriptor fd, const char* path, int mode, int buffered) {
    VEL_FILE* file = NewVEL_FILE();
    if (!file) return nullptr;
    file->name = ::strdup(path);
    if (!file->name) {
        DelVEL_FILE(&file);
        return nullptr;
    }
    file->fd = fd.release();
    file->mode = mode;
    file->buffered = buffered != 0;
    return file;
}

// Puts a record into the pool. Returns its descriptor; -1, with the record destroyed, on failure.
int pool_record(VEL_FILE* file) {
    if (AddToFilePool(thread_file_pool, file) == 0) return file->fd;
    DelVEL_FILE(&file);
    return -1;
}

VEL_FILE* open_record(Descriptor fd, const char* path, int access, int buffered) {
    return make_record(std::move(fd), path, access & kForWriting ? 1 : 0, buffered);
}

// Ends a file: writes what it holds back and traces. Returns errno's value when the write fell short.
int finish(VEL_FILE* file) {
    int failure = 0;
    if (!LineFile(file).flush()) {
        failure = errno;
        log_text(kLogError, "fileclose: WriteFile failed.");
    }
    if (traces_files()) log_line(kLogError, "fileclose: FileHandle #%d", file->fd);
    return failure;
}

// Runs an operation on the file, -1 where there is none.
template <class Operation>
int on(VEL_FILE* file, Operation operation) {
    return file ? operation(LineFile(file)) : -1;
}

int put_text(LineFile file, const char* text) { return text ? file.put(text) : -1; }

int step_back(LineFile file) {
    file.step_back();
    return 1;
}

}  // namespace
}  // namespace vel

using vel::LineFile;
using vel::on;
using vel::pooled_file;

int getline(int handle, char** line) {
    return on(pooled_file(handle), [=](LineFile f) { return f.read_line(line); });
}

extern "C" {

int fileopen(const char* path, int access, int buffered) {
    if (vel::is_empty(path)) return -1;
    vel::Descriptor fd = vel::open_existing(path, access);
    if (!fd) {
        vel::log_line(vel::kLogError, "CreateFile failed: %s, error %ld", path, static_cast<long>(GetLastError()));
        return -1;
    }
    VEL_FILE* file = vel::open_record(std::move(fd), path, access, buffered);
    if (!file) return -1;
    const int handle = vel::pool_record(file);
    if (handle != -1) vel::trace_open("fileopen", file);
    return handle;
}

int filecreate(const char* path, int, int buffered) {
    if (vel::is_empty(path)) return -1;
    vel::Descriptor fd = vel::open_created(path);
    if (!fd) {
        vel::log_text(vel::kLogError, "open failed");
        return -1;
    }
    VEL_FILE* file = vel::make_record(std::move(fd), path, 1, buffered);
    if (!file) {
        vel::log_text(vel::kLogError, "Unable to allocate VEL_FILE object");
        return -1;
    }
    const int handle = vel::pool_record(file);
    if (handle == -1) {
        vel::log_text(vel::kLogError, "Unable to insert VEL_FILE object to memory pool");
        return -1;
    }
    vel::trace_open("filecreate", file);
    return handle;
}

int fileclose(int handle) {
    VEL_FILE* file = pooled_file(handle);
    if (!file) return 0;
    if (const int failure = vel::finish(file)) std::printf("%d\n", failure);  // The one print of the library.
    DelFromFilePool(thread_file_pool, handle);
    return 1;
}

VEL_FILE* FileOpen(const char* path, int access) {
    if (vel::is_empty(path)) return nullptr;
    vel::Descriptor fd = vel::open_existing(path, access);
    if (!fd) {
        vel::log_text(vel::kLogError, "CreateFile failed.");
        return nullptr;
    }
    VEL_FILE* file = vel::open_record(std::move(fd), path, access, 0);
    if (!file) {
        vel::log_text(vel::kLogError, "Unable to allocate new file objcet.");
        return nullptr;
    }
    vel::trace_open("fileopen", file);
    return file;
}

VEL_FILE* FileCreate(const char* path) {
    if (vel::is_empty(path)) return nullptr;
    vel::Descriptor fd = vel::open_created(path);
    if (!fd) return nullptr;
    VEL_FILE* file = vel::make_record(std::move(fd), path, 1, 0);
    if (file) vel::trace_open("filecreate", file);
    return file;
}

int FileClose(VEL_FILE* file) {
    vel::finish(file);
    DelVEL_FILE(&file);
    return 1;
}

int VELGetLine(int handle, char** line) { return ::getline(handle, line); }

int GetLine(VEL_FILE* file, char** line) {
    return on(file, [=](LineFile f) { return f.read_line(line); });
}

int putline(int handle, const char* text) {
    return on(pooled_file(handle), [=](LineFile f) { return vel::put_text(f, text); });
}
int PutLine(VEL_FILE* file, const char* text) {
    return on(file, [=](LineFile f) { return vel::put_text(f, text); });
}

int inch(int handle) {
    return on(pooled_file(handle), [](LineFile f) { return f.in(); });
}
int InCh(VEL_FILE* file) {
    return on(file, [](LineFile f) { return f.in(); });
}

int uninch(int, int handle) { return on(pooled_file(handle), vel::step_back); }
int UninCh(VEL_FILE* file, int) { return on(file, vel::step_back); }

int outch(int character, int handle) {
    return on(pooled_file(handle), [=](LineFile f) { return f.out(character); });
}
int OutCh(VEL_FILE* file, int character) {
    return on(file, [=](LineFile f) { return f.out(character); });
}

int setfpos(int handle, int32_t position) {
    return on(pooled_file(handle), [=](LineFile f) { return f.set_position(position); });
}
int SetFilePos(VEL_FILE* file, int32_t position) {
    return on(file, [=](LineFile f) { return f.set_position(position); });
}

int getfpos(int handle) {
    return on(pooled_file(handle), [](LineFile f) { return f.position(); });
}
int GetFilePos(VEL_FILE* file) {
    return on(file, [](LineFile f) { return f.position(); });
}

}  // extern "C"
