#include "tools/message/html_text.h"

#include <array>
#include <optional>
#include <vector>

#include "tools/io/blocks.h"
#include "tools/io/child.h"
#include "tools/io/exit_code.h"
#include "tools/io/filter.h"
#include "tools/io/scratch_file.h"
#include "tools/text/ascii.h"
#include "tools/text/charset.h"

namespace vel::command {
namespace {

struct Browser {
    const char* name;
    std::vector<std::string> arguments;  // read standard input, in UTF-8 as what is written, fetch nothing
};

const std::array<Browser, 2>& browsers() {
    static const std::array<Browser, 2> kBoth{{
        {"w3m",
         {"-dump", "-T", "text/html", "-I", "UTF-8", "-O", "UTF-8", "-cols", "80", "-no-cookie", "-o",
          "display_image=0"}},
        {"lynx", {"-dump", "-stdin", "-force_html", "-display_charset=UTF-8", "-width=80", "-localhost", "-nolist"}},
    }};
    return kBoth;
}

// Before what the HTML says, which then no longer counts.
constexpr std::string_view kSaysUtf8 = "<meta charset=\"utf-8\">";

constexpr std::size_t kHead = 4096;  // so near its beginning HTML names its charset

// Not every browser looks for it. What can be read as ASCII so far is not in UTF-16, whatever it says.
std::string charset_named_in(const std::string& file) {
    constexpr std::string_view kMark = "charset=", kQuotes = "\"' ";
    std::string text;
    for_each_block(open_for_reading(file).get(), [&](std::string_view block) {
        text = lower(block.substr(0, kHead));
        return false;
    });
    const std::size_t mark = text.find(kMark);
    if (mark == std::string::npos) return {};
    const std::size_t start = text.find_first_not_of(kQuotes, mark + kMark.size());
    if (start == std::string::npos) return {};
    const std::string name = text.substr(start, text.find_first_of("\"' ;/>", start) - start);
    return name.starts_with("utf-16") ? std::string() : name;
}

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
        const PrivateFile known =
            in_utf8(file, charset.empty() ? charset_named_in(file) : std::string(charset), scratch);
        return filtered(known.path(), *program, browser.arguments, scratch);
    }
    throw Failure(Exit::io_error, "neither w3m nor lynx is installed");
}

}  // namespace vel::command
