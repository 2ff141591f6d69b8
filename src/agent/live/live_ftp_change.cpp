// The FTP server's commands (40 to 47): options edited in place in its
// configuration file (atomically, comments, order and unknown keys kept),
// the server restarted when it runs so that they apply, started and stopped
// through the service manager. The first change saves the file as it was
// into the data directory (vsftpd.conf.package); restoring the defaults
// (47) puts that copy back. A failed restart puts the old file back.
#include <sys/stat.h>

#include "agent/atomic_file.h"
#include "agent/commands/command_parser.h"
#include "agent/commands/state_checks.h"
#include "agent/live/live_changes.h"
#include "agent/live/live_files.h"
#include "agent/live/live_services.h"
#include "agent/live/service_control.h"

namespace nvagent {

namespace {

const char* const kFtpBinary = "/usr/sbin/vsftpd";
const char* const kFtpService = "vsftpd";

struct FtpFlag {
    short cmd;
    const char* key;
    char cConf_Inf::*flag;
};

const FtpFlag kFtpFlags[] = {
    {40, "anonymous_enable", &cConf_Inf::chVsftpdAnonEnable},
    {41, "anon_upload_enable", &cConf_Inf::chVsftpdAnonUpload},
    {42, "anon_mkdir_write_enable", &cConf_Inf::chVsftpdAnonMkdir},
    {44, "local_enable", &cConf_Inf::chVsftpdLocalEnable},
    {45, "write_enable", &cConf_Inf::chVsftpdWrite},
};

bool Installed(CmdResult& r) {
    struct stat st {};
    if (stat(kFtpBinary, &st) == 0)
        return true;
    r = Failed(std::string("The FTP server is not installed (") + kFtpBinary + " is missing).");
    return false;
}

std::string PackageCopy(const std::string& dataDir) {
    return dataDir + "/vsftpd.conf.package";
}

// Writes next over the configuration and restarts a running server; the
// old text comes back when that fails.
CmdResult Rewrite(const std::string& old, const std::string& next, const std::string& dataDir) {
    std::string err;
    if (!KeepPackageCopy(PackageCopy(dataDir), old, err))
        return Failed("Could not keep a copy of the FTP configuration: " + err + ".");
    if (!WriteFileAtomically(kFtpConfigPath, next, err))
        return Failed(std::string("Could not write ") + kFtpConfigPath + ": " + err + ".");
    if (ProcessRuns(kFtpService) && !ControlService(kFtpService, "restart", err)) {
        std::string ignored;
        WriteFileAtomically(kFtpConfigPath, old, ignored);
        ControlService(kFtpService, "restart", ignored);
        return Failed("The FTP server did not restart with the change (" + err +
                      "); the old configuration was put back.");
    }
    return Done();
}

}  // namespace

CmdResult ChangeFtpFlag(const FlagRequest& q, const std::string& dataDir) {
    CmdResult r;
    if (!Installed(r))
        return r;
    cConf_Inf now;
    std::string text;
    ReadTextFile(kFtpConfigPath, text);
    ParseFtpConfig(text, now);
    if (q.cmd == 46)
        return SwitchService(q.cmd, q.on, kFtpService, "The FTP server");
    for (const FtpFlag& f : kFtpFlags) {
        if (f.cmd != q.cmd)
            continue;
        if (now.*f.flag == (q.on ? '1' : '0'))
            return FlagUnchanged(q.cmd, q.on);
        return Rewrite(text, WithConfKey(text, f.key, q.on ? "YES" : "NO"), dataDir);
    }
    return Failed("Command " + std::to_string(q.cmd) + " is not an FTP option.");
}

CmdResult ChangeFtpRoot(const PathRequest& q, const std::string& dataDir) {
    CmdResult r;
    if (!Installed(r))
        return r;
    std::string text;
    ReadTextFile(kFtpConfigPath, text);
    cConf_Inf now;
    ParseFtpConfig(text, now);
    if (now.sVsftpdAnonRoot == q.path)
        return Unchanged("The FTP anonymous root is already " + q.path + ".");
    return Rewrite(text, WithConfKey(text, "anon_root", q.path), dataDir);
}

CmdResult RestoreFtpDefaults(const std::string& dataDir) {
    CmdResult r;
    if (!Installed(r))
        return r;
    std::string text, original;
    ReadTextFile(kFtpConfigPath, text);
    if (!ReadTextFile(PackageCopy(dataDir), original) || original == text)
        return Unchanged("The FTP options already have their default values.");
    return Rewrite(text, original, dataDir);
}

}  // namespace nvagent
