// The machine read into the reported records, whole or by domain.
#include "agent/live/live_state.h"

#include <ctime>

#include "agent/display_lines.h"
#include "agent/live/firewall/firewall_read.h"
#include "agent/live/interfaces/live_interfaces.h"
#include "agent/live/live_files.h"
#include "agent/live/live_kernel.h"
#include "agent/live/live_listen.h"
#include "agent/live/live_services.h"
#include "agent/live/live_sysinfo.h"
#include "agent/monitors/memory_monitor.h"

namespace nvagent {

namespace {

void ReadInterfaceLines(cSvrState& svr) {
    std::vector<NetInterface> ifs;
    std::string err;
    if (ReadInterfaces(ifs, err))
        svr.vsIfconfigList = InterfaceLines(ifs);
}

void ReadChains(cSvrState& svr) {
    ChainView in, out;
    std::string err;
    ReadFirewall(in, out, err);
    svr.vsIptablesInputList = in.lines;
    svr.chIptablesInputPolicy = in.policy;
    svr.vsIptablesOutputList = out.lines;
    svr.chIptablesOutputPolicy = out.policy;
}

}  // namespace

void ReadMachine(cConf_Inf& conf, cSvrState& svr) {
    ReadKernelSettings(conf);
    ReadServices(conf);
    conf.sHostname = CurrentHostName();
    FormatDateTime(time(nullptr), conf.sNowDate, conf.sNowTime);
    std::string text;
    conf.chOSReleaseVersion =
        ReadTextFile("/etc/os-release", text) || ReadTextFile("/usr/lib/os-release", text)
            ? OsReleaseFamily(text)
            : static_cast<char>(emOSUnknown);
    // The memory monitor's own reading, so that the page and the monitor's
    // ceiling speak of the same figure.
    nvmonit::MemoryFigures mem;
    if (nvmonit::ReadMemory("/proc", mem)) {
        svr.iMemTotal = static_cast<int>(mem.llTotalMb);
        svr.iMemUse = static_cast<int>(mem.llUsedMb);
        svr.iMemFree = static_cast<int>(mem.llFreeMb);
    }
    svr.vDiskInfo = ReadDiskInfo();
    svr.vsDiskInfoList = DiskInfoLines(svr.vDiskInfo);
    svr.vTcpListen = ReadListeners();
    svr.vsTcpListenList = ListenLines(svr.vTcpListen);
    ReadInterfaceLines(svr);
    ReadChains(svr);
}

void ReadChangedPart(short cmd, cConf_Inf& conf, cSvrState& svr) {
    if (cmd >= 4 && cmd <= 11)
        ReadKernelSettings(conf);
    else if (cmd >= 32 && cmd <= 39)
        ReadChains(svr);
    else if (cmd >= 40 && cmd <= 51)
        ReadServices(conf);
    else if (cmd >= 52 && cmd <= 55)
        ReadInterfaceLines(svr);
    else if (cmd == 57)
        conf.sHostname = CurrentHostName();
    else if (cmd == 58 || cmd == 59)
        FormatDateTime(time(nullptr), conf.sNowDate, conf.sNowTime);
}

}  // namespace nvagent
