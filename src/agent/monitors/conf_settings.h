// The glue between the agent's state record and the monitors: the
// monitors' settings taken from a cConf_Inf, and the switches an empty list
// turned off written back to it.
//
//     nvmonit::MonitorSettings s = nvmonit::SettingsFromConf(conf, dataDir, intervalMs);
//     if (nvmonit::SwitchOffEmptyLists(s))
//         nvmonit::StoreSwitches(s, conf);  // then save the state
//     supervisor.Apply(s);
//
// The display lines show the current state beside each entry:
// VolumeLines(conf.vDV)[i] + VolumeUseText(supervisor.VolumeUses()[i]) and
// BackupLines(conf.vBakForSize)[i] + BackupSizeText(supervisor.BackupSizes()[i])
// (the supervisor's lists follow the order of the settings it was given).
// The memory page's figures (iMemTotal, iMemUse, iMemFree) come from
// ReadMemory in memory_monitor.h, the same reading the memory monitor uses.
#ifndef NV_AGENT_MONITORS_CONF_SETTINGS_H
#define NV_AGENT_MONITORS_CONF_SETTINGS_H

#include <string>

#include "agent/monitors/monitor_settings.h"
#include "link/state_record.h"

namespace nvmonit {

// A switch is on when its flag is the character '1'.
MonitorSettings SettingsFromConf(const cConf_Inf& c, const std::string& dataDir, int intervalMs);

// Writes the six switches of s back as flags '1' or '0'.
void StoreSwitches(const MonitorSettings& s, cConf_Inf& c);

}  // namespace nvmonit

#endif
