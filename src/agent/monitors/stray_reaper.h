// Processes the process monitor started are the agent's children. When the
// monitor stops watching one (switched off, or the entry removed) the
// process keeps running; handed to the stray reaper, it is reaped when it
// ends, so that it never stays a zombie of the agent.
#ifndef NV_AGENT_MONITORS_STRAY_REAPER_H
#define NV_AGENT_MONITORS_STRAY_REAPER_H

#include <sys/types.h>

namespace nvmonit {

// Reaps pid, a child of this process, once it ends. A background thread
// polls every second while there is something to reap.
void ReapWhenDone(pid_t pid);

// Children handed over and not reaped yet.
size_t StrayCount();

}  // namespace nvmonit

#endif
