// The session guard's refusal step and its confirmation memory.
#include "agent/live/guard/session_guard.h"

#include <sys/socket.h>

#include <chrono>
#include <cstring>

#include "agent/live/firewall/firewall_read.h"
#include "agent/live/guard/guard_address.h"
#include "agent/live/guard/guard_firewall.h"
#include "agent/live/guard/guard_interfaces.h"
#include "agent/live/interfaces/interface_state.h"

namespace nvagent {

namespace {

double MonotonicSeconds() {
    using namespace std::chrono;
    return duration<double>(steady_clock::now().time_since_epoch()).count();
}

// The refusal's words around the client's address.
const char* const kRefusalHead = "Cuts SSH session from ";
const char* const kRefusalTail = "; send again in 60 s (F9) to confirm.";
constexpr size_t kDetailMax = 78;
// Refusals awaiting their repeat, at most.
constexpr size_t kMaxRefusals = 64;

std::string SessionText(const GuardSession& s) {
    bool v6 = s.iFamily == AF_INET6;
    auto ep = [v6](const std::string& a, int port) {
        return (v6 ? "[" + a + "]" : a) + ":" + std::to_string(port);
    };
    return "the SSH session " + ep(s.sRemoteAddr, s.iRemotePort) + " -> " +
           ep(s.sLocalAddr, s.iLocalPort);
}

}  // namespace

GuardSession SessionOf(const Peer& peer) {
    if (peer.iPid <= 0)
        return GuardSession();
    return FindGuardSession(peer.iPid);
}

bool IsGuardedCommand(short cmd) {
    return (cmd >= 32 && cmd <= 39) || (cmd >= 52 && cmd <= 55);
}

std::string JudgeCut(const Request& req, const GuardSession& s) {
    if (!s.bFound)
        return "";
    std::string name = InterfaceOf(req);
    if (!name.empty()) {
        NetInterface iface;
        CmdResult ignored;
        bool dynamic = FindInterface(name, iface, ignored) && iface.mode == kModeDynamic;
        return InterfaceCut(req, s, ReadSessionPath(s), dynamic);
    }
    ChainView views[2];
    std::string err;
    std::lock_guard<std::recursive_mutex> lock(FirewallChangeLock());
    if (!ReadFirewall(views[0], views[1], err, true))
        return "";
    return FirewallCut(views, req, s);
}

std::string RefusalDetail(const GuardSession& s) {
    size_t room = kDetailMax - strlen(kRefusalHead) - strlen(kRefusalTail);
    return kRefusalHead + ShortAddress(s.sRemoteAddr, room) + kRefusalTail;
}

SessionGuard::SessionGuard(std::function<double()> now)
    : m_now(now ? std::move(now) : MonotonicSeconds) {}

bool SessionGuard::Refuses(short cmd, const std::string& payload, const Request& req,
                           const GuardSession& session, CmdResult& r, std::string& note) {
    note.clear();
    if (!IsGuardedCommand(cmd) || !session.bFound)
        return false;
    return Decide(cmd, payload, session, JudgeCut(req, session), r, note);
}

bool SessionGuard::Decide(short cmd, const std::string& payload, const GuardSession& s,
                          const std::string& cut, CmdResult& r, std::string& note) {
    note.clear();
    if (cut.empty())
        return false;
    double now = m_now();
    Key key{cmd, payload, s.iServerPid, s.llServerStart, s.llInode};
    std::lock_guard<std::mutex> lock(m_mu);
    for (auto it = m_refused.begin(); it != m_refused.end();) {
        if (now - it->second > kConfirmSeconds)
            it = m_refused.erase(it);
        else
            ++it;
    }
    std::string why = "it would cut " + SessionText(s) + ": " + cut;
    auto it = m_refused.find(key);
    if (it != m_refused.end()) {
        m_refused.erase(it);
        note = "carried out on confirmation; " + why;
        return false;
    }
    // A bounded memory: the oldest refusal makes room for a new one.
    if (m_refused.size() >= kMaxRefusals) {
        auto oldest = m_refused.begin();
        for (auto i = m_refused.begin(); i != m_refused.end(); ++i) {
            if (i->second < oldest->second)
                oldest = i;
        }
        m_refused.erase(oldest);
    }
    m_refused[key] = now;
    r = Failed(RefusalDetail(s));
    r.sNote = "refused: " + why;
    return true;
}

}  // namespace nvagent
