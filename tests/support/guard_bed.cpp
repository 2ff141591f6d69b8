// The session guard's test bed in the sandbox.
#include "guard_bed.h"

#include <sstream>

#include "temp_dir.h"

namespace nvtest {

namespace {

const char* const kStanza =
    "\n# nv0 as the session's interface of the guard tests\n"
    "auto nv0\niface nv0 inet static\n    address 10.77.0.2/24\n    gateway 10.77.0.1\n";

std::string Quoted(const std::string& s) {
    std::string out = "'";
    for (char c : s) {
        if (c == '\'')
            out += "'\\''";
        else
            out += c;
    }
    return out + "'";
}

// The firewall as iptables -S prints it, without the agent's chains' own
// declarations and jumps: empty, they filter nothing, and the agent makes
// them at its first change and keeps them.
std::string Firewall(const char* tool) {
    std::istringstream in(Tool({tool, "-w", "5", "-S"}));
    std::string line, out;
    while (std::getline(in, line)) {
        if (line == "-N NORVANE-INPUT" || line == "-N NORVANE-OUTPUT" ||
            line == "-A INPUT -j NORVANE-INPUT" || line == "-A OUTPUT -j NORVANE-OUTPUT")
            continue;
        out += line + "\n";
    }
    return out;
}

}  // namespace

bool PrepareGuardBed(std::string& err) {
    // The sandbox's own file as first found, with the stanza: whatever a
    // case wrote into it goes.
    static const std::string original = ReadFile("/etc/network/interfaces");
    if (original.find("iface nv0 ") != std::string::npos) {
        err = "the sandbox's /etc/network/interfaces already has nv0";
        return false;
    }
    Tool({"ifdown", "--force", "nv0"});
    if (!WriteFile("/etc/network/interfaces", original + kStanza)) {
        err = "cannot write /etc/network/interfaces";
        return false;
    }
    // nv0 handed from nv-sandbox.sh's plain addresses (or from what a case
    // left) to ifupdown, as its stanza says.
    Tool({"pkill", "-x", "dhclient"});
    Tool({"ip", "-4", "addr", "flush", "dev", "nv0"});
    Tool({"ip", "link", "set", "nv0", "up"});
    int code = 0;
    Tool({"ifup", "--force", "nv0"}, &code);
    std::string route = Tool({"ip", "route", "show", "default"});
    if (code != 0 || route.find("via 10.77.0.1 dev nv0") == std::string::npos) {
        err = "ifup nv0 failed: " + route;
        return false;
    }
    for (const char* t : {"iptables", "ip6tables"}) {
        Tool({t, "-w", "5", "-t", "raw", "-F"});
        Tool({t, "-w", "5", "-t", "raw", "-A", "PREROUTING", "-p", "tcp", "--dport", "22", "-j",
              "NOTRACK"});
        Tool({t, "-w", "5", "-t", "raw", "-A", "OUTPUT", "-p", "tcp", "--sport", "22", "-j",
              "NOTRACK"});
    }
    return true;
}

std::string LiveConfiguration() {
    bool dhcp = Tool({"pgrep", "-a", "dhclient"}).find("nv0") != std::string::npos;
    return Firewall("iptables") + Firewall("ip6tables") +
           Tool({"ip", "-4", "-o", "addr", "show", "dev", "nv0"}) +
           Tool({"ip", "-o", "link", "show", "nv0"}) + Tool({"ip", "-4", "route"}) +
           (dhcp ? "dhclient nv0\n" : "");
}

std::string PersistentFiles(const std::string& dataDir) {
    return "firewall:\n" + ReadFile(dataDir + "/firewall-own.rules") + "interfaces:\n" +
           ReadFile("/etc/network/interfaces") + "sysctl:\n" +
           ReadFile("/etc/sysctl.d/90-norvane.conf");
}

ChangeWatcher::ChangeWatcher(std::string before) : m_before(std::move(before)) {}

ChangeWatcher::~ChangeWatcher() {
    m_stop = true;
    if (m_thread.joinable())
        m_thread.join();
}

void ChangeWatcher::Start() {
    m_thread = std::thread([this] { Loop(); });
}

void ChangeWatcher::Loop() {
    while (!m_stop) {
        std::string now = LiveConfiguration();
        auto t = Clock::now();
        {
            std::lock_guard<std::mutex> lock(m_mu);
            if (now != m_before && m_changed == Clock::time_point()) {
                m_changed = t;
                m_changedTo = now;
            } else if (now == m_before && m_changed != Clock::time_point() &&
                       m_restored == Clock::time_point()) {
                m_restored = t;
            }
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
}

bool ChangeWatcher::WaitChanged(int timeoutMs) {
    auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    while (Clock::now() < deadline) {
        if (Changed() != Clock::time_point())
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return Changed() != Clock::time_point();
}

bool ChangeWatcher::WaitRestored(int timeoutMs) {
    auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    while (Clock::now() < deadline) {
        if (Restored() != Clock::time_point())
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return Restored() != Clock::time_point();
}

ChangeWatcher::Clock::time_point ChangeWatcher::Changed() {
    std::lock_guard<std::mutex> lock(m_mu);
    return m_changed;
}

ChangeWatcher::Clock::time_point ChangeWatcher::Restored() {
    std::lock_guard<std::mutex> lock(m_mu);
    return m_restored;
}

std::string ChangeWatcher::ChangedTo() {
    std::lock_guard<std::mutex> lock(m_mu);
    return m_changedTo;
}

std::string NvcmdLine(const std::string& socket, const std::string& cmd,
                      const std::string& payload) {
    // Its log beside the socket, never the machine's default log.
    return "NVUI_SOCKET=" + Quoted(socket) + " NVUI_LOG=" + Quoted(socket + ".nvcmd.log") + " " +
           Quoted(std::string(NV_BIN_DIR) + "/nvcmd") + " send " + Quoted(cmd) + " " +
           Quoted(payload);
}

long MsBetween(std::chrono::steady_clock::time_point from,
               std::chrono::steady_clock::time_point to) {
    return static_cast<long>(
        std::chrono::duration_cast<std::chrono::milliseconds>(to - from).count());
}

}  // namespace nvtest
