// Changing the filter table: every change of one family is one
// "iptables-restore --noflush" (or ip6tables-restore) batch on standard
// input, so that a failure changes nothing of that family.
#ifndef NV_AGENT_LIVE_FIREWALL_FIREWALL_RESTORE_H
#define NV_AGENT_LIVE_FIREWALL_FIREWALL_RESTORE_H

#include <string>

namespace nvagent {

// Runs the batch's lines inside "*filter" ... "COMMIT" for family 4 or 6;
// false with err.
bool RunRestore(int family, const std::string& lines, std::string& err);

// The line that enters the agent's chain from the base chain (0 input, 1
// output): appended, so that the rules other tools put in the base chain
// (fail2ban's bans among them) are met first.
std::string JumpLine(int chain);

}  // namespace nvagent

#endif
