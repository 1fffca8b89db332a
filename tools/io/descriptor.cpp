#include "tools/io/descriptor.h"

#include <cerrno>

namespace vel::command {
namespace {

template <class Call>
ssize_t repeated(Call&& call) {
    ssize_t result = 0;
    do result = call();
    while (result == -1 && errno == EINTR);
    return result;
}

}  // namespace

ssize_t read_block(int fd, char* buffer, std::size_t size) {
    return repeated([=] { return ::read(fd, buffer, size); });
}

bool write_all(int fd, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t put = repeated([=] { return ::write(fd, bytes.data(), bytes.size()); });
        if (put < 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(put));
    }
    return true;
}

}  // namespace vel::command
