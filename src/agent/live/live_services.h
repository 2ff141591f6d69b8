// The FTP server and Samba as the check answer shows them: options read
// from their configuration files, and whether their daemon runs.
#ifndef NV_AGENT_LIVE_LIVE_SERVICES_H
#define NV_AGENT_LIVE_LIVE_SERVICES_H

#include <string>

#include "link/state_record.h"

namespace nvagent {

// Where the two configurations live.
extern const char* const kFtpConfigPath;
extern const char* const kSambaConfigPath;
// The name of the agent's own share section in the Samba configuration.
extern const char* const kShareSection;

// A daemon the agent switches: its service (for the service manager) and
// the package's binary, by which a running one is recognised.
struct ServiceDaemon {
    const char* service;
    const char* binary;
};
extern const ServiceDaemon kFtpDaemon;
extern const ServiceDaemon kSambaDaemon;

// Whether the daemon runs: a root process of its binary in the agent's own
// namespaces (trusted_process.h), whatever other users' programs are called.
bool DaemonRuns(const ServiceDaemon& d);

// The share path and write flag of the agent's section of a Samba text, read
// as Samba reads it (a line ending in "\" continues on the next).
void ParseSambaConfig(const std::string& text, cConf_Inf& conf);

// Whether a process of this name (as /proc/PID/comm shows it) runs. Any
// user can name a program so: never enough to decide that a daemon runs.
bool ProcessRuns(const std::string& comm);

// Reads both services into conf; a missing file leaves the defaults.
void ReadServices(cConf_Inf& conf);

}  // namespace nvagent

#endif
