// The test bed of the session guard's end-to-end tests and figures: the
// sandbox's nv0 owned by ifupdown with the session's address, SSH exempt
// from connection tracking (so that a firewall change cuts the running
// session at once, as on a server whose SSH traffic is NOTRACK), snapshots
// of the live configuration and of the persistent files, and a watcher
// that times when the live configuration changes and when it comes back.
#ifndef NV_TESTS_SUPPORT_GUARD_BED_H
#define NV_TESTS_SUPPORT_GUARD_BED_H

#include <atomic>
#include <chrono>
#include <mutex>
#include <string>
#include <thread>

#include "live_sandbox.h"
#include "remote_session.h"

namespace nvtest {

// nv0 as an ifupdown stanza (10.77.0.2/24, gateway 10.77.0.1) brought up
// with ifup (from whatever state it is in), and the NOTRACK rules for port
// 22 in the raw table. False with err when the sandbox could not be
// prepared.
bool PrepareGuardBed(std::string& err);

// The firewall (both families), nv0's addresses and link state, the routes,
// and whether a DHCP client runs for nv0: what a guarded change alters.
std::string LiveConfiguration();

// The persistent files a guarded change could write: the agent's firewall
// file in dataDir, ifupdown's configuration, the agent's sysctl file.
std::string PersistentFiles(const std::string& dataDir);

// Polls LiveConfiguration() every few tens of milliseconds from Start()
// until the destructor, comparing it with a snapshot taken before.
class ChangeWatcher {
public:
    using Clock = std::chrono::steady_clock;
    explicit ChangeWatcher(std::string before);
    ~ChangeWatcher();
    ChangeWatcher(const ChangeWatcher&) = delete;
    ChangeWatcher& operator=(const ChangeWatcher&) = delete;
    void Start();
    // Waits for the first difference; false at the deadline.
    bool WaitChanged(int timeoutMs);
    // Waits until, after a difference, the snapshot is back; false at the
    // deadline.
    bool WaitRestored(int timeoutMs);
    // When the difference was first and the original last seen again
    // (Clock::time_point() when not yet).
    Clock::time_point Changed();
    Clock::time_point Restored();
    // The configuration seen first after the change.
    std::string ChangedTo();

private:
    void Loop();
    std::string m_before;
    std::thread m_thread;
    std::atomic<bool> m_stop{false};
    std::mutex m_mu;
    Clock::time_point m_changed, m_restored;
    std::string m_changedTo;
};

// An nvcmd command line for the session's shell against the agent's
// socket: `NVUI_SOCKET=... nvcmd send CMD PAYLOAD`.
std::string NvcmdLine(const std::string& socket, const std::string& cmd,
                      const std::string& payload);

// Milliseconds between two points.
long MsBetween(std::chrono::steady_clock::time_point from,
               std::chrono::steady_clock::time_point to);

}  // namespace nvtest

#endif
