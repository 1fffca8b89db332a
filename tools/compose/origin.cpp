#include "tools/compose/origin.h"

#include <sys/random.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <ctime>

#include "tools/io/exit_code.h"
#include "vel/rfc822.h"

namespace vel::command {

std::string date_line() {
    std::array<char, 64> text{};
    time_t2rfc822date(std::time(nullptr), text.data());
    return std::string("Date: ").append(text.data());
}

std::string message_id_line(const std::string& sender) {
    using std::chrono::microseconds;
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    const auto time = static_cast<unsigned long long>(std::chrono::duration_cast<microseconds>(now).count());
    uint64_t random = 0;
    if (::getrandom(&random, sizeof random, 0) != sizeof random)
        throw Failure::of_system_call(Exit::io_error, "random numbers");
    std::array<char, 64> id{};
    std::snprintf(id.data(), id.size(), "%llx.%016llx.VEL", time, static_cast<unsigned long long>(random));
    return std::string("Message-ID: <").append(id.data()).append(sender.substr(sender.rfind('@'))).append(">");
}

}  // namespace vel::command
