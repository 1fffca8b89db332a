#include "notify/parts.h"

#include "build/heading.h"
#include "frame/log.h"
#include "vel/build.h"

namespace vel {

const char* Complaints::of(Trouble trouble) const {
    switch (trouble) {
        case Trouble::none: return nullptr;
        case Trouble::no_name: return no_name;
        case Trouble::no_file: return no_file;
        case Trouble::unopened: return unopened;
        case Trouble::unreadable: return unreadable;
        case Trouble::unwritten: return unwritten;
        case Trouble::unbuilt: return unbuilt;
    }
    return nullptr;
}

int failed(const char* complaint) {
    if (complaint) log_text(kLogError, complaint);
    return -1;
}

bool put_lines(const ms* lines, std::string_view line_end, NewFile& file) {
    for (; lines; lines = lines->next) {
        if (lines->text && !(file.put(lines->text) && file.put(line_end))) return false;
    }
    return true;
}

Trouble Parts::add(const Kind& kind, const char* body) {
    BuiltFile& part = files_.emplace_back();  // Before there is a file.
    part.reset(MimeBuildMessage(nullptr, nullptr, nullptr, nullptr, kind.type, kind.subtype, kind.parameters,
                                kind.encoding, nullptr, nullptr, body, nullptr, 0));
    return part ? Trouble::none : Trouble::unbuilt;
}

BuiltFile Parts::join(const Heading& heading, const char* subtype, const ms* parameters) {
    std::vector<char*> paths;
    paths.reserve(files_.size() + 1);
    for (const BuiltFile& file : files_) paths.push_back(file.get());
    paths.push_back(nullptr);
    BuiltFile message(MimeBuildMultipartMessage(heading.from, heading.to, heading.subject, heading.cc, paths.data(),
                                                subtype, parameters, nullptr, 0));
    files_.clear();
    return message;
}

}  // namespace vel
