// vel init: a working place for a gateway.
#include <filesystem>
#include <optional>

#include "tools/settings/host_name.h"
#include "tools/settings/sample_file.h"
#include "tools/settings/value_kinds.h"
#include "tools/settings/zone.h"
#include "tools/text/shell_word.h"
#include "tools/verbs/command_line.h"
#include "tools/verbs/verb.h"
#include "tools/verbs/working_place.h"

namespace vel::command {
namespace {

const std::string kFooter =
    "Example:\n"
    "  place=$(vel init ~/gateway) && eval \"$place\" && vel config\n"
    "\n"
    "Makes DIR, below it queue, tmp and install, the tables of the queue and of file types, and last ostra.ini, in\n"
    "which each setting is explained; standard output tells what to export. Nothing is overwritten: where ostra.ini\n"
    "stands, nothing is done. When something cannot be made, what was made and is empty goes again; ostra.ini is not\n"
    "there then, and another run goes on. Exit codes: 73, and 69 when the queue or the table of file types cannot be\n"
    "set up. The machine is asked for:\n"
    "\n"
    "  TimeZone          $TZ, else /etc/localtime or /etc/timezone. The setting takes 15 bytes: of a longer name the\n"
    "                    zone's rule is taken (CST6), or else xxx, by which programs keep the zone they start with.\n"
    "  GatewayHostName,  the name of the host and, if that has no dot, /etc/hosts; no name server is asked.\n"
    "  GatewayDomain\n"
    "\n"
    "The log goes to standard error; to a file with [Log] Target. To compare with a place that is there:\n"
    "  vel init --print ~/gateway | diff ~/gateway/ostra.ini -";

struct Options {
    std::string directory;
    std::optional<std::string> host;
    std::optional<std::string> domain;
    std::optional<std::string> zone;
    bool print = false;
};

void declare(CommandLine& line, Options& options) {
    line.add_argument("DIR", options.directory, "Directory to make, or to fill").required();
    line.add_option("--host", "NAME", options.host, "The gateway's host name, perhaps with its domain");
    line.add_option("--domain", "NAME", options.domain, "The gateway's domain");
    line.add_option("--zone", "ZONE", options.zone, "The time zone, as in TZ");
    line.add_flag("--print", options.print, "Write ostra.ini to standard output and make nothing");
}

// From the root on; links stay, ".." too, since it means something else behind a link.
std::string absolute(const std::string& directory) {
    std::error_code failed;
    std::filesystem::path result = "/";
    const std::filesystem::path whole = std::filesystem::absolute(directory, failed);
    if (failed) throw Failure(Exit::cannot_create, directory + ": " + failed.message());
    for (const std::filesystem::path& part : whole) {
        if (part != ".") result /= part;
    }
    return result.has_filename() ? result : result.parent_path();
}

// Throws for what ostra.ini cannot hold, or the setting does not take.
void require(const char* what, const std::string& value, const std::string& wrong) {
    if (!wrong.empty())
        throw Failure(Exit::usage, std::string(what).append(" \"").append(value).append("\" ").append(wrong));
}

void require_name(const char* option, const std::string& value) { require(option, value, a_host(value)); }

std::string zone_for(const Options& options, Output& output) {
    if (options.zone) {
        const bool fits = options.zone->size() <= kLongestZone;
        require("--zone", *options.zone, fits ? a_zone(*options.zone) : "is longer than 15 bytes");
        return *options.zone;
    }
    const MachineZone zone = zone_of_machine();
    if (!zone.remark.empty()) output.complain({}, zone.remark);
    return zone.value;
}

HostName host_for(const Options& options, Output& output) {
    if (options.host) require_name("--host", *options.host);
    HostName name = options.host ? split_host(*options.host) : host_of_machine();
    if (options.domain) {
        require_name("--domain", *options.domain);
        name.domain = *options.domain;
    }
    if (name.host.empty()) output.complain({}, "the machine has no host name; --host names the gateway");
    if (name.domain.empty()) output.complain({}, "the domain of " + name.host + " is not known; --domain names it");
    return name;
}

std::string settings_of(const WorkingPlace& place, const Options& options, Output& output) {
    const HostName name = host_for(options, output);
    return sample_file({{"Gateway", "TimeZone", zone_for(options, output)},
                        {"Gateway", "QueueDirectory", place.queue()},
                        {"Gateway", "TemporaryDirectory", place.temporary()},
                        {"Config", "InstallDirectory", place.install()},
                        {"Connection", "GatewayHostName", name.host},
                        {"Connection", "GatewayDomain", name.domain}});
}

}  // namespace

Exit run_init(Arguments arguments, Session& main) {
    CommandLine line("init", "Makes a working place: configuration, queue, directories.", kFooter);
    Options options;
    declare(line, options);
    if (const auto exit = line.read(std::move(arguments), main)) return *exit;
    if (options.directory.empty()) return line.misuse("DIR has a name", main);
    if (options.directory.find('\n') != std::string::npos) return line.misuse("DIR holds a line break", main);
    const std::string directory = absolute(options.directory);
    WorkingPlace place(directory, main);
    if (!options.print) place.require_free();
    const std::string settings = settings_of(place, options, main.output);
    if (options.print) {
        main.output.write(settings);
    } else {
        place.make(settings);
        main.output.write(std::string("export OSTRA_CONFIG_DIR=").append(shell_word(directory)).append("\n"));
    }
    return Exit::success;
}

}  // namespace vel::command
