// vel japanese: a file from Shift-JIS to JIS, or back.
#include <array>
#include <limits>

#include "tools/io/library_owned.h"
#include "tools/verbs/command_line.h"
#include "tools/verbs/one_file.h"
#include "vel/japanese.h"

namespace vel::command {
namespace {

const std::string kFooter =
    "Example:\n"
    "  printf '\\223\\372\\226{\\n' | vel japanese to-jis | vel japanese to-sjis\n"
    "\n"
    "to-jis reads Shift-JIS and writes JIS (ISO-2022-JP, RFC 1468), in which mail carries Japanese; half-width\n"
    "katakana become full-width. It takes files of any size. to-sjis reads JIS, in files of less than 2 GiB: a line\n"
    "may end in LF or CR LF; CR alone becomes CR LF. Characters are computed, not looked up: what stands for none\n"
    "becomes another one that stands for none.";

struct Options {
    std::string mark;
    bool repairs = false;
};

void to_jis(Transfer& transfer, const Options& options) {
    const int in = transfer.stream();
    transfer.write([&](int out) { return unless(ShiftJIS2JIS(in, out, options.mark.c_str()) == 0); });
}

void to_sjis(Transfer& transfer, const Options& options) {
    constexpr int32_t kEverything = std::numeric_limits<int32_t>::max();
    const Handle in(fileopen(transfer.path().c_str(), kForReading, kUnbuffered));
    transfer.write([&](int out) {
        const bool done = JIS2ShiftJIS(in.get(), kEverything, out, options.repairs) == 0;
        return unless(done && inch(in.get()) == -1, "2 GiB or more come of it: too large");
    });
}

struct Direction {
    std::string_view name;
    void (*convert)(Transfer& transfer, const Options& options);
};

constexpr std::array kDirections{Direction{"to-jis", to_jis}, Direction{"to-sjis", to_sjis}};

}  // namespace

Exit run_japanese(Arguments arguments, Session& main) {
    CommandLine line("japanese", "Converts a file between the Japanese codes JIS and Shift-JIS.", kFooter);
    Options options;
    line.add_word("DIRECTION", "What to do", kDirections);
    line.add_file();
    line.only_with({"to-jis"}, line.add_option("--mark", "TEXT", options.mark,
                                               "Write this for a byte above 127 that is no part of a "
                                               "character, and not the byte"));
    line.only_with({"to-sjis"}, line.add_flag("--repair", options.repairs,
                                              "Mend escape sequences that have lost their ESC, such as $B"));
    if (const auto exit = line.read(std::move(arguments), main)) return *exit;
    return transfer_file(line, main,
                         [&](Transfer& transfer) { row_named(kDirections, line.word).convert(transfer, options); });
}

}  // namespace vel::command
