// A message file that is made and filled, or not there.
#ifndef VEL_BUILD_NEW_MESSAGE_H
#define VEL_BUILD_NEW_MESSAGE_H

#include "frame/at_boundary.h"
#include "frame/new_file.h"

namespace vel {

// Makes a file in the temporary directory. Returns its path, malloc'ed; null, and no file, when write(file) fails.
template <class Write>
char* new_message(NewFile::Writes how, Write write) {
    return at_boundary<char*>(nullptr, [&]() -> char* {
        auto file = NewFile::create("MIME", how);
        return file && write(*file) ? file->keep() : nullptr;
    });
}

}  // namespace vel

#endif
