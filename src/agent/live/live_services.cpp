// Reading the FTP server's and Samba's configuration files and run state.
#include "agent/live/live_services.h"

#include <strings.h>

#include <cctype>
#include <sstream>
#include <vector>

#include "agent/commands/payload_parse.h"
#include "agent/live/ftp_config.h"
#include "agent/live/live_files.h"
#include "agent/live/trusted_process.h"

namespace nvagent {

const char* const kFtpConfigPath = "/etc/vsftpd.conf";
const char* const kSambaConfigPath = "/etc/samba/smb.conf";
const char* const kShareSection = "norvane";
const ServiceDaemon kFtpDaemon = {"vsftpd", "/usr/sbin/vsftpd"};
const ServiceDaemon kSambaDaemon = {"smbd", "/usr/sbin/smbd"};

namespace {

bool IsYes(const std::string& v) {
    return strcasecmp(v.c_str(), "yes") == 0 || strcasecmp(v.c_str(), "true") == 0 || v == "1";
}

std::string Lower(std::string s) {
    for (char& c : s)
        c = static_cast<char>(tolower(static_cast<unsigned char>(c)));
    return s;
}

// The logical lines of a Samba text: a line ending in a backslash is joined
// with the next, the backslash dropped.
std::vector<std::string> SambaLines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    std::string line;
    std::string pending;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\\') {
            line.pop_back();
            pending += line;
            continue;
        }
        lines.push_back(pending + line);
        pending.clear();
    }
    if (!pending.empty())
        lines.push_back(pending);
    return lines;
}

}  // namespace

void ParseSambaConfig(const std::string& text, cConf_Inf& conf) {
    bool ours = false;
    for (const std::string& line : SambaLines(text)) {
        std::string t = Trim(line);
        if (t.empty() || t[0] == '#' || t[0] == ';')
            continue;
        if (t[0] == '[') {
            size_t close = t.find(']');
            ours =
                close != std::string::npos && Lower(Trim(t.substr(1, close - 1))) == kShareSection;
            continue;
        }
        size_t eq = t.find('=');
        if (!ours || eq == std::string::npos)
            continue;
        std::string key = Lower(Trim(t.substr(0, eq)));
        std::string value = Trim(t.substr(eq + 1));
        if (key == "path") {
            conf.sSambaSharePath = value;
        } else if (key == "writable" || key == "writeable" || key == "write ok") {
            conf.chSambaShareWrite = IsYes(value) ? '1' : '0';
        } else if (key == "read only") {
            conf.chSambaShareWrite = IsYes(value) ? '0' : '1';
        }
    }
}

bool ProcessRuns(const std::string& comm) {
    return AnyProcess(
        [&comm](const std::string& procDir) { return ReadFirstLine(procDir + "/comm") == comm; });
}

bool DaemonRuns(const ServiceDaemon& d) {
    return RootProcessRuns(d.binary);
}

void ReadServices(cConf_Inf& conf) {
    std::string text;
    if (ReadTextFile(kFtpConfigPath, text))
        ParseFtpConfig(text, conf);
    conf.chVsftpdRunFlag = DaemonRuns(kFtpDaemon) ? '1' : '0';
    if (ReadTextFile(kSambaConfigPath, text))
        ParseSambaConfig(text, conf);
    conf.chSambaRunFlag = DaemonRuns(kSambaDaemon) ? '1' : '0';
}

}  // namespace nvagent
