// The machine's identity and resources for the check answer: host name,
// the distribution and mounted file systems (memory is read
// by the memory monitor's own ReadMemory).
#ifndef NV_AGENT_LIVE_LIVE_SYSINFO_H
#define NV_AGENT_LIVE_LIVE_SYSINFO_H

#include <ctime>
#include <string>
#include <vector>

#include "link/state_record.h"

namespace nvagent {

std::string CurrentHostName();

// The distribution family of an os-release text (EM_OS_RELEASE_VER).
char OsReleaseFamily(const std::string& osRelease);

// The mounted file systems with blocks, sizes in MB.
std::vector<cDiskInfo> ReadDiskInfo();

}  // namespace nvagent

#endif
