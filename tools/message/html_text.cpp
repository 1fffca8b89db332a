#include "tools/message/html_text.h"

#include <array>
#include <optional>
#include <vector>

#include "tools/io/blocks.h"
#include "tools/io/exit_code.h"
#include "tools/io/filter.h"
#include "tools/io/scratch_file.h"
#include "tools/text/charset.h"

namespace vel::command {
namespace {

struct Browser {
    const char* name;
    std::vector<std::string> arguments;  // read standard input, write text in UTF-8, fetch nothing
};

const std::array<Browser, 2>& browsers() {
    static const std::array<Browser, 2> kBoth{{
        {"w3m", {"-dump", "-T", "text/html", "-O", "UTF-8", "-cols", "80", "-no-cookie", "-o", "display_image=0"}},
        {"lynx", {"-dump", "-stdin", "-force_html", "-display_charset=UTF-8", "-width=80", "-localhost", "-nolist"}},
    }};
    return kBoth;
}

// Before what the HTML says, which then no longer counts.
constexpr std::string_view kSaysUtf8 = "<meta charset=\"utf-8\">";

PrivateFile in_utf8(const std::string& file, std::string_view charset, Scratch& scratch) {
    ScratchFile converted(scratch);
    converted.write(kSaysUtf8);
    Utf8Converter converter(charset);
    std::string text;
    for_each_block(open_for_reading(file).get(), [&](std::string_view block) {
        converter.more(block, text);
        converted.write(text);
        text.clear();
        return true;
    });
    converter.finish(text);
    converted.write(text);
    return converted.finish();
}

}  // namespace

PrivateFile html_as_text(const std::string& file, std::string_view charset, Scratch& scratch) {
    for (const Browser& browser : browsers()) {
        const std::optional<std::string> program = find_program(browser.name);
        if (!program) continue;
        if (charset.empty()) return filtered(file, *program, browser.arguments, scratch);
        const PrivateFile known = in_utf8(file, charset, scratch);
        return filtered(known.path(), *program, browser.arguments, scratch);
    }
    throw Failure(Exit::no_input, "neither w3m nor lynx is installed");
}

}  // namespace vel::command
