// The stall rule and one sock_diag question per reading: an exact lookup of
// the connection by its 4-tuple (no dump of every socket), asking for
// INET_DIAG_INFO, the kernel's struct tcp_info.
#include "agent/live/guard/tcp_watch.h"

#include <arpa/inet.h>
#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <linux/sock_diag.h>
#include <linux/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>

#include "agent/live/guard/change_watch.h"

namespace nvagent {

namespace {

// Kernel TCP states (include/net/tcp_states.h).
constexpr uint8_t kFinWait2 = 5, kTimeWait = 6, kClose = 7;

constexpr int64_t kFloorMs = 1500;
// A cut must be undone well within 3 s; right after an outage the kernel's
// variance (and so its RTO) stays inflated for a while, which would delay
// the next finding past that.
constexpr int64_t kCeilingMs = 2500;
constexpr int64_t kRtoMinMs = 200;
constexpr uint8_t kTimeoutsInARow = 3;
constexpr uint8_t kProbesInARow = 2;

std::string Ms(int64_t ms) {
    char b[32];
    snprintf(b, sizeof b, "%.1f s", static_cast<double>(ms) / 1000.0);
    return b;
}

bool Address(const std::string& text, int& family, uint32_t out[4]) {
    memset(out, 0, 4 * sizeof(uint32_t));
    family = text.find(':') == std::string::npos ? AF_INET : AF_INET6;
    return inet_pton(family, text.c_str(), out) == 1;
}

}  // namespace

int64_t SteadyMs() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

int64_t StallBoundMs(const TcpSample& s) {
    int64_t rtt = s.rttUs / 1000;
    int64_t rto = rtt + std::max<int64_t>(4 * (s.rttvarUs / 1000), kRtoMinMs);
    int64_t reported = (s.rtoUs / 1000) >> std::min<uint8_t>(s.backoff, 16);
    rto = std::max(rto, reported);
    return std::min(std::max(kFloorMs, 4 * rto), kCeilingMs);
}

TcpVerdict StallRule::Feed(const TcpSample& s) {
    if (!s.bFound || s.state == kFinWait2 || s.state == kTimeWait || s.state == kClose) {
        m_why = s.bFound ? "the connection was closed" : "the connection is gone";
        m_since = -1;
        return TcpVerdict::kEnded;
    }
    m_boundMs = StallBoundMs(s);
    int64_t prev = m_prevMs;
    m_prevMs = s.tMs;
    if (s.unacked == 0) {
        m_since = -1;
        if (s.notsentBytes > 0 && s.probes >= kProbesInARow && s.lastAckRecvMs > m_boundMs) {
            m_why = std::to_string(s.notsentBytes) + " byte(s) that cannot be sent, " +
                    std::to_string(s.probes) + " probes unanswered and no acknowledgement for " +
                    Ms(s.lastAckRecvMs);
            return TcpVerdict::kStalled;
        }
        return TcpVerdict::kWatching;
    }
    if (m_since < 0) {
        // The data went out after the last reading that saw none, and no
        // earlier than it was last sent (a resend counts as sending, which
        // only makes the estimate younger).
        int64_t sent = s.lastDataSentMs;
        if (prev >= 0)
            sent = std::min(sent, s.tMs - prev);
        m_since = s.tMs - sent;
    }
    int64_t age = std::min<int64_t>(s.tMs - m_since, s.lastAckRecvMs);
    if (age > m_boundMs) {
        m_why = "no acknowledgement for " + Ms(age) + " with " + std::to_string(s.unacked) +
                " segment(s) outstanding (bound " + Ms(m_boundMs) + ", RTT " +
                std::to_string(s.rttUs / 1000) + " ms" + ")";
        return TcpVerdict::kStalled;
    }
    if (s.retransmits >= kTimeoutsInARow && s.lastAckRecvMs > m_boundMs) {
        m_why = std::to_string(s.retransmits) + " retransmission timeouts in a row and " +
                "no acknowledgement for " + Ms(s.lastAckRecvMs);
        return TcpVerdict::kStalled;
    }
    return TcpVerdict::kWatching;
}

bool ReadTcpSample(const GuardSession& session, TcpSample& s, std::string& err) {
    struct {
        nlmsghdr nlh;
        inet_diag_req_v2 r;
    } req;
    memset(&req, 0, sizeof req);
    int famL = 0, famR = 0;
    if (!Address(session.sLocalAddr, famL, req.r.id.idiag_src) ||
        !Address(session.sRemoteAddr, famR, req.r.id.idiag_dst) || famL != famR) {
        err = "not a numeric address pair: " + session.sLocalAddr + ", " + session.sRemoteAddr;
        return false;
    }
    req.nlh.nlmsg_len = sizeof req;
    req.nlh.nlmsg_type = SOCK_DIAG_BY_FAMILY;
    req.nlh.nlmsg_flags = NLM_F_REQUEST;
    req.nlh.nlmsg_seq = 1;
    req.r.sdiag_family = static_cast<uint8_t>(famL);
    req.r.sdiag_protocol = IPPROTO_TCP;
    req.r.idiag_ext = 1 << (INET_DIAG_INFO - 1);
    req.r.idiag_states = ~0u;
    req.r.id.idiag_sport = htons(session.iLocalPort);
    req.r.id.idiag_dport = htons(session.iRemotePort);
    req.r.id.idiag_cookie[0] = req.r.id.idiag_cookie[1] = INET_DIAG_NOCOOKIE;

    int fd = socket(AF_NETLINK, SOCK_DGRAM | SOCK_CLOEXEC, NETLINK_SOCK_DIAG);
    if (fd < 0) {
        err = std::string("sock_diag: ") + strerror(errno);
        return false;
    }
    sockaddr_nl kernel{};
    kernel.nl_family = AF_NETLINK;
    if (sendto(fd, &req, sizeof req, 0, reinterpret_cast<sockaddr*>(&kernel), sizeof kernel) < 0) {
        err = std::string("sock_diag: ") + strerror(errno);
        close(fd);
        return false;
    }
    alignas(nlmsghdr) char buf[8192];
    ssize_t n = recv(fd, buf, sizeof buf, 0);
    int recvErr = errno;
    close(fd);
    if (n < 0) {
        err = std::string("sock_diag: ") + strerror(recvErr);
        return false;
    }
    s = TcpSample{};
    s.tMs = SteadyMs();
    int len = static_cast<int>(n);
    for (nlmsghdr* h = reinterpret_cast<nlmsghdr*>(buf); NLMSG_OK(h, len); h = NLMSG_NEXT(h, len)) {
        if (h->nlmsg_type == NLMSG_ERROR) {
            const nlmsgerr* e = static_cast<const nlmsgerr*>(NLMSG_DATA(h));
            if (e->error == -ENOENT) {
                s.bFound = false;
                return true;
            }
            err = std::string("sock_diag: ") + strerror(-e->error);
            return false;
        }
        if (h->nlmsg_type != SOCK_DIAG_BY_FAMILY)
            continue;
        const inet_diag_msg* m = static_cast<const inet_diag_msg*>(NLMSG_DATA(h));
        // Another connection on the same 4-tuple: the session's is gone.
        if (session.llInode != 0 && m->idiag_inode != 0 && m->idiag_inode != session.llInode) {
            s.bFound = false;
            return true;
        }
        s.state = m->idiag_state;
        int alen = static_cast<int>(h->nlmsg_len - NLMSG_LENGTH(sizeof *m));
        for (rtattr* a = reinterpret_cast<rtattr*>(const_cast<inet_diag_msg*>(m) + 1);
             RTA_OK(a, alen); a = RTA_NEXT(a, alen)) {
            if (a->rta_type != INET_DIAG_INFO)
                continue;
            tcp_info ti;
            memset(&ti, 0, sizeof ti);
            memcpy(&ti, RTA_DATA(a), std::min<size_t>(RTA_PAYLOAD(a), sizeof ti));
            s.unacked = ti.tcpi_unacked;
            s.lastDataSentMs = ti.tcpi_last_data_sent;
            s.lastAckRecvMs = ti.tcpi_last_ack_recv;
            s.rttUs = ti.tcpi_rtt;
            s.rttvarUs = ti.tcpi_rttvar;
            s.rtoUs = ti.tcpi_rto;
            s.backoff = ti.tcpi_backoff;
            s.retransmits = ti.tcpi_retransmits;
            s.totalRetrans = ti.tcpi_total_retrans;
            s.notsentBytes = ti.tcpi_notsent_bytes;
            s.probes = ti.tcpi_probes;
        }
        return true;
    }
    err = "sock_diag: no answer about the connection";
    return false;
}

GuardSession SessionOnLocalPort(uint16_t port, pid_t consolePid) {
    GuardSession found;
    for (int family : {AF_INET, AF_INET6}) {
        struct {
            nlmsghdr nlh;
            inet_diag_req_v2 r;
        } req;
        memset(&req, 0, sizeof req);
        req.nlh.nlmsg_len = sizeof req;
        req.nlh.nlmsg_type = SOCK_DIAG_BY_FAMILY;
        req.nlh.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
        req.r.sdiag_family = static_cast<uint8_t>(family);
        req.r.sdiag_protocol = IPPROTO_TCP;
        req.r.idiag_states = 1u << 1;  // TCP_ESTABLISHED
        int fd = socket(AF_NETLINK, SOCK_DGRAM | SOCK_CLOEXEC, NETLINK_SOCK_DIAG);
        if (fd < 0)
            return found;
        sockaddr_nl kernel{};
        kernel.nl_family = AF_NETLINK;
        bool more = sendto(fd, &req, sizeof req, 0, reinterpret_cast<sockaddr*>(&kernel),
                           sizeof kernel) > 0;
        while (more && !found.bFound) {
            alignas(nlmsghdr) char buf[16384];
            ssize_t n = recv(fd, buf, sizeof buf, 0);
            if (n <= 0)
                break;
            int len = static_cast<int>(n);
            for (nlmsghdr* h = reinterpret_cast<nlmsghdr*>(buf); NLMSG_OK(h, len);
                 h = NLMSG_NEXT(h, len)) {
                if (h->nlmsg_type == NLMSG_DONE || h->nlmsg_type == NLMSG_ERROR) {
                    more = false;
                    break;
                }
                const inet_diag_msg* m = static_cast<const inet_diag_msg*>(NLMSG_DATA(h));
                if (ntohs(m->id.idiag_sport) != port || found.bFound)
                    continue;
                char a[INET6_ADDRSTRLEN], b[INET6_ADDRSTRLEN];
                inet_ntop(family, m->id.idiag_src, a, sizeof a);
                inet_ntop(family, m->id.idiag_dst, b, sizeof b);
                found.bFound = true;
                found.iFamily = family;
                found.sLocalAddr = a;
                found.iLocalPort = port;
                found.sRemoteAddr = b;
                found.iRemotePort = ntohs(m->id.idiag_dport);
                found.llInode = m->idiag_inode;
            }
        }
        close(fd);
        if (found.bFound)
            break;
    }
    if (found.bFound) {
        found.iConsolePid = consolePid;
        found.llConsoleStart = ProcessStartTime(consolePid);
    }
    return found;
}

}  // namespace nvagent
