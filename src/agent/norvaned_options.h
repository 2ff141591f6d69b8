// The command line of norvaned.
#ifndef NV_AGENT_NORVANED_OPTIONS_H
#define NV_AGENT_NORVANED_OPTIONS_H

#include <cstddef>
#include <string>

namespace nvagent {

struct NorvanedOptions {
    std::string sSocketPath = "/dev/nvsock";
    std::string sBackend = "sim";
    std::string sStatePath;                 // empty: the state is kept in memory only
    std::string sDataDir = "/etc/norvane";  // the live backend's own settings
    std::string sJournalPath;               // empty: no journal
    size_t journalMaxBytes = 8u << 20;
    int iMonitorIntervalMs = 0;            // above 0: every monitor samples this often
    std::string sRunDir = "/run/norvane";  // the live backend's pending changes
    // Above 0: every console's guarded session is the established TCP
    // connection on this local port (for tests).
    int iGuardSessionPort = 0;
    bool bForeground = false;
    bool bHelp = false;
};

// Parses argv into opts. Returns false with a message in err for a usage
// error: an unknown option, a missing value, a stray argument, a backend
// other than "sim" and "system" or a monitor interval that is not a whole
// number of milliseconds from 1 to 3600000.
bool ParseNorvanedOptions(int argc, char** argv, NorvanedOptions& opts, std::string& err);

// The --help text.
const char* NorvanedUsage();

}  // namespace nvagent

#endif
