// vel word: encoded words in header texts.
#include <unistd.h>

#include <array>
#include <nlohmann/json.hpp>

#include "tools/io/journal.h"
#include "tools/io/library_owned.h"
#include "tools/message/message_json.h"
#include "tools/text/text_forms.h"
#include "tools/verbs/command_line.h"
#include "tools/verbs/texts.h"
#include "vel/words.h"

namespace vel::command {
namespace {

const std::string kFooter =
    std::string(
        "Examples:\n"
        "  printf 'Gr\\303\\274\\303\\237e (Z\\303\\274rich)' | vel word encode --charset utf-8 -\n"
        "  vel word decode --force '=?iso-8859-1?Q?Gr=FC=DFe?= an alle'\n"
        "\n"
        "ACTION is one of\n"
        "  encode   the value of a header field, or of an address: what is not ASCII becomes encoded words (RFC 2047)\n"
        "  decode   the other way round; the bytes come out as they are, in the charset of the word\n"
        "  charset  names the charset of the first encoded word; the exit code is 65 when there is none\n"
        "A TEXT is the value of a field. \"-\" stands for the lines of standard input, a text a line. What the "
        "options\n"
        "leave open the settings say: [Gateway] LocalCharSet, [Options] RFC1522codingMethod, EnableRFC1522Encoding "
        "and\n"
        "Force1522Decoding. A terminal is shown control characters, and bytes that are not UTF-8, escaped.\n"
        "\n"
        "The JSON object, one a text: text, result (null where there is none).\n"
        "\n") +
    kAboutJsonTexts;

struct Action {
    std::string_view name;
    char* (*run)(const char* text);
};

constexpr std::array kActions{
    Action{"encode", rfc1522encoding},
    Action{"decode", rfc1522decoding},
    Action{"charset", Get1522Charset},
};

constexpr std::size_t kLongestCharset = 63;  // of which the library takes note

struct Options {
    std::string charset;
    std::string method;
    bool force = false;
};

void declare(CommandLine& line, Options& options) {
    line.add_word("ACTION", "What to do", kActions);
    line.add_texts();
    line.add_json();
    auto charset =
        line.add_option("--charset", "NAME", options.charset, "Charset of the text; words of others stay as they are");
    auto method = line.add_option("--method", "", options.method, "Encoding of the words: B or Q")
                      .one_of({"B", "Q"}, Option::LetterCase::does_not_count);
    auto force = line.add_flag("--force", options.force,
                               "Encode although the settings switch it off; decode words of every charset");
    line.only_with({"encode", "decode"}, charset);
    line.only_with({"encode"}, method);
    line.only_with({"encode", "decode"}, force);
}

// The settings that options of the command line stand for; the others keep their values.
class OptionsInForce {
  public:
    explicit OptionsInForce(const Options& options)
        : charset_("Gateway", "LocalCharSet", given(options.charset)),
          method_("Options", "RFC1522codingMethod", options.method == "Q" ? "Quoted-printable" : given(options.method)),
          encoding_("Options", "EnableRFC1522Encoding", options.force ? "YES" : nullptr),
          decoding_("Options", "Force1522Decoding", options.force ? "YES" : nullptr) {}

  private:
    static const char* given(const std::string& text) { return text.empty() ? nullptr : text.c_str(); }

    const SettingInForce charset_, method_, encoding_, decoding_;
};

Text result_of(const Action& action, std::string_view text) { return Text(action.run(std::string(text).c_str())); }

// What comes out of a message may steer a terminal; a program gets the bytes.
std::string shown(const char* text) {
    static const bool is_terminal = ::isatty(STDOUT_FILENO) == 1;
    return is_terminal ? visible(text) : text;
}

Json word_json(std::string_view text, const char* result) {
    return {{"text", json_text(text)}, {"result", result ? Json(json_text(result)) : Json()}};
}

// Of an empty text nothing comes, and nothing is missing.
bool lacks_result(std::string_view text, const char* result, const Action& action) {
    return !result && (!text.empty() || action.run == Get1522Charset);
}

}  // namespace

Exit run_word(Arguments arguments, Session& main) {
    CommandLine line("word", "Encodes and decodes header texts with encoded words.", kFooter);
    Options options;
    declare(line, options);
    if (const auto exit = line.read(std::move(arguments), main)) return *exit;
    if (options.charset.size() > kLongestCharset)
        return line.misuse("--charset: a name has at most 63 characters", main);
    const Action& action = row_named(kActions, line.word);
    const OptionsInForce in_force(options);
    return for_each_text(line.texts, [&](std::string_view text) {
        const bool whole = text.find('\0') == std::string_view::npos;
        const Text result = whole ? result_of(action, text) : nullptr;
        const bool lacking = !whole || lacks_result(text, result.get(), action);
        if (lacking)
            main.output.complain(
                {}, std::string(whole ? "no encoded word" : "a NUL character").append(" in ").append(excerpt(text)));
        if (line.json) {
            main.output.write(one_line(word_json(text, result.get())).append("\n"));
        } else if (!lacking) {
            main.output.write(shown(result ? result.get() : "").append("\n"));
        }
        return lacking ? Exit::bad_data : Exit::success;
    });
}

}  // namespace vel::command
