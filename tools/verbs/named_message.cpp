#include "tools/verbs/named_message.h"

#include <unistd.h>

namespace vel::command {
namespace {

std::string without_suffix(std::string path) {
    constexpr std::string_view kSuffix = ".msg";
    if (path.ends_with(kSuffix)) path.resize(path.size() - kSuffix.size());
    return path;
}

bool is_message(const std::string& base) { return ::access((base + ".msg").c_str(), R_OK) == 0; }

}  // namespace

NamedMessage find_message(const std::string& name, bool needs_entry, Session& session) {
    NamedMessage message{without_suffix(name), nullptr};
    const bool is_path = is_message(message.base);
    try {
        message.entry = read_entry(identifier_of(name), session);
    } catch (const Failure& failure) {
        if (failure.exit() != Exit::no_input) throw;
        if (!is_path) throw Failure(Exit::no_input, name + ": no entry of the queue, and no file with .msg behind it");
        if (needs_entry) throw Failure(Exit::no_input, name + ": not in the queue, so --sender has to say who sent it");
    }
    if (is_path) return message;
    message.base = without_suffix(message.entry->path);
    if (!is_message(message.base)) throw Failure::of_system_call(Exit::no_input, message.entry->path);
    return message;
}

}  // namespace vel::command
