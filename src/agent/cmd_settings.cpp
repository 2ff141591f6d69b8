// Handlers of single settings: on/off flags, kernel limits, the language,
// CPU and memory thresholds, and the FTP and Samba options.
#include <climits>

#include "agent/payload_parse.h"
#include "agent/sim_handlers.h"

namespace nvagent {

using C = cConf_Inf;

const std::vector<FlagCommand>& FlagCommands() {
    static const std::vector<FlagCommand> t = {
        {4, &C::chIcmpEchoIgnoreAll, "Ignoring ICMP echo requests"},
        {5, &C::chTcpSyncookies, "TCP SYN cookie protection"},
        {6, &C::chTcpTwReuse, "Reuse of TIME_WAIT sockets"},
        {14, &C::chFileMonitFlag, "The file monitor"},
        {16, &C::chProcessMonitFlag, "The process monitor"},
        {19, &C::chCpuMonitFlag, "The CPU monitor"},
        {21, &C::chMemMonitFlag, "The memory monitor"},
        {26, &C::chDVMonitFlag, "The disk-volume monitor"},
        {31, &C::chBakForSizeFlag, "The backup monitor"},
        {40, &C::chVsftpdAnonEnable, "FTP anonymous login"},
        {41, &C::chVsftpdAnonUpload, "FTP anonymous upload"},
        {42, &C::chVsftpdAnonMkdir, "FTP anonymous directory creation"},
        {44, &C::chVsftpdLocalEnable, "FTP login of local users"},
        {45, &C::chVsftpdWrite, "FTP writing"},
        {46, &C::chVsftpdRunFlag, "The FTP server"},
        {49, &C::chSambaShareWrite, "Writing to the Samba share"},
        {50, &C::chSambaRunFlag, "The Samba server"},
    };
    return t;
}

CmdResult SetFlag(CmdContext& c, const FlagCommand& f, const std::string& p) {
    if (p != "1" && p != "0")
        return Malformed("The setting must be 1 (on) or 0 (off).");
    char& flag = c.st.conf.*f.flag;
    if (flag == p[0]) {
        return Unchanged(std::string(f.what) + " is already " + (p == "1" ? "on." : "off."));
    }
    flag = p[0];
    return Done();
}

const std::vector<KernelCommand>& KernelCommands() {
    static const std::vector<KernelCommand> t = {
        {7, &C::ulShmMax, "The largest shared-memory segment", 0},
        {8, &C::ulShmAll, "The shared-memory total", 0},
        {9, &C::ulShmMni, "The number of shared-memory segments", 0},
        {10, &C::ulThreadMax, "The thread maximum", 512},
        {11, &C::ulFileMax, "The file-handle maximum", 4096},
    };
    return t;
}

CmdResult SetKernel(CmdContext& c, const KernelCommand& k, const std::string& p) {
    unsigned long long v = 0;
    DigitsResult r = ParseDigits(p, 4294967295ULL, v);
    if (r == DigitsResult::kNotDigits)
        return Malformed("The value must be decimal digits only.");
    if (r == DigitsResult::kTooBig)
        return Invalid("The value must not exceed 4294967295.");
    if (v <= k.above) {
        return Invalid(std::string(k.what) + " must be above " + std::to_string(k.above) + ".");
    }
    unsigned long& field = c.st.conf.*k.value;
    if (field == v) {
        return Unchanged(std::string(k.what) + " is already " + std::to_string(v) + ".");
    }
    field = static_cast<unsigned long>(v);
    return Done();
}

CmdResult SetLanguage(CmdContext& c, const std::string& p) {
    static const char* const kNames[] = {"English", "Chinese (GB2312)", "Chinese (UTF-8)"};
    if (p.size() != 1 || p[0] < '0' || p[0] > '9') {
        return Malformed("The language code must be one digit: 0, 1 or 2.");
    }
    int code = p[0] - '0';
    if (code > 2)
        return Invalid("The language code must be 0, 1 or 2.");
    if (c.st.conf.chLangCode == code) {
        return Unchanged(std::string("The language is already ") + kNames[code] + ".");
    }
    c.st.conf.chLangCode = static_cast<char>(code);
    return Done();
}

namespace {

// A percentage of 0..100 in digits; false with the answer in r.
bool ParsePercent(const std::string& p, const char* what, short& pct, CmdResult& r) {
    unsigned long long v = 0;
    DigitsResult d = ParseDigits(p, 100, v);
    if (d == DigitsResult::kNotDigits) {
        r = Malformed("The percentage must be decimal digits only.");
    } else if (d == DigitsResult::kTooBig) {
        r = Invalid(std::string(what) + " must be between 0 and 100.");
    }
    pct = static_cast<short>(v);
    return d == DigitsResult::kOk;
}

std::string Percent(short v) {
    return std::to_string(v) + "%";
}

}  // namespace

CmdResult SetCpuCeil(CmdContext& c, const std::string& p) {
    short v = 0;
    CmdResult r;
    if (!ParsePercent(p, "The CPU ceiling", v, r))
        return r;
    if (v < c.st.conf.shCpuFloor) {
        return Invalid("The CPU ceiling must not be below the floor (" +
                       Percent(c.st.conf.shCpuFloor) + ").");
    }
    if (v == c.st.conf.shCpuCeil)
        return Unchanged("The CPU ceiling is already " + Percent(v) + ".");
    c.st.conf.shCpuCeil = v;
    return Done();
}

CmdResult SetCpuFloor(CmdContext& c, const std::string& p) {
    short v = 0;
    CmdResult r;
    if (!ParsePercent(p, "The CPU floor", v, r))
        return r;
    if (v > c.st.conf.shCpuCeil) {
        return Invalid("The CPU floor must not be above the ceiling (" +
                       Percent(c.st.conf.shCpuCeil) + ").");
    }
    if (v == c.st.conf.shCpuFloor)
        return Unchanged("The CPU floor is already " + Percent(v) + ".");
    c.st.conf.shCpuFloor = v;
    return Done();
}

CmdResult SetMemCeil(CmdContext& c, const std::string& p) {
    unsigned long long v = 0;
    DigitsResult d = ParseDigits(p, INT_MAX, v);
    if (d == DigitsResult::kNotDigits)
        return Malformed("The value must be decimal digits only.");
    if (d == DigitsResult::kTooBig || v == 0) {
        return Invalid("The memory ceiling must be above 0 and at most 2147483647 MB.");
    }
    int total = c.st.svr.iMemTotal;
    if (total > 0 && v > static_cast<unsigned long long>(total)) {
        return Invalid("The memory ceiling cannot exceed the total memory (" +
                       std::to_string(total) + " MB).");
    }
    if (static_cast<int>(v) == c.st.conf.iMemCeil) {
        return Unchanged("The memory ceiling is already " + std::to_string(v) + " MB.");
    }
    c.st.conf.iMemCeil = static_cast<int>(v);
    return Done();
}

namespace {

CmdResult SetPath(std::string& field, const std::string& p, const char* what) {
    if (p.empty())
        return Invalid(std::string(what) + " was left empty.");
    if (!IsAbsolutePath(p, 4095)) {
        return Invalid(std::string(what) + " must be an absolute path (starting with /).");
    }
    if (field == p)
        return Unchanged(std::string(what) + " is already " + p + ".");
    field = p;
    return Done();
}

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

CmdResult SetFtpRoot(CmdContext& c, const std::string& p) {
    return SetPath(c.st.conf.sVsftpdAnonRoot, p, "The FTP anonymous root");
}

CmdResult SetSambaPath(CmdContext& c, const std::string& p) {
    return SetPath(c.st.conf.sSambaSharePath, p, "The Samba share path");
}

CmdResult RestoreFtp(CmdContext& c, const std::string& p) {
    if (!p.empty())
        return Malformed("This command takes no payload.");
    bool changed =
        RestoreFields({&C::chVsftpdAnonEnable, &C::chVsftpdAnonUpload, &C::chVsftpdAnonMkdir,
                       &C::chVsftpdLocalEnable, &C::chVsftpdWrite},
                      &C::sVsftpdAnonRoot, c.st.conf);
    return changed ? Done() : Unchanged("The FTP options already have their default values.");
}

CmdResult RestoreSamba(CmdContext& c, const std::string& p) {
    if (!p.empty())
        return Malformed("This command takes no payload.");
    bool changed = RestoreFields({&C::chSambaShareWrite}, &C::sSambaSharePath, c.st.conf);
    return changed ? Done() : Unchanged("The Samba options already have their default values.");
}

}  // namespace nvagent
