// Reading the kernel settings of commands 4 to 11 from /proc/sys.
#include "agent/live/live_kernel.h"

#include <cstdlib>

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
            conf.*k.limit = strtoul(v.c_str(), nullptr, 10);
        }
    }
}

}  // namespace nvagent
