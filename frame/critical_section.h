// Holding a critical section for the length of a block.
#ifndef VEL_FRAME_CRITICAL_SECTION_H
#define VEL_FRAME_CRITICAL_SECTION_H

#include "vel/frame.h"

namespace vel {

class CriticalSectionHeld {
  public:
    explicit CriticalSectionHeld(CRITICAL_SECTION& section) : section_(section) { EnterCriticalSection(&section_); }
    CriticalSectionHeld(const CriticalSectionHeld&) = delete;
    CriticalSectionHeld& operator=(const CriticalSectionHeld&) = delete;
    ~CriticalSectionHeld() { LeaveCriticalSection(&section_); }

  private:
    CRITICAL_SECTION& section_;
};

}  // namespace vel

#endif
