#include "tools/settings/catalogue.h"

#include <algorithm>
#include <array>

#include "tools/settings/zone.h"

namespace vel::command {
namespace {

constexpr std::size_t kPath = 4095;
constexpr std::size_t kUncut = 0;

constexpr std::array kSettings{
    SettingRow{"Gateway", "TimeZone", "PST8PDT", kLongestZone + 1, a_zone,
               "The process's time zone, as in the environment variable TZ; at most 15 bytes. A value that begins with "
               "\"xxx\" leaves TZ as it is. Kept at start-up."},
    SettingRow{
        "Gateway", "QueueDirectory", "", kPath, a_queue,
        "Where the queue lies: an absolute path on a local file system. The local queue library takes no message "
        "while it is not set. Kept at start-up."},
    SettingRow{"Gateway", "TemporaryDirectory", "/tmp", kPath, a_temporary_directory,
               "Where temporary files are made. Start-up also puts the value into the environment variable TMP, empty "
               "when it is not set."},
    SettingRow{"Gateway", "LocalCharSet", "US-ASCII", 32, a_charset,
               "The charset of header texts: written into encoded words, and the only one whose words are decoded; "
               "also that of the text in a delivery report. "
               "ISO-2022-JP turns the conversion between JIS and Shift-JIS on."},

    SettingRow{
        "Config", "InstallDirectory", "", kPath, a_directory_or_nothing,
        "Where the gateway is installed. Kept at start-up. In srcdb below it is the table of file types that is copied "
        "where the queue directory has none."},

    SettingRow{"Connection", "GatewayHostName", "", 128, a_host,
               "The gateway's own name, and the domain behind it. Both stand in its trace lines and Message-IDs, and "
               "complete addresses that lack a host or a domain."},
    SettingRow{"Connection", "GatewayDomain", "", 128, a_host, ""},

    SettingRow{"Routing", "PrimaryRelayHostName", "", 128, a_host_or_nothing,
               "A host with its domain, such as relay.example.com, which completes recipients without \"@\" instead."},

    SettingRow{"Queue", "MinimumFree", "16", 32, a_number,
               "MiB that must stay free where the queue is; below that no new entry is opened, so that what is there "
               "can still "
               "be delivered and removed, which takes space too."},
    SettingRow{
        "Queue", "RetryAfter", "5m, 15m, 30m, 1h, 2h, 4h", 1024, some_waits,
        "How long \"vel queue run\" waits after the first, second, ... attempt that failed for now, in s, m, h or "
        "d; the last one repeats. A delay is reported then, to senders who want to know."},
    SettingRow{"Queue", "Lifetime", "5d", 1024, a_wait,
               "How long after its arrival \"vel queue run\" gives a recipient up."},

    SettingRow{"Ldap", "HostName", "localhost", 128, any_text,
               "The directory server that the message queue is told of when it is opened. The local queue library "
               "ignores it."},

    SettingRow{
        "Options", "StrictMimeParsing", "YES", 4, yes_or_no,
        "YES: MIME parameters follow the strict grammar, and a multipart that ends without its closing delimiter "
        "is logged. NO: the lenient grammar."},
    SettingRow{"Options", "AcceptBlankValueInContentTypeParm", "NO", 32, yes_or_no,
               "YES: the strict grammar accepts a Content-Type parameter with nothing behind its \"=\"."},
    SettingRow{"Options", "EnableRFC1522Encoding", "YES", 32, yes_or_no,
               "NO: header texts with bytes above 127 are left as they are. YES: they become encoded words."},
    SettingRow{"Options", "RFC1522codingMethod", "Quoted-printable", 64, a_word_encoding,
               "Quoted-printable: encoded words are written in Q. Base64: in B."},
    SettingRow{"Options", "Force1522Decoding", "NO", 32, yes_or_no,
               "YES: encoded words of every charset are decoded, not those of LocalCharSet alone."},
    SettingRow{
        "Options", "ScanForJIS", "NO", 128, yes_or_no,
        "NO: files that come in JIS are left as they are. The default is YES where LocalCharSet is ISO-2022-JP."},
    SettingRow{"Options", "DisableJISinHeaders", "NO", 128, yes_or_no,
               "YES: header texts are left in JIS, and addresses are written without conversion to it."},
    SettingRow{"Options", "RepairDamagedJIS", "YES", 128, yes_or_no,
               "YES: escape sequences that lost their ESC are mended, in files and in header texts."},
    SettingRow{"Options", "RepairDamagedJISinHeaders", "YES", 128, yes_or_no, ""},
    SettingRow{
        "Options", "InvalidCharacterMark", "", 32, any_text,
        "Written for bytes that are no Shift-JIS when a text becomes JIS; at most 31 bytes, nothing by default."},
    SettingRow{"Options", "useHostname", "YES", 16, yes_or_no,
               "NO: a sender without \"@\" is completed with GatewayDomain alone."},
    SettingRow{"Options", "QualifyRecipientHosts", "YES", 16, yes_or_no,
               "NO: a recipient's host without a domain is left as it is."},
    SettingRow{"Options", "mimePreambleFile", "none", kPath, a_preamble,
               "A file whose lines stand before the first part of a multipart message; none: the built-in text."},
    SettingRow{"Options", "rrqHeader", "Return-Receipt-To", 128, a_field_name,
               "The header field that asks for a receipt."},
    SettingRow{"Options", "BounceSender", "postmaster", 128, any_text,
               "Whom bounces and delivery reports are from: an address, or a local part that gets the gateway's name."},
    SettingRow{"Options", "BounceToPostmaster", "NO", 4, yes_or_no,
               "YES: a message from \"<>\" that cannot be delivered goes to the postmaster, not to nobody; and he gets "
               "each report of a failure too."},
    SettingRow{"Options", "bounceToPostmaster", "NO", 8, yes_or_no,
               "With a small b, a setting of its own. YES: the postmaster gets a copy of each bounce."},

    SettingRow{"Debug", "LogFileIO", "FALSE", 10, true_or_false,
               "TRUE: every file that is opened, made or closed is logged."},
    SettingRow{"Debug", "LogLocking", "NO", 256, yes_or_no,
               "YES: every message lock that is taken or given up is logged at level 6."},

    SettingRow{"Log", "Target", "stderr", kPath, a_log_target,
               "\"stderr\", \"syslog\" (facility mail), or the path of a file, which may be rotated at any time."},
    SettingRow{"Log", "Levels", "all", kUncut, log_levels,
               "\"all\", or the levels that are written: 1 errors and traces, 3 accounting, 6 notices."},
};

}  // namespace

std::span<const SettingRow> all_settings() { return kSettings; }

const SettingRow& row_of(std::string_view section, std::string_view key) {
    return *std::find_if(kSettings.begin(), kSettings.end(),
                         [=](const SettingRow& row) { return row.section == section && row.key == key; });
}

}  // namespace vel::command
