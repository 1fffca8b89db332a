// Tells a process from the children that it forks. Asking for the process's number would be a system call.
#ifndef VEL_PLATFORM_THIS_PROCESS_H
#define VEL_PLATFORM_THIS_PROCESS_H

namespace vel {

// A number that is another one in the child of a fork. Any thread.
int this_process() noexcept;

}  // namespace vel

#endif
