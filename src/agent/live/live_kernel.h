// The kernel settings of commands 4 to 11: where each lives under /proc/sys,
// and reading them into the configuration record.
#ifndef NV_AGENT_LIVE_LIVE_KERNEL_H
#define NV_AGENT_LIVE_LIVE_KERNEL_H

#include <string>

#include "link/state_record.h"

namespace nvagent {

// The sysctl key ("net.ipv4.tcp_syncookies") of a command 4..11, or null.
const char* KernelKey(short cmd);
// The /proc/sys path of a sysctl key.
std::string ProcSysPath(const std::string& key);

// The three flags as the kernel holds them (the first character of the
// value, "2" included) and the five limits; an unreadable one stays unset.
void ReadKernelSettings(cConf_Inf& conf);

}  // namespace nvagent

#endif
