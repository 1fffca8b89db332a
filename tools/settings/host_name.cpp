#include "tools/settings/host_name.h"

#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <vector>

#include "tools/text/ascii.h"

namespace vel::command {
namespace {

// The names of a line of /etc/hosts, its address left out.
std::vector<std::string> names_in(const std::string& line) {
    std::istringstream words(line.substr(0, line.find('#')));
    std::string word;
    words >> word;
    std::vector<std::string> names;
    while (words >> word) names.push_back(word);
    return names;
}

// What stands behind the host where a line names it alone and with its domain.
std::string domain_in_hosts(const std::string& host) {
    std::ifstream file("/etc/hosts");
    for (std::string line; std::getline(file, line);) {
        const std::vector<std::string> names = names_in(line);
        const auto is_host = [&](const std::string& name) { return same(name, host); };
        const auto is_whole = [&](const std::string& name) { return begins(name, host + "."); };
        const auto whole = std::find_if(names.begin(), names.end(), is_whole);
        if (whole != names.end() && std::any_of(names.begin(), names.end(), is_host)) return split_host(*whole).domain;
    }
    return {};
}

}  // namespace

HostName split_host(const std::string& name) {
    const std::size_t dot = std::min(name.find('.'), name.size());
    return {name.substr(0, dot), name.substr(std::min(dot + 1, name.size()))};
}

HostName host_of_machine() {
    char name[256] = {};
    if (::gethostname(name, sizeof name - 1) != 0) return {};
    HostName result = split_host(name);
    if (result.domain.empty()) result.domain = domain_in_hosts(result.host);
    return result;
}

}  // namespace vel::command
