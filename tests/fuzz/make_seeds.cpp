// fuzz_make_seeds DIR: writes the seed packets of both fuzzers into
// DIR/fuzz_answer_decoder and DIR/fuzz_request_decoder (which must exist).
// The committed corpus/ was made with it; run it again after a change of
// the packet format.
#include <cstdio>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "link/result_codes.h"
#include "link/state_record.h"
#include "wire/wire.h"

namespace {

bool WriteSeed(const std::string& dir, const std::string& name, const std::string& bytes) {
    std::string path = dir + "/" + name;
    FILE* f = fopen(path.c_str(), "wb");
    if (f == nullptr) {
        perror(path.c_str());
        return false;
    }
    bool ok = fwrite(bytes.data(), 1, bytes.size(), f) == bytes.size();
    ok = fclose(f) == 0 && ok;
    if (!ok)
        perror(path.c_str());
    return ok;
}

template <size_t N>
void Copy(char (&dst)[N], const char* src) {
    snprintf(dst, N, "%s", src);
}

// A small state with one entry in every list.
void SmallState(cConf_Inf& c, cSvrState& s) {
    c.chIcmpEchoIgnoreAll = '1';
    c.chTcpSyncookies = '1';
    c.chTcpTwReuse = '0';
    c.ulShmMax = 33554432UL;
    c.ulShmAll = 2097152UL;
    c.ulShmMni = 4096;
    c.ulThreadMax = 63477;
    c.ulFileMax = 398410;
    c.vFileMonitList = {"/etc/passwd", "/etc/shadow"};
    c.chFileMonitFlag = '1';
    c.vProcessMonitList = {"sshd"};
    c.shCpuCeil = 90;
    c.shCpuFloor = 5;
    c.iMemCeil = 3500;
    cDiskVolume dv;
    Copy(dv.szPart, "/dev/vdb1");
    dv.iCeil = 1000;
    dv.iFloor = 100;
    dv.iItv = 50;
    c.vDV = {dv};
    c.vsDV = {"1  /dev/vdb1  1000  100  50"};
    cBakForSize bk;
    Copy(bk.szFileName, "/var/log/syslog");
    Copy(bk.szBakDir, "/backup");
    bk.iKilobyte = 2048;
    c.vBakForSize = {bk};
    c.vsBakForSize = {"1  /var/log/syslog  /backup  2048"};
    c.sVsftpdAnonRoot = "/srv/ftp";
    c.sSambaSharePath = "/srv/share";
    c.chLangCode = 0;
    c.sHostname = "web01";
    c.sNowDate = "2024-02-09";
    c.sNowTime = "10:11:12";
    c.sVersion = "2.4.1";
    cTcpListen tl;
    Copy(tl.szListenAddr, "0.0.0.0:22");
    tl.iPid = 812;
    Copy(tl.szProgramName, "sshd");
    s.vTcpListen = {tl};
    s.vsTcpListenList = {"0.0.0.0  22  812  sshd"};
    s.iMemTotal = 3900;
    s.iMemUse = 1200;
    s.iMemFree = 2700;
    cDiskInfo di;
    Copy(di.szPart, "/dev/vda1");
    Copy(di.szFS, "ext4");
    di.iSizeTotal = 40000;
    di.iUsed = 12000;
    di.iAvailable = 28000;
    Copy(di.szMountOn, "/");
    s.vDiskInfo = {di};
    s.vsDiskInfoList = {"/dev/vda1  ext4  40000  12000  28000  /"};
    s.vsIptablesInputList = {"1  tcp  -  0  -  22  accept"};
    s.chIptablesInputPolicy = '2';
    s.vsIptablesOutputList = {};
    s.chIptablesOutputPolicy = '1';
    s.vsIfconfigList = {"eth0  52:54:00:12:34:56  static  up  10.0.0.5  255.0.0.0"};
}

std::string Body(const cConf_Inf& c, const cSvrState& s) {
    std::string body;
    nvwire::Writer w(body);
    nvwire::EncodeConf(w, c);
    nvwire::EncodeSvr(w, s);
    return body;
}

std::string Answer(short cmd, int result, const std::string& detail, const std::string& body) {
    std::string out;
    nvwire::BuildAnswer(out, cmd, result, detail, body.data(), body.size());
    return out;
}

std::string Request(short cmd, const std::string& payload) {
    char header[nvwire::kReqHeaderLen];
    nvwire::PutRequestHeader(header, static_cast<uint32_t>(nvwire::kReqHeaderLen + payload.size()),
                             cmd);
    return std::string(header, sizeof header) + payload;
}

bool AnswerSeeds(const std::string& dir) {
    cConf_Inf c;
    cSvrState s;
    SmallState(c, s);
    // The records as constructed, with the fields the constructor leaves
    // unset given the zeros the agent reports for them.
    cConf_Inf dc;
    cSvrState ds;
    dc.chIcmpEchoIgnoreAll = dc.chTcpSyncookies = dc.chTcpTwReuse = 0;
    dc.ulShmMax = dc.ulShmAll = dc.ulShmMni = dc.ulThreadMax = dc.ulFileMax = 0;
    // Enough listeners that the answer outgrows the client's fixed receive
    // buffer and takes the large-answer path.
    cConf_Inf lc = c;
    cSvrState ls = s;
    for (int i = 0; i < 2000; ++i) {
        cTcpListen tl;
        snprintf(tl.szListenAddr, sizeof tl.szListenAddr, "10.%d.%d.1:%d", i / 250, i % 250,
                 1024 + i);
        tl.iPid = 1000 + i;
        Copy(tl.szProgramName, "worker");
        ls.vTcpListen.push_back(tl);
        ls.vsTcpListenList.push_back(std::string(tl.szListenAddr) + "  worker");
    }
    const std::pair<const char*, std::string> seeds[] = {
        {"check_small", Answer(nvwire::kCmdCheck, em_OK, "", Body(c, s))},
        {"check_default", Answer(nvwire::kCmdCheck, em_OK, "", Body(dc, ds))},
        {"check_large", Answer(nvwire::kCmdCheck, em_OK, "", Body(lc, ls))},
        {"check_refused", Answer(nvwire::kCmdCheck, em_Error, "The state cannot be read.", "")},
        {"set_done", Answer(4, em_ActSuccAll, "", "")},
        {"set_invalid",
         Answer(33, em_ActPostValueNotValid, "The protocol must be 1 (tcp) or 2 (udp).", "")},
        {"unknown_command", Answer(64, em_ParsePkgCmdNoOutOfRange, "unknown command 64", "")},
    };
    for (const auto& seed : seeds) {
        if (!WriteSeed(dir, seed.first, seed.second))
            return false;
    }
    return true;
}

bool RequestSeeds(const std::string& dir) {
    const std::pair<const char*, std::string> seeds[] = {
        {"check", Request(nvwire::kCmdCheck, "")},
        {"lang", Request(nvwire::kCmdSetLang, "1")},
        {"icmp_on", Request(4, "1")},
        {"shmmax", Request(7, "33554432")},
        {"file_list", Request(13, "/etc/passwd\n/etc/shadow\n")},
        {"proc_list", Request(15, "sshd\ncron")},
        {"cpu_ceil", Request(17, "90")},
        {"mem_ceil", Request(20, "3500")},
        {"dv_add", Request(23, "/dev/vdc1 1000 100 50")},
        {"dv_clear", Request(25, "")},
        {"bak_add", Request(28, "/etc/hosts /backup 2048")},
        {"input_policy", Request(32, "2")},
        {"input_add", Request(33, "1 1 - 0 - 22 1")},
        {"output_add", Request(37, "2 2 10.0.0.0/8 0 - 53 3")},
        {"ftp_root", Request(43, "/srv/ftp")},
        {"ftp_default", Request(47, "")},
        {"if_down", Request(52, "eth0")},
        {"if_dhcp", Request(54, "eth0")},
        {"if_static", Request(55, "eth0 10.0.0.5 255.0.0.0 - - -")},
        {"ftp_anon", Request(40, "1")},
        {"samba_path", Request(48, "/srv/share")},
        {"password", Request(56, "root secret secret")},
        {"hostname", Request(57, "db02.example.org")},
        {"date", Request(58, "2024 2 9")},
        {"time", Request(59, "10 11 12")},
        {"reserved", Request(60, "")},
        {"unknown", Request(64, "1")},
        {"bad_length", std::string("\x02\x00\x00\x00\x01\x00", 6)},
        {"rule_add_delete_check", Request(33, "1 1 - 0 - 22 1") +
                                      Request(33, "2 2 192.168.1.0/24 0 - 53 2") +
                                      Request(34, "1") + Request(nvwire::kCmdCheck, "")},
        {"volume_backup_check", Request(23, "/dev/vdc1 1000 100 50") +
                                    Request(28, "/etc/hosts /backup 64") + Request(24, "1") +
                                    Request(nvwire::kCmdCheck, "")},
    };
    for (const auto& seed : seeds) {
        if (!WriteSeed(dir, seed.first, seed.second))
            return false;
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: fuzz_make_seeds DIR\n");
        return 2;
    }
    std::string dir = argv[1];
    bool ok =
        AnswerSeeds(dir + "/fuzz_answer_decoder") && RequestSeeds(dir + "/fuzz_request_decoder");
    return ok ? 0 : 1;
}
