// Finding the console's network session: the console's ancestors read from
// /proc (each parent's start time no later than its child's, so that a
// reused pid is never taken for a parent) up to the SSH server, whose
// socket inodes are matched to the kernel's established TCP sockets
// (sock_diag). A chain that ends in a terminal multiplexer's server instead
// takes an established connection to a port the SSH server listens on.
#include "agent/live/guard/guard_session.h"

#include <arpa/inet.h>
#include <dirent.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "agent/live/live_files.h"
#include "agent/live/sock_diag.h"

namespace nvagent {

namespace {

// The executables of an SSH server (the listener and, in newer releases,
// its per-connection program) and of terminal multiplexers.
const char* const kSshServers[] = {"sshd", "sshd-session"};
const char* const kMultiplexers[] = {"tmux", "screen"};
// Shells reached over UDP after an SSH login started them: no TCP connection
// to read, but the login's addresses are in the server's environment.
const char* const kUdpShells[] = {"mosh-server"};

// Longest ancestry followed; deeper chains are not sessions.
constexpr int kMaxDepth = 64;

struct ProcEntry {
    pid_t pid = 0;
    pid_t ppid = 0;
    unsigned long long start = 0;
    std::string exe;  // basename of /proc/PID/exe
    long uid = -1;    // real uid
};

std::string PidDir(const std::string& procRoot, pid_t pid) {
    return procRoot + "/" + std::to_string(pid);
}

// The base name of the program a process runs; a program replaced on disk
// since it started still counts as itself.
std::string ExeName(const std::string& dir) {
    char buf[4096];
    ssize_t n = readlink((dir + "/exe").c_str(), buf, sizeof buf - 1);
    if (n <= 0)
        return "";
    std::string path(buf, static_cast<size_t>(n));
    const std::string deleted = " (deleted)";
    if (path.size() > deleted.size() &&
        path.compare(path.size() - deleted.size(), deleted.size(), deleted) == 0)
        path.resize(path.size() - deleted.size());
    size_t slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

long RealUid(const std::string& dir) {
    std::string text;
    if (!ReadTextFile(dir + "/status", text))
        return -1;
    for (const std::string& line : SplitLines(text)) {
        if (line.compare(0, 4, "Uid:") == 0) {
            std::vector<std::string> w = SplitWords(line.substr(4));
            return w.empty() ? -1 : atol(w[0].c_str());
        }
    }
    return -1;
}

bool ReadProc(const std::string& procRoot, pid_t pid, ProcEntry& out) {
    if (pid <= 0)
        return false;
    std::string dir = PidDir(procRoot, pid);
    std::string stat;
    if (!ReadTextFile(dir + "/stat", stat))
        return false;
    // The name in parentheses may hold anything, parentheses too.
    size_t close = stat.rfind(')');
    if (close == std::string::npos)
        return false;
    std::vector<std::string> f = SplitWords(stat.substr(close + 1));
    // After the name: state, ppid, ... starttime is the 20th.
    if (f.size() < 20)
        return false;
    out.pid = pid;
    out.ppid = static_cast<pid_t>(atol(f[1].c_str()));
    out.start = strtoull(f[19].c_str(), nullptr, 10);
    out.exe = ExeName(dir);
    out.uid = RealUid(dir);
    return true;
}

bool OneOf(const std::string& name, const char* const* names, size_t n) {
    for (size_t i = 0; i < n; ++i) {
        if (name == names[i])
            return true;
    }
    return false;
}

bool IsSshServer(const ProcEntry& p) {
    return OneOf(p.exe, kSshServers, sizeof kSshServers / sizeof *kSshServers);
}

bool IsMultiplexer(const ProcEntry& p) {
    return OneOf(p.exe, kMultiplexers, sizeof kMultiplexers / sizeof *kMultiplexers);
}

bool IsUdpShell(const ProcEntry& p) {
    return OneOf(p.exe, kUdpShells, sizeof kUdpShells / sizeof *kUdpShells);
}

// The session of a UDP shell server: SSH_CONNECTION ("client port server
// port") of the login that started it. No connection to watch (inode 0);
// the refusal step judges changes against its addresses.
bool UdpShellSession(const std::string& procRoot, const ProcEntry& server, GuardSession& s) {
    std::ifstream in(PidDir(procRoot, server.pid) + "/environ", std::ios::binary);
    std::string var;
    while (std::getline(in, var, '\0')) {
        if (var.compare(0, 15, "SSH_CONNECTION=") != 0)
            continue;
        std::istringstream f(var.substr(15));
        std::string client, server_addr;
        unsigned long cport = 0, sport = 0;
        if (!(f >> client >> cport >> server_addr >> sport) || cport > 65535 || sport > 65535)
            return false;
        unsigned char buf[sizeof(in6_addr)];
        int family = inet_pton(AF_INET, client.c_str(), buf) == 1 ? AF_INET : AF_INET6;
        if (inet_pton(family, client.c_str(), buf) != 1 ||
            inet_pton(family, server_addr.c_str(), buf) != 1)
            return false;
        s.bFound = true;
        s.iFamily = family;
        s.sRemoteAddr = client;
        s.iRemotePort = static_cast<uint16_t>(cport);
        s.sLocalAddr = server_addr;
        s.iLocalPort = static_cast<uint16_t>(sport);
        s.llInode = 0;
        s.iServerPid = server.pid;
        s.llServerStart = server.start;
        return true;
    }
    return false;
}

// The socket inodes a process holds, each mapped to that process; a
// root-owned holder replaces the one found before (the unprivileged child
// of a session shares the connection with the root process above it).
void AddSocketInodes(const std::string& procRoot, pid_t pid, bool root,
                     std::map<uint64_t, pid_t>& out) {
    ForEachSocketInode(PidDir(procRoot, pid) + "/fd", [&](uint64_t inode) {
        if (root)
            out[inode] = pid;
        else
            out.emplace(inode, pid);
    });
}

// Every root-owned SSH server process of procRoot, with their sockets.
void SshServerSockets(const std::string& procRoot, std::map<uint64_t, pid_t>& out) {
    DIR* d = opendir(procRoot.c_str());
    if (d == nullptr)
        return;
    while (dirent* e = readdir(d)) {
        if (e->d_name[0] < '1' || e->d_name[0] > '9')
            continue;
        ProcEntry p;
        if (ReadProc(procRoot, static_cast<pid_t>(atol(e->d_name)), p) && IsSshServer(p) &&
            p.uid == 0)
            AddSocketInodes(procRoot, p.pid, true, out);
    }
    closedir(d);
}

void Fill(GuardSession& s, const TcpSocket& c, pid_t server, const std::string& procRoot) {
    s.bFound = true;
    s.iFamily = c.iFamily;
    s.sLocalAddr = c.sLocalAddr;
    s.iLocalPort = c.iLocalPort;
    s.sRemoteAddr = c.sRemoteAddr;
    s.iRemotePort = c.iRemotePort;
    s.llInode = c.llInode;
    s.iServerPid = server;
    ProcEntry p;
    if (ReadProc(procRoot, server, p))
        s.llServerStart = p.start;
}

// The connection among the held sockets: one to a port the SSH server
// listens on first (a forwarded connection sshd opened is not the
// session), else the oldest (lowest inode).
const TcpSocket* PickHeld(const TcpSockets& socks, const std::map<uint64_t, pid_t>& held,
                          const std::set<uint16_t>& sshPorts) {
    const TcpSocket* best = nullptr;
    for (const TcpSocket& c : socks.established) {
        if (held.count(c.llInode) == 0)
            continue;
        bool toSsh = sshPorts.count(c.iLocalPort) != 0;
        bool bestToSsh = best != nullptr && sshPorts.count(best->iLocalPort) != 0;
        if (best == nullptr || (toSsh && !bestToSsh) ||
            (toSsh == bestToSsh && c.llInode < best->llInode))
            best = &c;
    }
    return best;
}

std::set<uint16_t> ListeningPorts(const TcpSockets& socks, const std::map<uint64_t, pid_t>& held) {
    std::set<uint16_t> ports;
    for (const TcpSocket& l : socks.listening) {
        if (held.count(l.llInode) != 0)
            ports.insert(l.iLocalPort);
    }
    return ports;
}

// One dump of family's TCP sockets in the states of mask.
bool DumpTcp(int family, unsigned mask, std::vector<TcpSocket>& out) {
    return DumpTcpSockets(family, mask, [&out](const nlmsghdr&, const inet_diag_msg& d) {
        TcpSocket c;
        c.iFamily = d.idiag_family;
        const void* src = d.id.idiag_src;
        const void* dst = d.id.idiag_dst;
        // An IPv4 peer of an IPv6 socket: the firewall sees IPv4.
        if (c.iFamily == AF_INET6 &&
            IN6_IS_ADDR_V4MAPPED(reinterpret_cast<const in6_addr*>(d.id.idiag_src))) {
            c.iFamily = AF_INET;
            src = reinterpret_cast<const char*>(d.id.idiag_src) + 12;
            dst = reinterpret_cast<const char*>(d.id.idiag_dst) + 12;
        }
        char a[INET6_ADDRSTRLEN] = {}, b[INET6_ADDRSTRLEN] = {};
        inet_ntop(c.iFamily, src, a, sizeof a);
        inet_ntop(c.iFamily, dst, b, sizeof b);
        c.sLocalAddr = a;
        c.sRemoteAddr = b;
        c.iLocalPort = ntohs(d.id.idiag_sport);
        c.iRemotePort = ntohs(d.id.idiag_dport);
        c.llInode = d.idiag_inode;
        out.push_back(c);
    });
}

}  // namespace

bool ReadTcpSockets(TcpSockets& out) {
    out = TcpSockets();
    bool ok = true;
    for (int family : {AF_INET, AF_INET6}) {
        ok = DumpTcp(family, 1u << TCP_ESTABLISHED, out.established) && ok;
        ok = DumpTcp(family, 1u << TCP_LISTEN, out.listening) && ok;
    }
    return ok;
}

namespace {

GuardSession FindIn(pid_t pid, const std::string& procRoot, const TcpSockets& socks,
                    bool followMultiplexer);

// The session of a client of the multiplexer server (the same program)
// attached from an SSH login, the most recently started one.
bool AttachedClientSession(const std::string& procRoot, const ProcEntry& server,
                           const TcpSockets& socks, GuardSession& s) {
    DIR* d = opendir(procRoot.c_str());
    if (d == nullptr)
        return false;
    unsigned long long newest = 0;
    while (dirent* e = readdir(d)) {
        if (e->d_name[0] < '1' || e->d_name[0] > '9')
            continue;
        ProcEntry p;
        if (!ReadProc(procRoot, static_cast<pid_t>(atol(e->d_name)), p) || p.pid == server.pid ||
            p.exe != server.exe || (s.bFound && p.start < newest))
            continue;
        GuardSession c = FindIn(p.pid, procRoot, socks, false);
        if (c.bFound) {
            c.iConsolePid = s.iConsolePid;
            c.llConsoleStart = s.llConsoleStart;
            s = c;
            newest = p.start;
        }
    }
    closedir(d);
    return s.bFound;
}

GuardSession FindIn(pid_t pid, const std::string& procRoot, const TcpSockets& socks,
                    bool followMultiplexer) {
    GuardSession s;
    ProcEntry cur;
    if (!ReadProc(procRoot, pid, cur))
        return s;
    s.iConsolePid = pid;
    s.llConsoleStart = cur.start;
    std::map<uint64_t, pid_t> held;  // sockets of the SSH server processes met
    bool rootServer = false;
    ProcEntry udpShell;
    for (int depth = 0; depth < kMaxDepth; ++depth) {
        if (udpShell.pid == 0 && IsUdpShell(cur))
            udpShell = cur;
        if (IsSshServer(cur)) {
            AddSocketInodes(procRoot, cur.pid, cur.uid == 0, held);
            rootServer = rootServer || cur.uid == 0;
        } else if (rootServer) {
            break;  // above the SSH server's own processes
        } else if (followMultiplexer && IsMultiplexer(cur)) {
            break;
        }
        ProcEntry parent;
        if (cur.ppid <= 0 || !ReadProc(procRoot, cur.ppid, parent))
            break;
        // A parent younger than its child is a reused pid: the chain ends.
        if (parent.start > cur.start)
            break;
        cur = parent;
    }
    if (rootServer) {
        // The listener is among the ancestors: its ports are held too.
        if (const TcpSocket* c = PickHeld(socks, held, ListeningPorts(socks, held)))
            Fill(s, *c, held.at(c->llInode), procRoot);
        return s;
    }
    if (udpShell.pid != 0) {
        UdpShellSession(procRoot, udpShell, s);
        return s;
    }
    if (!followMultiplexer || !IsMultiplexer(cur))
        return s;
    // Inside a multiplexer: an attached client's login, else the first
    // connection to a port sshd listens on.
    if (AttachedClientSession(procRoot, cur, socks, s))
        return s;
    std::map<uint64_t, pid_t> servers;
    SshServerSockets(procRoot, servers);
    std::set<uint16_t> sshPorts = ListeningPorts(socks, servers);
    for (const TcpSocket& c : socks.established) {
        auto it = servers.find(c.llInode);
        if (sshPorts.count(c.iLocalPort) != 0 && it != servers.end()) {
            Fill(s, c, it->second, procRoot);
            break;
        }
    }
    return s;
}

}  // namespace

GuardSession FindGuardSessionIn(pid_t pid, const std::string& procRoot, const TcpSockets& socks) {
    return FindIn(pid, procRoot, socks, true);
}

GuardSession FindGuardSession(pid_t pid, const std::string& procRoot) {
    TcpSockets socks;
    ReadTcpSockets(socks);
    return FindGuardSessionIn(pid, procRoot, socks);
}

}  // namespace nvagent
