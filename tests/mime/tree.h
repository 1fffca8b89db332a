// Trees of entities as one line of text.
#ifndef VEL_TESTS_MIME_TREE_H
#define VEL_TESTS_MIME_TREE_H

#include <set>
#include <string>
#include <string_view>

#include "vel/mime.h"

namespace vel::test {

// A body as it stands in a message, line ends written out: CR LF as "/", LF as "~".
inline std::string shown(std::string_view body) {
    std::string result;
    for (std::size_t i = 0; i < body.size(); ++i) {
        if (body.substr(i).starts_with("\r\n")) {
            result += '/';
            ++i;
        } else {
            result += body[i] == '\n' ? '~' : body[i];
        }
    }
    return result;
}

inline std::string type_of(const MimeMsg& record) {
    std::string type = record.contentType ? record.contentType : "-";
    if (record.contentSubtype) type += std::string("/") + record.contentSubtype;
    return type;
}

inline std::string range(const MimeMsg& record, std::string_view message) {
    if (record.bodyEnd < record.bodyStart) return "backwards";
    if (record.bodyEnd > message.size()) return "past the end";
    return "\"" + shown(message.substr(record.bodyStart, record.bodyEnd - record.bodyStart)) + "\"";
}

// An entity: its type, its body's text when it is a leaf, its children otherwise.
inline std::string tree(const MimeMsg& record, std::string_view message) {
    if (record.numChildren == 0) return type_of(record) + " " + range(record, message);
    std::string result = type_of(record) + " {";
    for (unsigned i = 0; i < record.numChildren; ++i) result += " " + tree(*record.children[i], message);
    return result + " }";
}

// The tree of the message, then what hangs in no tree.
inline std::string tree(const mime_msg_pool& pool, std::string_view message) {
    std::set<const MimeMsg*> children;
    for (int i = 0; i < pool.count; ++i) {
        children.insert(pool.items[i]->children, pool.items[i]->children + pool.items[i]->numChildren);
    }
    std::string result = tree(*pool.items[0], message);
    for (int i = 1; i < pool.count; ++i) {
        if (!children.contains(pool.items[i])) result += " + " + tree(*pool.items[i], message);
    }
    return result;
}

}  // namespace vel::test

#endif
