#include "tools/verbs/texts.h"

#include <unistd.h>

#include "tools/io/blocks.h"
#include "tools/text/utf8.h"

namespace vel::command {
namespace {

constexpr std::string_view kStandardInput = "-";

std::string_view without_carriage_return(std::string_view line) {
    if (line.ends_with('\r')) line.remove_suffix(1);
    return line;
}

}  // namespace

void for_each_line(int fd, const std::function<void(std::string_view)>& on_line) {
    std::string begun;  // a line that goes on in the next block
    for_each_block(fd, [&](std::string_view block) {
        for (std::size_t feed = 0; (feed = block.find('\n')) != std::string_view::npos;) {
            const std::string_view line = block.substr(0, feed);
            on_line(without_carriage_return(begun.empty() ? line : std::string_view(begun.append(line))));
            begun.clear();
            block.remove_prefix(feed + 1);
        }
        begun += block;
        return true;
    });
    if (!begun.empty()) on_line(begun);
}

Exit for_each_text(const std::vector<std::string>& texts, const std::function<Exit(std::string_view)>& work) {
    Exit worst = Exit::success;
    for (const std::string& text : texts) {
        if (text == kStandardInput) {
            under_name(std::string(kStandardInput), [&] {
                for_each_line(STDIN_FILENO, [&](std::string_view line) { worst = worse(worst, work(line)); });
            });
        } else {
            worst = worse(worst, work(text));
        }
    }
    return worst;
}

std::string excerpt(std::string_view text) {
    constexpr std::size_t kMostQuoted = 200;
    const std::string_view beginning = cut_to(text, kMostQuoted);
    return std::string("\"").append(beginning).append(beginning.size() < text.size() ? "...\"" : "\"");
}

}  // namespace vel::command
