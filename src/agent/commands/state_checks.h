// Checks of a request against the current state that every backend makes in
// the same way, so that both give the same code and detail text.
#ifndef NV_AGENT_COMMANDS_STATE_CHECKS_H
#define NV_AGENT_COMMANDS_STATE_CHECKS_H

#include <cstddef>
#include <string>

#include "agent/commands/requests.h"

namespace nvagent {

// The request's 1-based index against a list of count entries; false with
// the answer (naming the list's length) in r.
bool CheckDeleteIndex(unsigned long long index, size_t count, CmdResult& r);

// The CPU ceiling against the floor and the other way round (percent).
bool CheckCpuCeil(int ceil, int floor, CmdResult& r);
bool CheckCpuFloor(int floor, int ceil, CmdResult& r);
// The memory ceiling against the machine's total memory in MB (0: unknown).
bool CheckMemCeil(int ceil, int totalMb, CmdResult& r);

// The answers for a value that is already set.
CmdResult FlagUnchanged(short cmd, bool on);
CmdResult KernelUnchanged(short cmd, unsigned long value);
// The subject of a kernel-limit command ("The thread maximum").
const char* KernelSubject(short cmd);

}  // namespace nvagent

#endif
