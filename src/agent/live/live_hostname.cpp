// The host name (command 57): the running name, /etc/hostname and the
// 127.0.1.1 line of /etc/hosts, all three or none. Where no systemd runs
// (containers, the sandbox) hostnamectl does not work, so the agent uses the
// system call and the files itself.
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <sstream>

#include "agent/atomic_file.h"
#include "agent/live/live_changes.h"
#include "agent/live/live_files.h"
#include "agent/live/live_sysinfo.h"

namespace nvagent {

namespace {

const char* const kHostnameFile = "/etc/hostname";
const char* const kHostsFile = "/etc/hosts";

bool SetRunning(const std::string& name, std::string& err) {
    if (sethostname(name.data(), name.size()) == 0)
        return true;
    err = strerror(errno);
    return false;
}

// /etc/hosts with the 127.0.1.1 line naming name (added after the first
// line when there is none); the other lines as they were.
std::string HostsWith(const std::string& hosts, const std::string& name) {
    std::istringstream in(hosts);
    std::string line;
    std::string out;
    bool done = false;
    while (std::getline(in, line)) {
        if (line.rfind("127.0.1.1", 0) == 0 &&
            (line.size() == 9 || line[9] == ' ' || line[9] == '\t')) {
            if (!done)
                out += "127.0.1.1\t" + name + "\n";
            done = true;
        } else {
            out += line + "\n";
        }
    }
    if (!done) {
        size_t nl = out.find('\n');
        std::string add = "127.0.1.1\t" + name + "\n";
        out =
            nl == std::string::npos ? out + add : out.substr(0, nl + 1) + add + out.substr(nl + 1);
    }
    return out;
}

}  // namespace

CmdResult ChangeHostName(const HostNameRequest& q) {
    std::string oldName = CurrentHostName();
    std::string oldFile, oldHosts;
    bool hadFile = ReadTextFile(kHostnameFile, oldFile);
    ReadTextFile(kHostsFile, oldHosts);
    std::string newHosts = HostsWith(oldHosts, q.name);
    if (q.name == oldName && oldFile == q.name + "\n" && newHosts == oldHosts)
        return Unchanged("The host name is already " + q.name + ".");
    std::string err;
    if (!SetRunning(q.name, err))
        return Failed("Could not set the host name: " + err + ".");
    if (!WriteFileAtomically(kHostnameFile, q.name + "\n", err)) {
        SetRunning(oldName, err);
        return Failed(std::string("Could not write ") + kHostnameFile + ": " + err +
                      "; nothing was changed.");
    }
    if (!WriteFileAtomically(kHostsFile, newHosts, err)) {
        std::string ignored;
        SetRunning(oldName, ignored);
        if (hadFile)
            WriteFileAtomically(kHostnameFile, oldFile, ignored);
        else
            unlink(kHostnameFile);
        return Failed(std::string("Could not write ") + kHostsFile + ": " + err +
                      "; nothing was changed.");
    }
    return Done();
}

}  // namespace nvagent
