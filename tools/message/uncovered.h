// What of a message file the parse has given to no entity.
#ifndef VEL_TOOLS_MESSAGE_UNCOVERED_H
#define VEL_TOOLS_MESSAGE_UNCOVERED_H

#include <string>
#include <vector>

#include "tools/io/library_owned.h"
#include "tools/message/tree.h"

namespace vel::command {

// A byte is covered when it stands
//   - in an entity's header block, that is before its bodyStart (a multipart's preamble belongs there, but
//     not the text of a multipart that its first delimiter line closes: there is no part behind it);
//   - in the body of an entity that is no container;
//   - on a delimiter line of a multipart that is open there;
//   - in an epilogue: behind a closing delimiter line, up to the next delimiter line of a multipart
//     that is open there, or up to the end of the file.
// Everything else is uncovered: a last part that no delimiter ends, which the parser drops; parts behind a
// delimiter line that ended the parse; parts that it took for an epilogue, because a boundary is used on
// several levels. Each such part is one range, from its first header line to the delimiter line that
// follows or to the end of the file.
std::vector<Range> uncovered_ranges(const mime_msg_pool& pool, const Tree& tree, const std::string& path);

}  // namespace vel::command

#endif
