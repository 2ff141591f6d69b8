// Reading the FTP server's and Samba's configuration files and run state.
#include "agent/live/live_services.h"

#include <dirent.h>
#include <strings.h>

#include <cctype>
#include <sstream>

#include "agent/commands/payload_parse.h"
#include "agent/live/live_files.h"

namespace nvagent {

const char* const kFtpConfigPath = "/etc/vsftpd.conf";
const char* const kSambaConfigPath = "/etc/samba/smb.conf";
const char* const kShareSection = "norvane";

namespace {

bool IsYes(const std::string& v) {
    return strcasecmp(v.c_str(), "yes") == 0 || strcasecmp(v.c_str(), "true") == 0 || v == "1";
}

struct FtpKey {
    const char* key;
    char cConf_Inf::*flag;
};

const FtpKey kFtpKeys[] = {
    {"anonymous_enable", &cConf_Inf::chVsftpdAnonEnable},
    {"anon_upload_enable", &cConf_Inf::chVsftpdAnonUpload},
    {"anon_mkdir_write_enable", &cConf_Inf::chVsftpdAnonMkdir},
    {"local_enable", &cConf_Inf::chVsftpdLocalEnable},
    {"write_enable", &cConf_Inf::chVsftpdWrite},
};

std::string Lower(std::string s) {
    for (char& c : s)
        c = static_cast<char>(tolower(static_cast<unsigned char>(c)));
    return s;
}

}  // namespace

void ParseFtpConfig(const std::string& text, cConf_Inf& conf) {
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#')
            continue;
        size_t eq = line.find('=');
        if (eq == std::string::npos)
            continue;
        std::string key = line.substr(0, eq);
        std::string value = line.substr(eq + 1);
        if (!value.empty() && value.back() == '\r')
            value.pop_back();
        if (key == "anon_root") {
            conf.sVsftpdAnonRoot = value;
            continue;
        }
        for (const FtpKey& k : kFtpKeys) {
            if (key == k.key)
                conf.*k.flag = IsYes(value) ? '1' : '0';
        }
    }
}

void ParseSambaConfig(const std::string& text, cConf_Inf& conf) {
    std::istringstream in(text);
    std::string line;
    bool ours = false;
    while (std::getline(in, line)) {
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
    DIR* proc = opendir("/proc");
    if (proc == nullptr)
        return false;
    bool found = false;
    while (dirent* e = readdir(proc)) {
        if (e->d_name[0] < '1' || e->d_name[0] > '9')
            continue;
        if (ReadFirstLine(std::string("/proc/") + e->d_name + "/comm") == comm) {
            found = true;
            break;
        }
    }
    closedir(proc);
    return found;
}

void ReadServices(cConf_Inf& conf) {
    std::string text;
    if (ReadTextFile(kFtpConfigPath, text))
        ParseFtpConfig(text, conf);
    conf.chVsftpdRunFlag = ProcessRuns("vsftpd") ? '1' : '0';
    if (ReadTextFile(kSambaConfigPath, text))
        ParseSambaConfig(text, conf);
    conf.chSambaRunFlag = ProcessRuns("smbd") ? '1' : '0';
}

}  // namespace nvagent
