// The simulator's system switches (kernel flags, FTP and Samba options),
// kernel limits, path options and the FTP and Samba restores.
#include "agent/commands/state_checks.h"
#include "agent/sim/sim_apply.h"

namespace nvagent {

namespace {

using C = cConf_Inf;

struct FlagField {
    short cmd;
    char cConf_Inf::*flag;
};

// The monitors' switches are the agent's own settings, changed by the code
// both backends share; these are the system's.
const FlagField kFlagFields[] = {
    {4, &C::chIcmpEchoIgnoreAll},  {5, &C::chTcpSyncookies},     {6, &C::chTcpTwReuse},
    {40, &C::chVsftpdAnonEnable},  {41, &C::chVsftpdAnonUpload}, {42, &C::chVsftpdAnonMkdir},
    {44, &C::chVsftpdLocalEnable}, {45, &C::chVsftpdWrite},      {46, &C::chVsftpdRunFlag},
    {49, &C::chSambaShareWrite},   {50, &C::chSambaRunFlag},
};

struct KernelField {
    short cmd;
    unsigned long cConf_Inf::*value;
};

const KernelField kKernelFields[] = {
    {7, &C::ulShmMax},     {8, &C::ulShmAll},   {9, &C::ulShmMni},
    {10, &C::ulThreadMax}, {11, &C::ulFileMax},
};

// The options a restore puts back: the record's defaults. The run flags are
// not options and stay as they are.
bool RestoreFields(const std::vector<char cConf_Inf::*>& flags, std::string cConf_Inf::*text,
                   cConf_Inf& conf) {
    const cConf_Inf defaults;
    bool changed = conf.*text != defaults.*text;
    conf.*text = defaults.*text;
    for (char cConf_Inf::*f : flags) {
        changed = changed || conf.*f != defaults.*f;
        conf.*f = defaults.*f;
    }
    return changed;
}

}  // namespace

CmdResult SimFlag(SimContext& c, const FlagRequest& q) {
    for (const FlagField& f : kFlagFields) {
        if (f.cmd != q.cmd)
            continue;
        char& flag = c.st.conf.*f.flag;
        char want = q.on ? '1' : '0';
        if (flag == want)
            return FlagUnchanged(q.cmd, q.on);
        flag = want;
        return Done();
    }
    return Failed("Command " + std::to_string(q.cmd) + " has no switch.");
}

CmdResult SimKernel(SimContext& c, const KernelRequest& q) {
    for (const KernelField& k : kKernelFields) {
        if (k.cmd != q.cmd)
            continue;
        unsigned long& field = c.st.conf.*k.value;
        if (field == q.value)
            return KernelUnchanged(q.cmd, q.value);
        field = q.value;
        return Done();
    }
    return Failed("Command " + std::to_string(q.cmd) + " has no kernel limit.");
}

CmdResult SimPath(SimContext& c, const PathRequest& q) {
    bool ftp = q.cmd == 43;
    std::string& field = ftp ? c.st.conf.sVsftpdAnonRoot : c.st.conf.sSambaSharePath;
    if (field == q.path) {
        return Unchanged(std::string(ftp ? "The FTP anonymous root" : "The Samba share path") +
                         " is already " + q.path + ".");
    }
    field = q.path;
    return Done();
}

CmdResult SimRestore(SimContext& c, short cmd) {
    if (cmd == 47) {
        bool changed =
            RestoreFields({&C::chVsftpdAnonEnable, &C::chVsftpdAnonUpload, &C::chVsftpdAnonMkdir,
                           &C::chVsftpdLocalEnable, &C::chVsftpdWrite},
                          &C::sVsftpdAnonRoot, c.st.conf);
        return changed ? Done() : Unchanged("The FTP options already have their default values.");
    }
    bool changed = RestoreFields({&C::chSambaShareWrite}, &C::sSambaSharePath, c.st.conf);
    return changed ? Done() : Unchanged("The Samba options already have their default values.");
}

}  // namespace nvagent
