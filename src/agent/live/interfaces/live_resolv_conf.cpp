// Deciding whether /etc/resolv.conf is the agent's to edit, and editing it
// atomically with resolv_conf's pure functions.
#include "agent/live/interfaces/live_resolv_conf.h"

#include <sys/stat.h>
#include <unistd.h>

#include "agent/atomic_file.h"
#include "agent/live/interfaces/resolv_conf.h"
#include "agent/live/live_files.h"
#include "agent/live/run_process.h"

namespace nvagent {

const char* const kResolvConfPath = "/etc/resolv.conf";

namespace {

std::string LinkTarget(const char* path) {
    char buf[4096];
    ssize_t n = readlink(path, buf, sizeof buf - 1);
    return n > 0 ? std::string(buf, static_cast<size_t>(n)) : std::string();
}

std::string LeftAlone(const std::string& storedIn, const std::string& manager) {
    return std::string("The DNS servers were stored in ") + storedIn + "; " + kResolvConfPath +
           " is managed by " + manager + " and was left as it is.";
}

}  // namespace

ResolvPlan PlanResolvConf(const std::vector<std::string>& servers, const std::string& storedIn,
                          bool resolved) {
    ResolvPlan p;
    if (servers.empty())
        return p;
    struct stat st {};
    bool present = lstat(kResolvConfPath, &st) == 0;
    if (present && S_ISLNK(st.st_mode)) {
        std::string target = LinkTarget(kResolvConfPath);
        if (target.find("systemd/resolve/") != std::string::npos) {
            p.note = resolved ? "The DNS servers were stored in " + storedIn +
                                    "; systemd-resolved applies them (" + kResolvConfPath +
                                    " points to its stub)."
                              : LeftAlone(storedIn, "systemd-resolved");
        } else {
            p.note = LeftAlone(storedIn, "the tool that owns " + target);
        }
        return p;
    }
    if (!FindTool("resolvconf").empty()) {
        p.note = LeftAlone(storedIn, "resolvconf");
        return p;
    }
    if (present && !S_ISREG(st.st_mode)) {
        p.note = LeftAlone(storedIn, "another program (it is not a regular file)");
        return p;
    }
    p.existed = present;
    if (present && !ReadTextFile(kResolvConfPath, p.old)) {
        p.note = LeftAlone(storedIn, "another program (it cannot be read)");
        return p;
    }
    std::string generator = ResolvConfGenerator(p.old);
    if (!generator.empty()) {
        p.note = LeftAlone(storedIn, generator);
        return p;
    }
    p.next = WithNameservers(p.old, servers);
    p.write = !p.existed || p.next != p.old;
    return p;
}

bool ApplyResolvPlan(const ResolvPlan& p, std::string& err) {
    if (!p.write)
        return true;
    if (WriteFileAtomically(kResolvConfPath, p.next, err))
        return true;
    err = std::string("could not write ") + kResolvConfPath + ": " + err;
    return false;
}

void UndoResolvPlan(const ResolvPlan& p) {
    if (!p.write)
        return;
    std::string ignored;
    if (p.existed)
        WriteFileAtomically(kResolvConfPath, p.old, ignored);
    else
        unlink(kResolvConfPath);
}

}  // namespace nvagent
