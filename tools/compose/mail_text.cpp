#include "tools/compose/mail_text.h"

#include "tools/compose/line_pieces.h"
#include "tools/io/library_owned.h"
#include "tools/io/scratch_file.h"
#include "tools/text/ascii.h"
#include "tools/text/charset.h"
#include "vel/japanese.h"

namespace vel::command {
namespace {

constexpr const char* kShiftJis = "CP932";
constexpr const char* kUtf8 = "UTF-8";

// RFC 2046 section 4.1.2.
void expect_ascii_within(const std::string& charset) {
    constexpr std::string_view kAscii = "Az09 ~\r\n";
    const bool is_name = charset.find_first_of("/\"\\ ") == charset.npos;  // and no order to the converter
    const auto text = is_name ? to_utf8(kAscii, charset) : std::nullopt;
    const std::string about = std::string("--charset: ").append(charset);
    if (!text) throw Failure(Exit::usage, about + " is not known here");
    if (*text != kAscii) throw Failure(Exit::usage, about + " does not have ASCII in it, as texts in mail must");
}

// Every line, without its line end.
void expect_text(const std::string& path, const std::string& charset, const std::string& name) {
    uint64_t number = 0;
    std::string begun;
    for_each_piece(path, [&](const LinePiece& piece) {
        number += piece.begins ? 1 : 0;
        begun.append(piece.text);
        if (!piece.ends) return true;
        if (!to_utf8(begun, charset)) {
            const std::string line = std::string("line ").append(std::to_string(number));
            const char* const advice = name == kUtf8 ? "; --charset tells another" : "";
            throw Failure(Exit::bad_data, line + " is no text in " + name + advice);
        }
        begun.clear();
        return true;
    });
}

PrivateFile as_jis(const std::string& path, Scratch& scratch) {
    PrivateFile jis(scratch.new_path());
    const Handle in(fileopen(path.c_str(), kForReading, kUnbuffered));
    const Handle out(filecreate(jis.path().c_str(), kForWriting, kUnbuffered));
    const bool converted = in.get() != -1 && out.get() != -1 && ShiftJIS2JIS(in.get(), out.get(), "") == 0;
    if (!converted) throw Failure(Exit::io_error, "cannot be converted to ISO-2022-JP");
    return jis;
}

}  // namespace

PrivateFile with_mail_line_ends(const std::string& path, Scratch& scratch) {
    ScratchFile copy(scratch);
    bool ends = true;
    for_each_piece(path, [&](const LinePiece& piece) {
        copy.write(piece.without_cr());
        if (piece.ends) copy.write("\r\n");
        ends = piece.ends;
        return true;
    });
    if (!ends) copy.write("\r\n");
    if (is_too_large(copy.size())) throw_too_large();
    return copy.finish();
}

PrivateFile as_mail_text(const std::string& path, const std::string& charset, Scratch& scratch) {
    const bool is_jis = same(charset, kJis);
    if (!charset.empty()) expect_ascii_within(charset);
    PrivateFile text = with_mail_line_ends(path, scratch);
    expect_text(text.path(), is_jis ? kShiftJis : charset.empty() ? kUtf8 : charset, charset.empty() ? kUtf8 : charset);
    return is_jis ? as_jis(text.path(), scratch) : std::move(text);
}

}  // namespace vel::command
