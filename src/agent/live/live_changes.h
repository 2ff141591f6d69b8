// The live backend's changes, one function per kind of request, grouped by
// the file (the domain) that defines them. Each validates against the
// machine's current state, makes the change all or nothing and answers as
// the simulator does for the same situation.
#ifndef NV_AGENT_LIVE_LIVE_CHANGES_H
#define NV_AGENT_LIVE_LIVE_CHANGES_H

#include <ctime>
#include <functional>
#include <string>

#include "agent/commands/requests.h"
#include "agent/live/guard/pending_change.h"

namespace nvagent {

// live_kernel.cpp: /proc/sys and the agent's file under /etc/sysctl.d.
CmdResult ChangeKernelFlag(const FlagRequest& q);
CmdResult ChangeKernelLimit(const KernelRequest& q);
// Where the kernel settings are persisted.
extern const char* const kSysctlFile;

// live_hostname.cpp: the running name, /etc/hostname and /etc/hosts.
CmdResult ChangeHostName(const HostNameRequest& q);

// firewall/firewall_change.cpp: the agent's own chains, saved in the data
// directory. Given pending, a change that is made is only made live: its
// save and its undo are handed over there, to run when a watch ends.
CmdResult ChangePolicy(const PolicyRequest& q, const std::string& dataDir,
                       PendingChange* pending = nullptr);
CmdResult AddRule(const RuleAddRequest& q, const std::string& dataDir,
                  PendingChange* pending = nullptr);
CmdResult DeleteRule(FwChain chain, unsigned long long index, const std::string& dataDir,
                     PendingChange* pending = nullptr);
CmdResult ClearRules(FwChain chain, const std::string& dataDir, PendingChange* pending = nullptr);
// Undoes a pending firewall change from its recovery JSON (an agent
// started again); false with err when the JSON is not one or part of the
// undo was refused.
bool UndoFirewallRecovery(const std::string& json, std::string& err);
// Puts the agent's saved chains back at start-up (nothing else) and from
// then on whenever a check finds them gone; false with err when the
// restore tool refuses them.
bool RestoreFirewall(const std::string& dataDir, std::string& err);

// interfaces/interfaces_change.cpp: the owning network manager's configuration.
CmdResult ChangeInterface(const InterfaceRequest& q);
CmdResult ChangeInterfaceManual(const InterfaceManualRequest& q);
// The same made live only, for the session guard: true when the change is
// in force and waits in out for its commit (which writes the manager's
// persistent configuration) or its undo, with the answer to send now in r;
// false when nothing is pending (refused, nothing to change, or failed and
// already undone), with the answer in r. out.sPayload is left to the
// caller. Its recovery is undone by UndoInterfaceRecovery
// (interfaces/interface_recovery.h).
bool ChangeInterfaceDeferred(const InterfaceRequest& q, PendingChange& out, CmdResult& r);
bool ChangeInterfaceDeferred(const InterfaceManualRequest& q, PendingChange& out, CmdResult& r);

// live_ftp_change.cpp: the FTP server's configuration file and service.
CmdResult ChangeFtpFlag(const FlagRequest& q, const std::string& dataDir);
CmdResult ChangeFtpRoot(const PathRequest& q, const std::string& dataDir);
CmdResult RestoreFtpDefaults(const std::string& dataDir);

// live_samba_change.cpp: the agent's share section and Samba's service.
CmdResult ChangeSambaFlag(const FlagRequest& q, const std::string& dataDir);
CmdResult ChangeSambaPath(const PathRequest& q, const std::string& dataDir);
CmdResult RestoreSambaDefaults(const std::string& dataDir);

// live_password.cpp: chpasswd with the secret on standard input.
CmdResult ChangePassword(const PasswordRequest& q);

// live_clock.cpp: date and time through the one replaceable clock setter.
using ClockSetter = std::function<bool(time_t when, std::string& err)>;
// The system's setter (clock_settime of CLOCK_REALTIME).
bool SetSystemClock(time_t when, std::string& err);
CmdResult ChangeDate(const DateRequest& q, const ClockSetter& set, time_t now);
CmdResult ChangeTime(const TimeRequest& q, const ClockSetter& set, time_t now);

}  // namespace nvagent

#endif
