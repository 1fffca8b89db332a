// Moving a finished file to a name that nothing has.
#ifndef VEL_TOOLS_IO_PLACE_NEW_H
#define VEL_TOOLS_IO_PLACE_NEW_H

namespace vel::command {

// In one step, and never over another file. False with errno, EEXIST when something stands there.
bool place_new(const char* file, const char* path);

}  // namespace vel::command

#endif
