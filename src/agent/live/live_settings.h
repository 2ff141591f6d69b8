// The agent's own settings (language, the monitors' switches, lists and
// thresholds, disk volumes and backups), kept in one JSON file in the data
// directory and written atomically after every change.
#ifndef NV_AGENT_LIVE_LIVE_SETTINGS_H
#define NV_AGENT_LIVE_LIVE_SETTINGS_H

#include <string>

#include "link/state_record.h"

namespace nvagent {

// The settings file of a data directory.
std::string SettingsPath(const std::string& dataDir);

// Loads the settings into conf (only the agent's own fields). A missing
// file leaves the defaults; an unreadable or malformed one is an error.
bool LoadSettings(const std::string& path, cConf_Inf& conf, std::string& err);

// Writes the agent's own fields of conf atomically, creating the directory
// (mode 0700) when needed.
bool SaveSettings(const std::string& path, const cConf_Inf& conf, std::string& err);

// Creates dir and its missing parents (mode 0700); false with err.
bool EnsureDir(const std::string& dir, std::string& err);

// Copies the agent's own fields from one record to another.
void CopySettings(const cConf_Inf& from, cConf_Inf& to);

}  // namespace nvagent

#endif
