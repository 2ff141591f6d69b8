// sock_diag dump of LISTEN sockets per address family, then one walk over
// /proc/*/fd mapping socket inodes to their process and its name.
#include "agent/live/live_listen.h"

#include <arpa/inet.h>
#include <dirent.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <unordered_map>

#include "agent/live/live_files.h"
#include "agent/live/sock_diag.h"

namespace nvagent {

namespace {

struct Listener {
    std::string addr;  // "0.0.0.0:22" or "[::]:22"
    int port;
    unsigned inode;
};

// The listening sockets of family, appended to out.
bool DumpFamily(int family, std::vector<Listener>& out) {
    return DumpTcpSockets(
        family, 1u << TCP_LISTEN, [&out](const nlmsghdr&, const inet_diag_msg& d) {
            char ip[INET6_ADDRSTRLEN] = {};
            inet_ntop(d.idiag_family, d.id.idiag_src, ip, sizeof ip);
            int port = ntohs(d.id.idiag_sport);
            std::string a = d.idiag_family == AF_INET6 ? "[" + std::string(ip) + "]" : ip;
            out.push_back({a + ":" + std::to_string(port), port, d.idiag_inode});
        });
}

struct Owner {
    int pid;
    std::string name;
};

// Socket inode -> owning process, for the inodes asked for only.
std::unordered_map<unsigned, Owner> Owners(const std::vector<Listener>& ls) {
    std::unordered_map<unsigned, Owner> owners;
    for (const Listener& l : ls)
        owners.emplace(l.inode, Owner{0, ""});
    size_t found = 0;
    DIR* proc = opendir("/proc");
    if (proc == nullptr)
        return owners;
    while (dirent* e = readdir(proc)) {
        if (found == owners.size())
            break;
        if (e->d_name[0] < '1' || e->d_name[0] > '9')
            continue;
        std::string name;
        ForEachSocketInode(std::string("/proc/") + e->d_name + "/fd", [&](uint64_t inode) {
            auto it = owners.find(static_cast<unsigned>(inode));
            if (it == owners.end() || it->second.pid != 0)
                return;
            if (name.empty())
                name = ReadFirstLine(std::string("/proc/") + e->d_name + "/comm");
            it->second = Owner{atoi(e->d_name), name};
            ++found;
        });
    }
    closedir(proc);
    return owners;
}

void CopyText(char* dst, size_t cap, const std::string& s) {
    snprintf(dst, cap, "%s", s.c_str());
}

}  // namespace

std::vector<cTcpListen> ReadListeners() {
    std::vector<Listener> ls;
    DumpFamily(AF_INET, ls);
    DumpFamily(AF_INET6, ls);
    std::stable_sort(ls.begin(), ls.end(), [](const Listener& a, const Listener& b) {
        return a.port != b.port ? a.port < b.port : a.addr < b.addr;
    });
    std::unordered_map<unsigned, Owner> owners = Owners(ls);
    std::vector<cTcpListen> out;
    out.reserve(ls.size());
    for (const Listener& l : ls) {
        cTcpListen t{};
        CopyText(t.szListenAddr, sizeof t.szListenAddr, l.addr);
        const Owner& o = owners[l.inode];
        t.iPid = o.pid;
        CopyText(t.szProgramName, sizeof t.szProgramName, o.name);
        out.push_back(t);
    }
    return out;
}

}  // namespace nvagent
