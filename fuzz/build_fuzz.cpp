// Builders with hostile values: any texts for header fields and any body, in each encoding, and what was built as a part
// of another message and on its way into the queue. A parameter of ASCII comes back from its quotes.
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <vector>

#include "build/date_lines.h"
#include "build/header_value.h"
#include "frame/owned.h"
#include "fuzz/directory.h"
#include "fuzz/expect.h"
#include "vel/build.h"
#include "vel/frame.h"
#include "vel/platform/config.h"
#include "vel/words.h"

namespace {

// The pieces between the NULs; the last one holds what is behind them.
std::array<std::string, 6> pieces_of(std::string_view input) {
    std::array<std::string, 6> pieces;
    for (std::string& piece : pieces) {
        const std::size_t end = &piece == &pieces.back() ? input.npos : input.find('\0');
        piece = input.substr(0, end);
        input.remove_prefix(end == input.npos ? input.size() : end + 1);
    }
    return pieces;
}

void expect_quoted(const std::string& parameter) {
    const vel::COwned<char> quoted(process_param(parameter.c_str()));
    const std::size_t equals = parameter.find('=');
    expect_same(quoted ? "quoted" : "none", equals == parameter.npos ? "none" : "quoted");
    if (!quoted || parameter[equals + 1] == '"' || !IsStringAllAscii(parameter.c_str())) return;
    const std::string_view text = quoted.get();
    std::string value;
    for (std::size_t i = equals + 2; i + 1 < text.size(); ++i) value += text[text[i] == '\\' ? ++i : i];
    expect_same(value, parameter.substr(equals + 1));
}

void remove_built(char* path) {
    if (path) std::filesystem::remove(path);
    std::free(path);
}

void rewrite_dates(std::string_view message) {
    vel::WithDatesRewritten edit;
    for (bool begins = true; !message.empty();) {
        const std::string_view line = message.substr(0, std::min<std::size_t>(message.find('\n'), 1023) + 1);
        edit(line, begins);
        begins = line.ends_with('\n');
        message.remove_prefix(line.size());
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const int fd = start_in_directory();
    auto [charset, address, subject, parameter, extra, body] = pieces_of({reinterpret_cast<const char*>(data), size});
    if (::ftruncate(fd, 0) != 0 || ::pwrite(fd, body.data(), body.size(), 0) != static_cast<ssize_t>(body.size()))
        return 0;
    ProfileOverlaySet("Gateway", "LocalCharSet", charset.c_str());
    std::string path = "/proc/self/fd/" + std::to_string(fd);
    ms second{address.data(), nullptr}, addresses{address.data(), &second};
    ms parameters{parameter.data(), nullptr}, lines{extra.data(), nullptr};
    for (const char* encoding : {"base64", "quoted-printable", "x-uue", "7bit"}) {
        char* part = MimeBuildMessageWithBCC(address.c_str(), &addresses, subject.c_str(), nullptr, &addresses,
                                             "message", "rfc822", &parameters, encoding, extra.c_str(), subject.c_str(),
                                             path.c_str(), &lines, 0);
        char* const parts[] = {part, path.data(), nullptr};
        remove_built(
            MimeBuildMultipartMessage(nullptr, &addresses, nullptr, nullptr, parts, nullptr, &parameters, &lines, 0));
        remove_built(part);
    }
    expect_quoted(parameter);
    rewrite_dates(body);
    return 0;
}
