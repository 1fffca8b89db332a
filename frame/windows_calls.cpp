// Calls with Windows names and shapes over POSIX. A handle is a descriptor of the file pool.
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "frame/access.h"
#include "frame/line_file.h"

namespace {

ssize_t write_again(int fd, const void* data, std::size_t length) {
    ssize_t put = 0;
    do put = ::write(fd, data, length);
    while (put == -1 && errno == EINTR);
    return put;
}

}  // namespace

extern "C" {

int CreateFile(const char* path, int how) {
    return how & vel::kForReading ? fileopen(path, vel::kForReading, vel::kUnbuffered)
                                  : filecreate(path, vel::kForWriting, vel::kUnbuffered);
}

int ReadFile(int handle, void* buffer, uint32_t length, uint32_t* got, void*) {
    if (handle == -1) return 0;
    const ssize_t moved = vel::read_again(handle, buffer, length);
    *got = moved < 0 ? 0 : static_cast<uint32_t>(moved);
    return moved >= 0;
}

int WriteFile(int handle, const void* buffer, uint32_t length, uint32_t* put, void*) {
    const ssize_t moved = handle == -1 ? -1 : write_again(handle, buffer, length);
    *put = moved < 0 ? 0 : static_cast<uint32_t>(moved);
    return moved >= 0;
}

int CloseHandle(int handle) { return fileclose(handle) != 0; }

uint32_t GetFileSize(int handle, uint32_t*) {
    struct stat status {};
    if (::fstat(handle, &status) == -1) return UINT32_MAX;
    return static_cast<uint32_t>(status.st_size);
}

int32_t SetFilePointer(int handle, int32_t offset, int32_t*, int whence) {
    if (handle == -1) return 0;
    const off_t reached = ::lseek(handle, offset, whence);
    if (reached <= INT32_MAX) return static_cast<int32_t>(reached);
    errno = EFBIG;
    return -1;
}

// Kept: the file is cut to the size that it has, which leaves it as it is.
int SetEndOfFile(int handle) {
    struct stat status {};
    if (handle == -1 || ::fstat(handle, &status) == -1) return 0;
    return ::ftruncate(handle, status.st_size) == 0;
}

int GetLastError(void) { return errno; }

void InitializeCriticalSection(CRITICAL_SECTION* section) {
    pthread_mutexattr_t recursive;
    pthread_mutexattr_init(&recursive);
    pthread_mutexattr_settype(&recursive, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(section, &recursive);
    pthread_mutexattr_destroy(&recursive);
}

void EnterCriticalSection(CRITICAL_SECTION* section) { pthread_mutex_lock(section); }
void LeaveCriticalSection(CRITICAL_SECTION* section) { pthread_mutex_unlock(section); }
void DeleteCriticalSection(CRITICAL_SECTION* section) { pthread_mutex_destroy(section); }

}  // extern "C"
