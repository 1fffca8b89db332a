// Which start-up has been done.
#ifndef VEL_FRAME_STARTUP_H
#define VEL_FRAME_STARTUP_H

#include "vel/frame.h"

extern int32_t bCalledInitVELDll;       // 1 after a successful InitVELDll
extern int32_t bCalledInitVELDll_NOMQ;  // cleared by TerminateVELDll, never set

#endif
