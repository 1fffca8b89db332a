// The seeds of the table of types that were installed with the command.
#ifndef VEL_TOOLS_TYPES_SEEDS_H
#define VEL_TOOLS_TYPES_SEEDS_H

#include <string>

namespace vel::command {

// Copies them to DIRECTORY/srcdb, as a whole, where nothing stands there yet. False when there are none. Throws Failure.
bool copy_seeds(const std::string& directory);

}  // namespace vel::command

#endif
