// The display lines the console shows for each list, generated from the
// structured data. Lists the user deletes from by index (disk volumes,
// backups, firewall rules) and the interface list start with a 1-based index
// column that matches the indexes the delete commands take. Also the shown
// date and time.
#ifndef NV_AGENT_DISPLAY_LINES_H
#define NV_AGENT_DISPLAY_LINES_H

#include <ctime>
#include <string>
#include <vector>

#include "agent/commands/requests.h"
#include "link/state_record.h"

namespace nvagent {

// sNowDate's "YYYY-MM-DD" and sNowTime's "HH:MM:SS" of a moment in local
// time, as both backends show them.
void FormatDateTime(time_t t, std::string& date, std::string& clock);

tVecStr VolumeLines(const std::vector<cDiskVolume>& v);
tVecStr BackupLines(const std::vector<cBakForSize>& v);
tVecStr RuleLines(const std::vector<FwRule>& v);
// A firewall chain page: its policy first ("Policy: accept"; '1' accept,
// '2' drop, anything else unknown), never counted in the indexes, then
// the rules.
std::string PolicyLine(char policy);
tVecStr ChainLines(char policy, const std::vector<FwRule>& v);
tVecStr InterfaceLines(const std::vector<NetInterface>& v);
tVecStr ListenLines(const std::vector<cTcpListen>& v);
tVecStr DiskInfoLines(const std::vector<cDiskInfo>& v);

}  // namespace nvagent

#endif
