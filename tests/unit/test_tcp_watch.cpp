// The stall rule on tcp_info sequences: a cut on a fast link, slow and
// lossy links that must never read as a cut (a simulated 100 ms each way,
// 1 % loss link over many watches), an idle connection's old
// acknowledgement, closing connections, and the retransmission timer.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "agent/live/guard/tcp_watch.h"

using nvagent::StallBoundMs;
using nvagent::StallRule;
using nvagent::TcpSample;
using nvagent::TcpVerdict;

namespace {

constexpr uint8_t kEstablished = 1, kFinWait1 = 4, kFinWait2 = 5;

TcpSample At(int64_t t, uint32_t unacked, uint32_t lastAck, uint32_t lastSent, uint32_t rttUs = 300,
             uint32_t rttvarUs = 150) {
    TcpSample s;
    s.tMs = t;
    s.unacked = unacked;
    s.lastAckRecvMs = lastAck;
    s.lastDataSentMs = lastSent;
    s.rttUs = rttUs;
    s.rttvarUs = rttvarUs;
    s.rtoUs = 204000;
    return s;
}

// Feeds samples and returns the time of the first verdict other than
// watching, -1 when none.
int64_t FirstVerdict(StallRule& rule, const std::vector<TcpSample>& seq, TcpVerdict& v) {
    for (const TcpSample& s : seq) {
        v = rule.Feed(s);
        if (v != TcpVerdict::kWatching)
            return s.tMs;
    }
    v = TcpVerdict::kWatching;
    return -1;
}

TEST(StallBound, FloorOnFastLinksAndFourTimesTheTimeoutOnSlowOnes) {
    // A LAN: RTO is the kernel's 200 ms minimum, 4 x RTO below the floor.
    EXPECT_EQ(StallBoundMs(At(0, 0, 0, 0, 300, 150)), 1500);
    // 100 ms each way: RTT 200 ms, RTO 200 + 200 (the minimum variance).
    EXPECT_EQ(StallBoundMs(At(0, 0, 0, 0, 200000, 20000)), 1600);
    // A jittery link: the variance counts four times.
    EXPECT_EQ(StallBoundMs(At(0, 0, 0, 0, 200000, 100000)), 2400);
    // The reported timeout without its backoff, when larger.
    TcpSample s = At(0, 0, 0, 0, 200000, 20000);
    s.rtoUs = 4 * 600000;
    s.backoff = 2;
    EXPECT_EQ(StallBoundMs(s), 2400);
    // Never past 2.5 s, so that a cut is undone within 3 s.
    EXPECT_EQ(StallBoundMs(At(0, 0, 0, 0, 3000000, 1000000)), 2500);
    EXPECT_EQ(StallBoundMs(At(0, 0, 0, 0, 100000, 180000)), 2500);
}

TEST(StallRule, CutOnAFastLinkIsFoundJustPastTheFloor) {
    // An idle session (last acknowledgement 40 s ago), then the console
    // redraws at t=1000 and nothing is acknowledged any more.
    StallRule rule;
    std::vector<TcpSample> seq;
    for (int64_t t = 0; t < 1000; t += 150)
        seq.push_back(At(t, 0, static_cast<uint32_t>(40000 + t), 40000));
    for (int64_t t = 1050; t < 6000; t += 150)
        seq.push_back(At(t, 3, static_cast<uint32_t>(41000 + t), static_cast<uint32_t>(t - 1020)));
    TcpVerdict v;
    int64_t at = FirstVerdict(rule, seq, v);
    EXPECT_EQ(v, TcpVerdict::kStalled);
    // Data out at about 1020; the bound is 1.5 s; one poll of slack.
    EXPECT_GE(at, 1020 + 1500);
    EXPECT_LE(at, 1020 + 1500 + 150);
    EXPECT_NE(rule.Why().find("no acknowledgement"), std::string::npos) << rule.Why();
}

TEST(StallRule, AnIdleConnectionsOldAcknowledgementIsNoStall) {
    // Data sent after 60 s of silence and acknowledged 40 ms later.
    StallRule rule;
    std::vector<TcpSample> seq = {At(0, 0, 60000, 60000), At(150, 1, 60150, 10),
                                  At(300, 0, 120, 160)};
    TcpVerdict v;
    EXPECT_EQ(FirstVerdict(rule, seq, v), -1);
    // The same seen only once, at its first sample: the age is the time
    // since the data went out, not since the old acknowledgement.
    StallRule first;
    EXPECT_EQ(first.Feed(At(0, 1, 60000, 30)), TcpVerdict::kWatching);
}

TEST(StallRule, SteadyTrafficWithAcknowledgementsIsNoStall) {
    // Bulk data: always something outstanding, acknowledgements every RTT.
    StallRule rule;
    std::vector<TcpSample> seq;
    for (int64_t t = 0; t < 20000; t += 150)
        seq.push_back(At(t, 10, static_cast<uint32_t>(t % 200), 5, 200000, 20000));
    TcpVerdict v;
    EXPECT_EQ(FirstVerdict(rule, seq, v), -1);
}

TEST(StallRule, TwoLossesInARowOnASlowLinkAreNoStall) {
    // RTT 200 ms, RTO 400 ms: sent at 0, resent at 400 and 1200, the third
    // copy acknowledged at 1400; the bound is 1.6 s.
    StallRule rule;
    std::vector<TcpSample> seq;
    for (int64_t t = 0; t <= 1350; t += 150)
        seq.push_back(At(t + 10, 1, static_cast<uint32_t>(5000 + t), 10, 200000, 20000));
    seq.push_back(At(1510, 0, 110, 310, 200000, 20000));
    TcpVerdict v;
    EXPECT_EQ(FirstVerdict(rule, seq, v), -1);
}

TEST(StallRule, ThreeTimeoutsInARowStallAWatchThatStartsLate) {
    // The first sample already shows a connection resending for 3 s: the
    // age estimate starts at the last resend, the timer tells the truth.
    StallRule rule;
    TcpSample s = At(0, 2, 3000, 100);
    s.retransmits = 3;
    EXPECT_EQ(rule.Feed(s), TcpVerdict::kStalled);
    EXPECT_NE(rule.Why().find("retransmission"), std::string::npos) << rule.Why();
    // Two in a row are not enough.
    StallRule two;
    s.retransmits = 2;
    EXPECT_EQ(two.Feed(s), TcpVerdict::kWatching);
}

TEST(StallRule, DataThatCannotBeSentStallsButAClosedWindowDoesNot) {
    // The session's address removed: the data stays queued, nothing is in
    // flight, the probes go unanswered.
    StallRule gone;
    std::vector<TcpSample> seq;
    for (int64_t t = 0; t < 4000; t += 150) {
        TcpSample s = At(t, 0, static_cast<uint32_t>(t + 40), static_cast<uint32_t>(t + 40));
        s.notsentBytes = static_cast<uint32_t>(t / 50);
        s.probes = static_cast<uint8_t>(t < 200 ? 0 : t < 600 ? 1 : t < 1400 ? 2 : 3);
        seq.push_back(s);
    }
    TcpVerdict v;
    int64_t at = FirstVerdict(gone, seq, v);
    EXPECT_EQ(v, TcpVerdict::kStalled);
    EXPECT_GE(at, 1500);
    EXPECT_LE(at, 1700);
    EXPECT_NE(gone.Why().find("cannot be sent"), std::string::npos) << gone.Why();
    // A client that stopped reading: its window is closed, each probe is
    // answered (the count starts again), acknowledgements grow rare as the
    // probes back off.
    StallRule closed;
    seq.clear();
    for (int64_t t = 0; t < 15000; t += 150) {
        TcpSample s = At(t, 0, static_cast<uint32_t>((t % 3200) + 100), 20000);
        s.notsentBytes = 4096;
        s.probes = (t % 3200) < 1600 ? 0 : 1;
        seq.push_back(s);
    }
    EXPECT_EQ(FirstVerdict(closed, seq, v), -1);
}

TEST(StallRule, ClosedConnectionsEndTheWatchButAnUnacknowledgedCloseStalls) {
    StallRule gone;
    TcpSample s = At(0, 0, 10, 10);
    s.bFound = false;
    EXPECT_EQ(gone.Feed(s), TcpVerdict::kEnded);
    StallRule closed;
    s = At(0, 0, 10, 10);
    s.state = kFinWait2;
    EXPECT_EQ(closed.Feed(s), TcpVerdict::kEnded);
    // sshd closed its end over a cut: the FIN is never acknowledged.
    StallRule closing;
    std::vector<TcpSample> seq;
    for (int64_t t = 0; t < 3000; t += 150) {
        TcpSample c = At(t, 1, static_cast<uint32_t>(9000 + t), static_cast<uint32_t>(t));
        c.state = kFinWait1;
        seq.push_back(c);
    }
    TcpVerdict v;
    EXPECT_GT(FirstVerdict(closing, seq, v), 0);
    EXPECT_EQ(v, TcpVerdict::kStalled);
}

// A console's traffic over a link with 100 ms delay each way and 1 % loss
// of data and acknowledgements, with the kernel's retransmission timer
// (RTO 400 ms, doubled per timeout): a segment every 100 ms while the
// console redraws, read every 150 ms.
struct LossyLink {
    std::mt19937 rng{20261124};
    std::bernoulli_distribution lost{0.01};
    static constexpr int64_t kOneWay = 100, kRto = 400;

    // One watch of 15 s, everything lost from cutAt on (when not -1): the
    // time the rule read a stall, -1 for none.
    int64_t Watch(int64_t& worstAge, int64_t cutAt = -1) {
        struct Seg {
            int64_t firstSent, sent, ackAt;
            int tries;
        };
        std::vector<Seg> out;
        StallRule rule;
        int64_t lastAck = -60000, lastSent = -60000;
        for (int64_t t = 0; t < 15000; t += 10) {
            if (t % 100 == 0 && (t / 1000) % 3 != 2) {  // bursts with pauses
                Seg s{t, t, -1, 0};
                out.push_back(s);
            }
            for (Seg& s : out) {
                if (s.ackAt < 0 && s.sent == t) {
                    lastSent = t;
                    bool arrives = !lost(rng) && !lost(rng) && (cutAt < 0 || t < cutAt);
                    s.ackAt = arrives ? t + 2 * kOneWay : -2;
                }
                if (s.ackAt == -2 && t >= s.sent + (kRto << s.tries)) {
                    ++s.tries;
                    s.sent = t;
                    lastSent = t;
                    bool arrives = !lost(rng) && !lost(rng) && (cutAt < 0 || t < cutAt);
                    s.ackAt = arrives ? t + 2 * kOneWay : -2;
                }
            }
            for (auto it = out.begin(); it != out.end();) {
                if (it->ackAt >= 0 && it->ackAt <= t) {
                    lastAck = t;
                    worstAge = std::max(worstAge, t - it->firstSent);
                    it = out.erase(it);
                } else {
                    ++it;
                }
            }
            if (t % 150 == 0) {
                TcpSample s =
                    At(t, static_cast<uint32_t>(out.size()), static_cast<uint32_t>(t - lastAck),
                       static_cast<uint32_t>(t - lastSent), 200000, 20000);
                int timeouts = 0;
                for (const Seg& g : out)
                    timeouts = std::max(timeouts, g.tries);
                s.retransmits = static_cast<uint8_t>(timeouts);
                if (rule.Feed(s) == TcpVerdict::kStalled)
                    return t;
            }
        }
        return -1;
    }
};

TEST(StallRule, NoFalseStallOverTwoHundredWatchesOnALossyDelayedLink) {
    LossyLink link;
    int stalls = 0;
    int64_t worst = 0;
    for (int i = 0; i < 200; ++i)
        stalls += link.Watch(worst) >= 0 ? 1 : 0;
    EXPECT_EQ(stalls, 0);
    // The link did lose segments: some waited for a resend.
    EXPECT_GE(worst, 600);
    // The same link cut at 4 s, amid traffic: found within the bound (1.6 s) of the
    // first segment that went unanswered, plus a poll.
    for (int i = 0; i < 20; ++i) {
        int64_t at = link.Watch(worst, 4000);
        EXPECT_GE(at, 4000 + 1600);
        EXPECT_LE(at, 4000 + 1600 + 300);
    }
}

}  // namespace
