// The live agent's monitors wired to its settings: the switches, lists and
// thresholds of the agent's own settings run the monitors of
// src/agent/monitors, a switch whose list is empty turns itself off, and the
// check answer's volume and backup lines show the current use beside their
// thresholds; paths a monitor must not touch are refused at the command.
#ifndef NV_AGENT_LIVE_LIVE_MONITORS_H
#define NV_AGENT_LIVE_LIVE_MONITORS_H

#include <string>

#include "agent/commands/requests.h"
#include "agent/monitors/monitor_supervisor.h"
#include "agent/monitors/timed_probe.h"
#include "link/state_record.h"

namespace nvagent {

// Whether a set command changes a monitor's switch, list or threshold.
bool IsMonitorCommand(short cmd);

class LiveMonitors {
public:
    // intervalMs above 0 replaces every monitor's own sampling interval.
    LiveMonitors(std::string dataDir, int intervalMs);

    // Turns off in conf the switches whose list is empty; true when one
    // changed (the caller saves conf).
    bool SwitchOffEmptyLists(cConf_Inf& conf) const;
    // Whether the paths of a monitor command are refused on this machine
    // (r holds the answer, code 2 with the reason): the agent's data
    // directory and what lies under it in any list of paths (its settings
    // and reports), and for a backup a source or directory that fails the
    // trust rule (trusted_path.h) or a source that is not a regular file.
    // A file system that does not answer in time refuses too.
    bool PathsRefused(const Request& req, CmdResult& r);
    // Starts, stops and reconfigures the monitors to match conf.
    void Apply(const cConf_Inf& conf);
    // Rewrites conf's volume and backup lines with the current use and size
    // of each entry; conf must be what Apply was last given.
    void ShowCurrentUse(cConf_Inf& conf) const;

private:
    std::string m_dataDir;
    int m_intervalMs;
    nvmonit::MonitorSupervisor m_supervisor;
    nvmonit::TimedProbes<std::string> m_pathChecks;
};

}  // namespace nvagent

#endif
