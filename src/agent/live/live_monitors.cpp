// The live agent's side of the monitors: its settings translated for the
// supervisor, and the display lines completed with what is measured now.
#include "agent/live/live_monitors.h"

#include "agent/display_lines.h"
#include "agent/monitors/conf_settings.h"

namespace nvagent {

bool IsMonitorCommand(short cmd) {
    return cmd >= 13 && cmd <= 31;
}

LiveMonitors::LiveMonitors(std::string dataDir, int intervalMs)
    : m_dataDir(std::move(dataDir)), m_intervalMs(intervalMs) {}

bool LiveMonitors::SwitchOffEmptyLists(cConf_Inf& conf) const {
    nvmonit::MonitorSettings s = nvmonit::SettingsFromConf(conf, m_dataDir, m_intervalMs);
    if (!nvmonit::SwitchOffEmptyLists(s))
        return false;
    nvmonit::StoreSwitches(s, conf);
    return true;
}

void LiveMonitors::Apply(const cConf_Inf& conf) {
    m_supervisor.Apply(nvmonit::SettingsFromConf(conf, m_dataDir, m_intervalMs));
}

void LiveMonitors::ShowCurrentUse(cConf_Inf& conf) const {
    conf.vsDV = VolumeLines(conf.vDV);
    std::vector<nvmonit::VolumeUsage> uses = m_supervisor.VolumeUses();
    for (size_t i = 0; i < conf.vsDV.size() && i < uses.size(); ++i)
        conf.vsDV[i] += nvmonit::VolumeUseText(uses[i]);
    conf.vsBakForSize = BackupLines(conf.vBakForSize);
    std::vector<long long> sizes = m_supervisor.BackupSizes();
    for (size_t i = 0; i < conf.vsBakForSize.size() && i < sizes.size(); ++i)
        conf.vsBakForSize[i] += nvmonit::BackupSizeText(sizes[i]);
}

}  // namespace nvagent
