// The FTP server's commands (40 to 47): options edited in place in its
// configuration file (atomically, comments, order and unknown keys kept),
// the server restarted when it runs so that they apply, started and stopped
// through the service manager. The first change saves the file as it was
// into the data directory (vsftpd.conf.package). Restoring the defaults (47)
// puts that copy back with every option of the agent off and no anonymous
// root: a package's copy may let anonymous and local users in. Every new
// text is read back as the server reads it before it is written, and a
// failed restart puts the old file back.
#include <sys/stat.h>

#include "agent/atomic_file.h"
#include "agent/commands/command_parser.h"
#include "agent/commands/state_checks.h"
#include "agent/live/ftp_config.h"
#include "agent/live/live_changes.h"
#include "agent/live/live_files.h"
#include "agent/live/live_services.h"
#include "agent/live/service_control.h"

namespace nvagent {

namespace {

bool Installed(CmdResult& r) {
    struct stat st {};
    if (stat(kFtpDaemon.binary, &st) == 0)
        return true;
    r = Failed(std::string("The FTP server is not installed (") + kFtpDaemon.binary +
               " is missing).");
    return false;
}

std::string PackageCopy(const std::string& dataDir) {
    return dataDir + "/vsftpd.conf.package";
}

// The options as the server reads text.
cConf_Inf Options(const std::string& text) {
    cConf_Inf conf;
    ParseFtpConfig(text, conf);
    return conf;
}

bool SameOptions(const cConf_Inf& a, const cConf_Inf& b) {
    for (const FtpFlag& f : kFtpFlags) {
        if (a.*f.flag != b.*f.flag)
            return false;
    }
    return a.sVsftpdAnonRoot == b.sVsftpdAnonRoot;
}

// Writes next over the configuration, once the server would read it as
// want, and restarts a running server; the old text comes back when that
// fails.
CmdResult Rewrite(const std::string& old, const std::string& next, const cConf_Inf& want,
                  const std::string& dataDir) {
    if (!SameOptions(Options(next), want))
        return Failed(std::string("The server would not read the change from ") + kFtpConfigPath +
                      " as asked; nothing was changed.");
    std::string err;
    if (!KeepPackageCopy(PackageCopy(dataDir), old, err))
        return Failed("Could not keep a copy of the FTP configuration: " + err + ".");
    if (!WriteFileAtomically(kFtpConfigPath, next, err))
        return Failed(std::string("Could not write ") + kFtpConfigPath + ": " + err + ".");
    if (DaemonRuns(kFtpDaemon) && !ControlService(kFtpDaemon.service, "restart", err)) {
        std::string ignored;
        WriteFileAtomically(kFtpConfigPath, old, ignored);
        ControlService(kFtpDaemon.service, "restart", ignored);
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
    if (q.cmd == 46)
        return SwitchService(q.cmd, q.on, kFtpDaemon, "The FTP server");
    std::string text;
    ReadTextFile(kFtpConfigPath, text);
    cConf_Inf now = Options(text);
    for (const FtpFlag& f : kFtpFlags) {
        if (f.cmd != q.cmd)
            continue;
        if (now.*f.flag == (q.on ? '1' : '0'))
            return FlagUnchanged(q.cmd, q.on);
        cConf_Inf want = now;
        want.*f.flag = q.on ? '1' : '0';
        return Rewrite(text, WithFtpOption(text, f.option, q.on ? "YES" : "NO"), want, dataDir);
    }
    return Failed("Command " + std::to_string(q.cmd) + " is not an FTP option.");
}

CmdResult ChangeFtpRoot(const PathRequest& q, const std::string& dataDir) {
    CmdResult r;
    if (!Installed(r))
        return r;
    std::string text;
    ReadTextFile(kFtpConfigPath, text);
    cConf_Inf now = Options(text);
    if (now.sVsftpdAnonRoot == q.path)
        return Unchanged("The FTP anonymous root is already " + q.path + ".");
    cConf_Inf want = now;
    want.sVsftpdAnonRoot = q.path;
    return Rewrite(text, WithFtpOption(text, "anon_root", q.path), want, dataDir);
}

CmdResult RestoreFtpDefaults(const std::string& dataDir) {
    CmdResult r;
    if (!Installed(r))
        return r;
    std::string text, next;
    ReadTextFile(kFtpConfigPath, text);
    if (!ReadTextFile(PackageCopy(dataDir), next))
        next = text;
    // Written out rather than left to the server's built-in defaults, which
    // differ between its builds.
    for (const FtpFlag& f : kFtpFlags)
        next = WithFtpOption(next, f.option, "NO");
    next = WithoutFtpOption(next, "anon_root");
    if (next == text)
        return Unchanged("The FTP options already have their default values.");
    return Rewrite(text, next, cConf_Inf(), dataDir);
}

}  // namespace nvagent
