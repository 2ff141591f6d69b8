// Watching a guarded session's TCP connection after a change: its tcp_info
// read through netlink sock_diag every poll, and a rule that tells a stalled
// connection (data sent and no acknowledgement for much longer than the
// measured round trip allows) from a slow or lossy one.
#ifndef NV_AGENT_LIVE_GUARD_TCP_WATCH_H
#define NV_AGENT_LIVE_GUARD_TCP_WATCH_H

#include <cstdint>
#include <string>

#include "agent/live/guard/guard_session.h"

namespace nvagent {

// One reading of the connection, from the kernel's tcp_info.
struct TcpSample {
    int64_t tMs = 0;              // when it was read (any steady clock, in ms)
    bool bFound = true;           // false: the connection is gone
    uint8_t state = 1;            // TCP_ESTABLISHED and the other kernel states
    uint32_t unacked = 0;         // segments sent and not yet acknowledged
    uint32_t lastDataSentMs = 0;  // since data was last sent (or resent)
    uint32_t lastAckRecvMs = 0;   // since an acknowledgement last arrived
    uint32_t rttUs = 0, rttvarUs = 0;
    uint32_t rtoUs = 0;         // the current, backed-off retransmission timeout
    uint8_t backoff = 0;        // how often it was doubled
    uint8_t retransmits = 0;    // timeouts in a row without an acknowledgement
    uint32_t totalRetrans = 0;  // segments resent over the connection's life
    uint32_t notsentBytes = 0;  // queued and not sent yet
    uint8_t probes = 0;         // probes sent in a row without an acknowledgement
};

enum class TcpVerdict { kWatching, kStalled, kEnded };

// The stall rule, fed one sample per poll.
//
// A connection has stalled when it has data outstanding (unacked > 0) and
// no acknowledgement has arrived for longer than the bound, counted from the
// later of the last acknowledgement and the moment the outstanding data was
// first seen (an idle connection's old acknowledgement says nothing). The
// bound is max(1.5 s, 4 x RTO) and at most 2.5 s, RTO being the kernel's
// base timeout (rtt + max(4 x rttvar, 200 ms), or the reported one without
// its backoff, whichever is larger): a segment must then have been lost three
// times in a row to read as a stall (sent, resent after RTO, resent again
// after 2 x RTO, the third copy acknowledged before 4 x RTO), about one in
// 100,000 segments at 1 % loss each way. The ceiling keeps a cut undone
// within 3 s where the RTO is above 625 ms (round trips beyond about 400 ms,
// or the inflated variance right after an outage); there two losses in a
// row can read as a stall.
// Three retransmission timeouts in a row with no acknowledgement for the
// same bound also stall it (the same fact seen from the retransmit timer),
// and so does data that cannot even be sent (the session's address gone:
// queued, nothing in flight, two probes in a row unanswered) with no
// acknowledgement for the bound; a receiver that only closed its window
// answers each probe, which starts the count again.
// A connection that is gone or past its own close (FIN_WAIT2, TIME_WAIT,
// CLOSE) has ended; while it closes with data or a FIN still unacknowledged
// it is watched as before.
class StallRule {
public:
    TcpVerdict Feed(const TcpSample& s);
    // Why the last verdict was given, in words for the log and journal.
    const std::string& Why() const { return m_why; }
    // The bound the last sample gave, in ms.
    int64_t BoundMs() const { return m_boundMs; }
    // Whether data is outstanding with no acknowledgement since it was
    // seen (a watch near its end waits for the rule's answer).
    bool Waiting() const { return m_since >= 0; }

private:
    int64_t m_since = -1;  // when the outstanding data was first seen
    int64_t m_prevMs = -1;
    int64_t m_boundMs = 0;
    std::string m_why;
};

// The bound of the rule for a sample, in ms.
int64_t StallBoundMs(const TcpSample& s);

// Reads the session's connection (its 4-tuple) now; false with err when
// sock_diag cannot be asked. A connection the kernel no longer has is
// read as bFound false.
bool ReadTcpSample(const GuardSession& session, TcpSample& s, std::string& err);

// The first established TCP connection on local port port (IPv4, then
// IPv6), as the session of the console process consolePid; bFound false
// when there is none. For tests, which cannot run the console under an
// SSH server.
GuardSession SessionOnLocalPort(uint16_t port, pid_t consolePid);

// A steady clock in ms, for the samples' tMs.
int64_t SteadyMs();

}  // namespace nvagent

#endif
