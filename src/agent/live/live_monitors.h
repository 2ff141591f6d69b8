// The live agent's monitors wired to its settings: the switches, lists and
// thresholds of the agent's own settings run the monitors of
// src/agent/monitors, a switch whose list is empty turns itself off, and the
// check answer's volume and backup lines show the current use beside their
// thresholds.
#ifndef NV_AGENT_LIVE_LIVE_MONITORS_H
#define NV_AGENT_LIVE_LIVE_MONITORS_H

#include <string>

#include "agent/monitors/monitor_supervisor.h"
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
    // Starts, stops and reconfigures the monitors to match conf.
    void Apply(const cConf_Inf& conf);
    // Rewrites conf's volume and backup lines with the current use and size
    // of each entry; conf must be what Apply was last given.
    void ShowCurrentUse(cConf_Inf& conf) const;

private:
    std::string m_dataDir;
    int m_intervalMs;
    nvmonit::MonitorSupervisor m_supervisor;
};

}  // namespace nvagent

#endif
