// The session guard's refusal step: a firewall or interface command that
// would certainly cut the SSH session the console runs in is refused (code
// 4) with a detail that names the session and how to confirm; the same
// command with the same payload from the same session within 60 s is then
// carried out. Both are noted for the journal.
#ifndef NV_AGENT_LIVE_GUARD_SESSION_GUARD_H
#define NV_AGENT_LIVE_GUARD_SESSION_GUARD_H

#include <sys/types.h>

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <tuple>

#include "agent/backend.h"
#include "agent/commands/requests.h"
#include "agent/live/guard/guard_session.h"

namespace nvagent {

// The session of the process that sent a request (not found for pid 0).
GuardSession SessionOf(const Peer& peer);

// The firewall (32-39) and interface (52-55) commands, which are judged.
bool IsGuardedCommand(short cmd);

// Why req cuts the session s on this machine as it is now (the agent's
// chains, the route to the client, the interface's addressing), or empty.
std::string JudgeCut(const Request& req, const GuardSession& s);

// How long a refused command waits for its confirming repeat.
constexpr int kConfirmSeconds = 60;

// The refusal's detail, at most 78 bytes (the client's address shortened
// to fit).
std::string RefusalDetail(const GuardSession& s);

class SessionGuard {
public:
    // now: seconds of a monotonic clock (tests give their own).
    explicit SessionGuard(std::function<double()> now = nullptr);

    // The refusal step for one parsed command sent from session (SessionOf
    // the sender), before anything is applied: true with the refusal in r;
    // false when it may be carried out, with note set (for the journal)
    // when it is carried out on confirmation.
    bool Refuses(short cmd, const std::string& payload, const Request& req,
                 const GuardSession& session, CmdResult& r, std::string& note);

    // The same for a session and a judged cut (empty: none).
    bool Decide(short cmd, const std::string& payload, const GuardSession& s,
                const std::string& cut, CmdResult& r, std::string& note);

private:
    // A refused command awaiting its repeat: command, payload, and the
    // session (server pid, its start time, the connection's inode).
    using Key = std::tuple<short, std::string, pid_t, unsigned long long, uint64_t>;
    std::function<double()> m_now;
    std::mutex m_mu;
    std::map<Key, double> m_refused;  // when each was refused
};

}  // namespace nvagent

#endif
