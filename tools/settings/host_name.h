// The machine's name.
#ifndef VEL_TOOLS_SETTINGS_HOST_NAME_H
#define VEL_TOOLS_SETTINGS_HOST_NAME_H

#include <string>

namespace vel::command {

struct HostName {
    std::string host;    // up to the first dot
    std::string domain;  // behind it; empty: not known
};

// A name taken apart.
HostName split_host(const std::string& name);

// As the system and /etc/hosts tell it. No name server is asked: it may be slow, or not be there.
HostName host_of_machine();

}  // namespace vel::command

#endif
