// The verbs below "vel queue", each with a help of its own.
#ifndef VEL_TOOLS_VERBS_QUEUE_VERBS_H
#define VEL_TOOLS_VERBS_QUEUE_VERBS_H

#include "tools/verbs/verb.h"

namespace vel::command {

Exit run_queue_list(Arguments arguments, Session& main);
Exit run_queue_show(Arguments arguments, Session& main);
Exit run_queue_cat(Arguments arguments, Session& main);
Exit run_queue_hold(Arguments arguments, Session& main);
Exit run_queue_release(Arguments arguments, Session& main);
Exit run_queue_remove(Arguments arguments, Session& main);
Exit run_queue_status(Arguments arguments, Session& main);
Exit run_queue_check(Arguments arguments, Session& main);
Exit run_queue_run(Arguments arguments, Session& main);

}  // namespace vel::command

#endif
