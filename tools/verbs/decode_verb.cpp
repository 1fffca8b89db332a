// vel decode: a file out of an encoding of mail.
#include <array>
#include <filesystem>

#include "tools/io/blocks.h"
#include "tools/io/library_owned.h"
#include "tools/io/private_copy.h"
#include "tools/verbs/command_line.h"
#include "tools/verbs/one_file.h"
#include "vel/binhex.h"
#include "vel/codec.h"

namespace vel::command {
namespace {

const std::string kFooter =
    "Examples:\n"
    "  printf 'SGVsbG8=' | vel decode base64\n"
    "  printf 'text\\n\\nbegin 644 cat.txt\\n#0V%%T\\n`\\nend\\n' | vel decode uu --show-name -o cat.txt\n"
    "\n"
    "CODEC is one of\n"
    "  base64     white space is skipped; the text ends at \"=\" or \"-\" (RFC 2045 section 6.8)\n"
    "  qp         line ends, LF or CR LF, become CR LF, the last one goes; an escape that is none becomes the byte\n"
    "             0xFF (RFC 2045 section 6.7)\n"
    "  qp-binary  the same\n"
    "  uu         the first file in the text; what stands before its begin line is skipped\n"
    "  binhex     the text behind the line that announces it, into an AppleSingle file with both forks (RFC 1741)\n"
    "Files have less than 2 GiB. The exit code is 65 when something does not decode: -o leaves no file then, and\n"
    "standard output has got some of what stands before it (nothing of binhex).";

void decode_base64(Transfer& transfer, bool) {
    const Descriptor in = open_for_reading(transfer.path());
    transfer.write([&](int out) {
        return unless(from64(in.get(), transfer.size(), out) == 1, "holds a character that is none of base64");
    });
}

// The library knows a soft line break by its CR only.
void decode_qp(Transfer& transfer, bool) {
    const PrivateFile with_cr = copy_with_line_ends(transfer.path(), transfer.session().scratch);
    const Descriptor in = open_for_reading(with_cr.path());
    const auto size = static_cast<int32_t>(std::filesystem::file_size(with_cr.path()));
    transfer.write([&](int out) { return unless(fromqp(in.get(), size, out) == 1, "ends inside an escape"); });
}

void tell_name(const char* name, Transfer& transfer) {
    transfer.session().output.complain(transfer.name(), std::string("name: ").append(name ? name : ""));
}

bool has_begin_line(const std::string& path) {
    const LineFile file(FileOpen(path.c_str(), kForReading));
    char* line = nullptr;
    while (file && GetLine(file.get(), &line) == 1) {
        if (IsuuencodeBegin(line, nullptr) == 1) return true;
    }
    return false;
}

// The library's line reader passes over a last line without a line end where a block ends.
bool hides_last_line(const std::string& path, int32_t size) {
    constexpr int32_t kBlockOfLines = 4096;
    char last = '\n';
    return size > 0 && size % kBlockOfLines == 0 && ::pread(open_for_reading(path).get(), &last, 1, size - 1) == 1 &&
           last != '\n';
}

Wrong decode_next_file(const std::string& path, int out, Text& name) {
    const Handle in(fileopen(path.c_str(), kForReading, kUnbuffered));
    char* found = nullptr;
    const bool closed = uudecode(in.get(), 0, out, &found) == 1;
    name.reset(found);
    return unless(closed, closed || has_begin_line(path) ? "no end line stands behind the data" : "has no begin line");
}

void decode_uu(Transfer& transfer, bool shows_name) {
    std::optional<PrivateFile> completed;
    if (hides_last_line(transfer.path(), transfer.size())) {
        completed.emplace(copy_without({}, transfer.path(), "\r\n", transfer.session().scratch));
    }
    const std::string& path = completed ? completed->path() : transfer.path();
    Text name;
    transfer.write([&](int out) { return decode_next_file(path, out, name); });
    if (shows_name) tell_name(name.get(), transfer);
}

Wrong meaning_of_binhex(int result) {
    constexpr int kBadCharacter = -2;
    return unless(result == 0, result == kBadCharacter ? "holds a character that is none of BinHex"
                                                       : "has no BinHex text, or one that is cut short or damaged");
}

void decode_binhex(Transfer& transfer, bool shows_name) {
    const Descriptor in = open_for_reading(transfer.path());
    Text name;
    transfer.write_made([&](char** made) {
        char* found = nullptr;
        const int result = ConvertBinHexToAS(in.get(), transfer.size(), made, &found);
        name.reset(found);
        return meaning_of_binhex(result);
    });
    if (shows_name) tell_name(name.get(), transfer);
}

struct Decoder {
    std::string_view name;
    void (*decode)(Transfer& transfer, bool shows_name);
};

constexpr std::array kDecoders{
    Decoder{"base64", decode_base64}, Decoder{"qp", decode_qp},         Decoder{"qp-binary", decode_qp},
    Decoder{"uu", decode_uu},         Decoder{"binhex", decode_binhex},
};

}  // namespace

Exit run_decode(Arguments arguments, Session& main) {
    CommandLine line("decode", "Writes a file out of an encoding of mail.", kFooter);
    bool shows_name = false;
    line.add_word("CODEC", "What to decode from", kDecoders);
    line.add_file();
    line.only_with({"uu", "binhex"},
                   line.add_flag("--show-name", shows_name, "Tell the name in the text on standard error"));
    if (const auto exit = line.read(std::move(arguments), main)) return *exit;
    return transfer_file(line, main,
                         [&](Transfer& transfer) { row_named(kDecoders, line.word).decode(transfer, shows_name); });
}

}  // namespace vel::command
