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

// The FTP options of a configuration text ("key=value" lines, "#" comments,
// YES/NO values); keys not present keep what conf holds.
void ParseFtpConfig(const std::string& text, cConf_Inf& conf);
// The share path and write flag of the agent's section of a Samba text.
void ParseSambaConfig(const std::string& text, cConf_Inf& conf);

// Whether a process of this name (as /proc/PID/comm shows it) runs.
bool ProcessRuns(const std::string& comm);

// Reads both services into conf; a missing file leaves the defaults.
void ReadServices(cConf_Inf& conf);

}  // namespace nvagent

#endif
