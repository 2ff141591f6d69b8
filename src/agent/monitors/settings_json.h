// MonitorSettings as JSON, for the nvmonitors program and its tests:
//
//   {"dataDir": "/etc/norvane", "intervalMs": 0, "reportMaxBytes": 1048576,
//    "systemd": "auto" | "never" | "always",
//    "fileOn": true, "files": ["/etc/hosts"],
//    "processOn": true, "processes": ["sleep 600"],
//    "cpuOn": true, "cpuCeil": 90, "cpuFloor": 0,
//    "memoryOn": true, "memCeilMb": 4000,
//    "volumeOn": true, "volumes": [{"partition": "/dev/vda1", "ceil": 1000,
//                                   "floor": 100, "interval": 50}],
//    "backupOn": true, "backups": [{"file": "/var/log/x.log",
//                                   "dir": "/var/backups", "limitKb": 1024}]}
//
// Every key is optional; a missing key keeps the default.
#ifndef NV_AGENT_MONITORS_SETTINGS_JSON_H
#define NV_AGENT_MONITORS_SETTINGS_JSON_H

#include <string>

#include "agent/monitors/monitor_settings.h"

namespace nvmonit {

// Parses text into s; false with the reason in err when it is not valid.
bool SettingsFromJson(const std::string& text, MonitorSettings& s, std::string& err);

}  // namespace nvmonit

#endif
