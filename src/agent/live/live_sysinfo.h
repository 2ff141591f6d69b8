// The machine's identity and resources for the check answer: host name,
// date and time, the distribution, memory and mounted file systems.
#ifndef NV_AGENT_LIVE_LIVE_SYSINFO_H
#define NV_AGENT_LIVE_LIVE_SYSINFO_H

#include <ctime>
#include <string>
#include <vector>

#include "link/state_record.h"

namespace nvagent {

std::string CurrentHostName();
// "YYYY-MM-DD" and "HH:MM:SS" of a moment in local time.
void FormatDateTime(time_t t, std::string& date, std::string& clock);

// The distribution family of an os-release text (EM_OS_RELEASE_VER).
char OsReleaseFamily(const std::string& osRelease);

// Total, in-use (total less available) and free memory in MB from the text
// of /proc/meminfo; false when the fields are missing.
bool ParseMeminfo(const std::string& text, int& totalMb, int& usedMb, int& freeMb);

// The mounted file systems with blocks, sizes in MB.
std::vector<cDiskInfo> ReadDiskInfo();

}  // namespace nvagent

#endif
