// The settings' helpers: the report folder and names, and the rule that an empty list
// switches its monitor off.
#include "agent/monitors/monitor_settings.h"

namespace nvmonit {

std::string MonitDir(const MonitorSettings& s) {
    std::string d = s.sDataDir;
    while (d.size() > 1 && d.back() == '/')
        d.pop_back();
    return d + "/monit";
}

bool IsReportName(const std::string& name) {
    static const char* const kNames[] = {kFileReport,   kProcessReport, kCpuReport,
                                         kMemoryReport, kVolumeReport,  kBackupReport};
    for (const char* n : kNames) {
        std::string base(n);
        if (name.compare(0, base.size(), base) != 0)
            continue;
        if (name.size() == base.size())
            return true;
        // A rotated copy: ".1", ".2", ...
        if (name[base.size()] == '.' && name.size() > base.size() + 1 &&
            name.find_first_not_of("0123456789", base.size() + 1) == std::string::npos) {
            return true;
        }
    }
    return false;
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
