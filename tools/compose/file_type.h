// Which media type a file has.
#ifndef VEL_TOOLS_COMPOSE_FILE_TYPE_H
#define VEL_TOOLS_COMPOSE_FILE_TYPE_H

#include <functional>
#include <string>
#include <string_view>

#include "tools/compose/content_facts.h"

namespace vel::command {

struct FileType {
    std::string_view type, subtype;
    bool operator==(const FileType&) const = default;
};

constexpr FileType kPlainText{"text", "plain"};
constexpr FileType kBinaryType{"application", "octet-stream"};
constexpr FileType kMessageType{"message", "rfc822"};

// By the name's extension, unless the content contradicts; by the content where that says nothing. A text is one only
// when it is UTF-8, a message only when its header block is one. Throws Failure.
FileType type_of_file(const std::string& path, std::string_view name, const ContentFacts& facts);

// It, or what picks types otherwise; the texts stay where they are until the message is built.
using TypeOfFile = std::function<FileType(const std::string& path, std::string_view name, const ContentFacts& facts)>;

}  // namespace vel::command

#endif
