// The DNS servers of a manual address in /etc/resolv.conf. The servers are
// written there only when no tool owns the file: resolvconf is not
// installed and /etc/resolv.conf is a regular file (not a symbolic link)
// whose comments do not say a tool generates it. Otherwise the file is left
// alone and the plan's note says who applies the servers instead.
#ifndef NV_AGENT_LIVE_INTERFACES_LIVE_RESOLV_CONF_H
#define NV_AGENT_LIVE_INTERFACES_LIVE_RESOLV_CONF_H

#include <string>
#include <vector>

namespace nvagent {

extern const char* const kResolvConfPath;

struct ResolvPlan {
    bool write = false;    // the file is to be replaced by next
    bool existed = false;  // the file was there (else undoing removes it)
    std::string old;       // its text before
    std::string next;      // its new text
    std::string note;      // why it is left alone, for the detail text
};

// The plan for servers (nothing to do when empty). storedIn names the
// file that keeps the servers; resolved says whether systemd-resolved may
// apply them (the interface is systemd-networkd's).
ResolvPlan PlanResolvConf(const std::vector<std::string>& servers, const std::string& storedIn,
                          bool resolved);

// Carries a plan out; false with err when the file cannot be written.
bool ApplyResolvPlan(const ResolvPlan& p, std::string& err);

// Puts the file of before an applied plan back.
void UndoResolvPlan(const ResolvPlan& p);

}  // namespace nvagent

#endif
