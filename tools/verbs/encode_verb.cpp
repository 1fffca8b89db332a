// vel encode: a file in an encoding of mail.
#include <array>

#include "tools/io/blocks.h"
#include "tools/io/library_owned.h"
#include "tools/text/safe_name.h"
#include "tools/verbs/command_line.h"
#include "tools/verbs/one_file.h"
#include "vel/binhex.h"
#include "vel/codec.h"

namespace vel::command {
namespace {

const std::string kFooter =
    "Examples:\n"
    "  printf 'Caf\\303\\251 = 100 %%\\r\\n' | vel encode qp\n"
    "  printf 'abc' | vel encode uu --name report.pdf -o report.uu\n"
    "\n"
    "CODEC is one of\n"
    "  base64     any bytes, in lines of 72 characters (RFC 2045 section 6.8)\n"
    "  qp         text: its line ends, CR LF, stay; LF alone becomes =0A (RFC 2045 section 6.7)\n"
    "  qp-binary  any bytes: line ends are escaped too\n"
    "  uu         any bytes, with a begin line that carries a name and a mode\n"
    "  binhex     an AppleSingle file with both its forks (RFC 1741)\n"
    "Lines end in CR LF. Quoted-printable ends in a line break that the file does not have, and base64 in an empty\n"
    "line when its last line is full. base64 takes files of any size; with the others neither FILE nor what comes\n"
    "of it may reach 2 GiB.";

struct Options {
    std::string name;  // empty: that of the file
    std::string mode = "644";
};

void encode_base64(Transfer& transfer, const Options&) {
    const int in = transfer.stream();
    transfer.write([=](int out) { return unless(to64(in, out) == 0); });
}

void encode_text(Transfer& transfer, const Options&) {
    const LineFile in(FileOpen(transfer.path().c_str(), kForReading));
    transfer.write_new([&](const char* path) {
        const LineFile out(FileCreate(path));
        return unless(in && out && textToQp_v2(in.get(), out.get()) == 1);
    });
}

void encode_binary(Transfer& transfer, const Options&) {
    const Descriptor in = open_for_reading(transfer.path());
    transfer.write([&](int out) { return unless(binaryToQp(in.get(), out) == 1); });
}

std::string name_for(const std::string& file, const Options& options) {
    if (!options.name.empty()) return options.name;
    const std::string name = safe_name(file == "-" ? "" : file);
    return name.empty() ? "unknown.dat" : name;
}

void encode_uu(Transfer& transfer, const Options& options) {
    const int in = transfer.stream();
    const std::string name = name_for(transfer.name(), options);
    transfer.write_new([&](const char* path) {
        const Handle out(filecreate(path, kForWriting, kUnbuffered));
        return unless(uuencode(in, out.get(), name.c_str(), options.mode.c_str()) == 1);
    });
}

// The library does not look at it, and would make an empty text of a file that is something else.
bool has_apple_magic(const std::string& path) {
    constexpr std::string_view kAppleSingle("\0\x05\x16\0", 4);
    constexpr std::string_view kAppleDouble("\0\x05\x16\x07", 4);
    char magic[4];
    const ssize_t got = read_block(open_for_reading(path).get(), magic, sizeof magic);
    const std::string_view start(magic, got > 0 ? static_cast<std::size_t>(got) : 0);
    return start == kAppleSingle || start == kAppleDouble;
}

void encode_binhex(Transfer& transfer, const Options&) {
    const std::string& path = transfer.path();
    if (!has_apple_magic(path)) throw Failure(Exit::bad_data, "is no AppleSingle file");
    transfer.write_made([&](char** made) {
        return unless(ConvertASToBinHex(path.c_str(), made) == 0, "is an AppleSingle file that is cut short");
    });
}

struct Encoder {
    std::string_view name;
    void (*encode)(Transfer& transfer, const Options& options);
};

constexpr std::array kEncoders{
    Encoder{"base64", encode_base64}, Encoder{"qp", encode_text},       Encoder{"qp-binary", encode_binary},
    Encoder{"uu", encode_uu},         Encoder{"binhex", encode_binhex},
};

bool fits_begin_line(const Options& options) {
    return options.name.find_first_of("\r\n") == std::string::npos && !options.mode.empty() &&
           options.mode.find_first_not_of("01234567") == std::string::npos;
}

}  // namespace

Exit run_encode(Arguments arguments, Session& main) {
    CommandLine line("encode", "Writes a file in an encoding of mail.", kFooter);
    Options options;
    line.add_word("CODEC", "What to encode to", kEncoders);
    line.add_file();
    line.only_with({"uu"}, line.add_option("--name", "TEXT", options.name, "Name on the begin line; that of FILE"));
    line.only_with({"uu"},
                   line.add_option("--mode", "TEXT", options.mode, "Mode on the begin line, octal").shows_default());
    if (const auto exit = line.read(std::move(arguments), main)) return *exit;
    if (!fits_begin_line(options)) return line.misuse("--name is one line, --mode an octal number", main);
    return transfer_file(line, main,
                         [&](Transfer& transfer) { row_named(kEncoders, line.word).encode(transfer, options); });
}

}  // namespace vel::command
