// The settings' helpers: the report folder and the rule that an empty list
// switches its monitor off.
#include "agent/monitors/monitor_settings.h"

namespace nvmonit {

std::string MonitDir(const MonitorSettings& s) {
    std::string d = s.sDataDir;
    while (d.size() > 1 && d.back() == '/')
        d.pop_back();
    return d + "/monit";
}

bool SwitchOffEmptyLists(MonitorSettings& s) {
    bool changed = false;
    auto off = [&changed](bool& flag, bool empty) {
        if (flag && empty) {
            flag = false;
            changed = true;
        }
    };
    off(s.bFileOn, s.vFiles.empty());
    off(s.bProcessOn, s.vProcesses.empty());
    off(s.bVolumeOn, s.vVolumes.empty());
    off(s.bBackupOn, s.vBackups.empty());
    return changed;
}

}  // namespace nvmonit
