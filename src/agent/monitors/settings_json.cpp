// Reading MonitorSettings from JSON.
#include "agent/monitors/settings_json.h"

#include <nlohmann/json.hpp>

namespace nvmonit {

namespace {

template <class T>
void Take(const nlohmann::json& j, const char* key, T& v) {
    if (j.contains(key))
        v = j.at(key).get<T>();
}

}  // namespace

bool SettingsFromJson(const std::string& text, MonitorSettings& s, std::string& err) {
    try {
        nlohmann::json j = nlohmann::json::parse(text);
        if (!j.is_object()) {
            err = "the settings are not a JSON object";
            return false;
        }
        MonitorSettings r;
        Take(j, "dataDir", r.sDataDir);
        Take(j, "intervalMs", r.iIntervalMs);
        Take(j, "reportMaxBytes", r.llReportMaxBytes);
        Take(j, "procDir", r.sProcDir);
        std::string systemd = "auto";
        Take(j, "systemd", systemd);
        if (systemd == "never")
            r.enSystemd = SystemdUse::kNever;
        else if (systemd == "always")
            r.enSystemd = SystemdUse::kAlways;
        else if (systemd != "auto")
            throw std::runtime_error("systemd must be auto, never or always");
        Take(j, "fileOn", r.bFileOn);
        Take(j, "files", r.vFiles);
        Take(j, "processOn", r.bProcessOn);
        Take(j, "processes", r.vProcesses);
        Take(j, "cpuOn", r.bCpuOn);
        Take(j, "cpuCeil", r.iCpuCeilPercent);
        Take(j, "cpuFloor", r.iCpuFloorPercent);
        Take(j, "memoryOn", r.bMemoryOn);
        Take(j, "memCeilMb", r.llMemCeilMb);
        Take(j, "volumeOn", r.bVolumeOn);
        if (j.contains("volumes")) {
            for (const auto& v : j.at("volumes")) {
                VolumeEntry e;
                e.sPartition = v.at("partition").get<std::string>();
                Take(v, "ceil", e.llCeilMb);
                Take(v, "floor", e.llFloorMb);
                Take(v, "interval", e.llIntervalMb);
                r.vVolumes.push_back(e);
            }
        }
        Take(j, "backupOn", r.bBackupOn);
        if (j.contains("backups")) {
            for (const auto& v : j.at("backups")) {
                BackupEntry e;
                e.sFile = v.at("file").get<std::string>();
                e.sBackupDir = v.at("dir").get<std::string>();
                Take(v, "limitKb", e.llLimitKb);
                r.vBackups.push_back(e);
            }
        }
        s = r;
        return true;
    } catch (const std::exception& e) {
        err = e.what();
        return false;
    }
}

}  // namespace nvmonit
