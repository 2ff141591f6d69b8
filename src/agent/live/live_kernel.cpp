// The kernel settings of commands 4 to 11: read from /proc/sys; changed
// there, read back, and persisted in the agent's own file under
// /etc/sysctl.d so that the boot applies them again.
#include "agent/live/live_kernel.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <sstream>

#include "agent/atomic_file.h"
#include "agent/commands/command_parser.h"
#include "agent/commands/state_checks.h"
#include "agent/live/live_changes.h"
#include "agent/live/live_files.h"

namespace nvagent {

namespace {

struct KernelKeyRow {
    short cmd;
    const char* key;
    char cConf_Inf::*flag;
    unsigned long cConf_Inf::*limit;
};

const KernelKeyRow kKeys[] = {
    {4, "net.ipv4.icmp_echo_ignore_all", &cConf_Inf::chIcmpEchoIgnoreAll, nullptr},
    {5, "net.ipv4.tcp_syncookies", &cConf_Inf::chTcpSyncookies, nullptr},
    {6, "net.ipv4.tcp_tw_reuse", &cConf_Inf::chTcpTwReuse, nullptr},
    {7, "kernel.shmmax", nullptr, &cConf_Inf::ulShmMax},
    {8, "kernel.shmall", nullptr, &cConf_Inf::ulShmAll},
    {9, "kernel.shmmni", nullptr, &cConf_Inf::ulShmMni},
    {10, "kernel.threads-max", nullptr, &cConf_Inf::ulThreadMax},
    {11, "fs.file-max", nullptr, &cConf_Inf::ulFileMax},
};

// The largest value of the record's limit fields, 32 bits wide.
const unsigned long long kFieldMax = 4294967295ULL;

unsigned long long KernelNumber(const std::string& text) {
    return strtoull(text.c_str(), nullptr, 10);
}

}  // namespace

const char* KernelKey(short cmd) {
    for (const KernelKeyRow& k : kKeys) {
        if (k.cmd == cmd)
            return k.key;
    }
    return nullptr;
}

std::string ProcSysPath(const std::string& key) {
    std::string p = "/proc/sys/";
    for (char ch : key)
        p.push_back(ch == '.' ? '/' : ch);
    return p;
}

void ReadKernelSettings(cConf_Inf& conf) {
    for (const KernelKeyRow& k : kKeys) {
        std::string v = ReadFirstLine(ProcSysPath(k.key));
        if (v.empty())
            continue;
        if (k.flag != nullptr) {
            conf.*k.flag = v[0];
        } else {
            // A value beyond the record's 32-bit field (the kernel's default
            // "no limit" of kernel.shmmax and kernel.shmall) is reported as
            // the largest value the field holds.
            conf.*k.limit = static_cast<unsigned long>(std::min(KernelNumber(v), kFieldMax));
        }
    }
}

const char* const kSysctlFile = "/etc/sysctl.d/90-norvane.conf";

namespace {

bool WriteProc(const std::string& key, const std::string& value, std::string& err) {
    // O_TRUNC is a no-op for the kernel and keeps a plain file standing in
    // for a global setting (in the test sandbox) free of old bytes.
    int fd = open(ProcSysPath(key).c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
    if (fd < 0) {
        err = strerror(errno);
        return false;
    }
    std::string text = value + "\n";
    ssize_t n = write(fd, text.data(), text.size());
    int saved = errno;
    close(fd);
    if (n != static_cast<ssize_t>(text.size())) {
        err = strerror(n < 0 ? saved : EIO);
        return false;
    }
    return true;
}

// The agent's sysctl file with key set to value, other lines kept.
bool Persist(const std::string& key, const std::string& value, std::string& err) {
    std::string old;
    ReadTextFile(kSysctlFile, old);
    std::istringstream in(old);
    std::string line;
    std::string out;
    bool done = false;
    while (std::getline(in, line)) {
        std::string k = line.substr(0, line.find('='));
        while (!k.empty() && k.back() == ' ')
            k.pop_back();
        if (k == key) {
            if (!done)
                out += key + " = " + value + "\n";
            done = true;
        } else {
            out += line + "\n";
        }
    }
    if (out.empty())
        out = "# Kernel settings made with the norvane console; applied again at boot.\n";
    if (!done)
        out += key + " = " + value + "\n";
    return WriteFileAtomically(kSysctlFile, out, err);
}

// Writes value, reads it back and persists it; the old value is put back
// when a later step fails.
CmdResult ChangeKey(const std::string& key, const std::string& value, const std::string& old,
                    const char* what) {
    std::string err;
    if (!WriteProc(key, value, err)) {
        return Invalid(std::string(what) + ": the kernel refused " + value + " (" + err + ").");
    }
    std::string now = ReadFirstLine(ProcSysPath(key));
    if (now != value) {
        WriteProc(key, old, err);
        return Failed(std::string(what) + ": the kernel holds " + now + " instead of " + value +
                      "; the setting was left at " + old + ".");
    }
    if (!Persist(key, value, err)) {
        WriteProc(key, old, err);
        return Failed(std::string("Could not save ") + kSysctlFile + ": " + err +
                      "; the setting was left at " + old + ".");
    }
    return Done();
}

}  // namespace

CmdResult ChangeKernelFlag(const FlagRequest& q) {
    const char* key = KernelKey(q.cmd);
    std::string old = ReadFirstLine(ProcSysPath(key));
    if (old.empty())
        return Failed(std::string("The kernel has no setting ") + key + ".");
    std::string want = q.on ? "1" : "0";
    if (old == want)
        return FlagUnchanged(q.cmd, q.on);
    return ChangeKey(key, want, old, FlagSubject(q.cmd));
}

CmdResult ChangeKernelLimit(const KernelRequest& q) {
    const char* key = KernelKey(q.cmd);
    std::string old = ReadFirstLine(ProcSysPath(key));
    if (old.empty())
        return Failed(std::string("The kernel has no setting ") + key + ".");
    std::string want = std::to_string(q.value);
    if (old == want)
        return KernelUnchanged(q.cmd, q.value);
    if (KernelNumber(old) <= kFieldMax)
        return ChangeKey(key, want, old, KernelSubject(q.cmd));
    // The kernel holds more than the field can: the value the page showed
    // (the field's largest) changes nothing; any other lowers the limit, and
    // the answer says from what.
    if (q.value >= kFieldMax)
        return Unchanged(std::string(KernelSubject(q.cmd)) + " is " + old +
                         ", the kernel's no-limit default; it was left so.");
    CmdResult r = ChangeKey(key, want, old, KernelSubject(q.cmd));
    if (r.iCode == em_ActSuccAll)
        r.sDetail = std::string("Done: ") + KernelSubject(q.cmd) + " was " + old +
                    " (no limit) and is now " + want + ".";
    return r;
}

}  // namespace nvagent
