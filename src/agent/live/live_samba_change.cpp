// Samba's commands (48 to 51) on the agent's own share section: the
// configuration written to a candidate file next to it and read back with
// Samba's own checker (testparm) before it replaces the real one: refused,
// or a share that Samba would read otherwise than asked (another path or
// write flag), leaves the real file as it was. A running Samba then reloads
// it. Samba is started and stopped through the service
// manager. The first change keeps the file as it was in the data directory
// (smb.conf.package), which 51 puts back.
#include <sys/stat.h>
#include <unistd.h>

#include "agent/atomic_file.h"
#include "agent/commands/command_parser.h"
#include "agent/commands/state_checks.h"
#include "agent/live/live_changes.h"
#include "agent/live/live_files.h"
#include "agent/live/live_services.h"
#include "agent/live/run_process.h"
#include "agent/live/samba_config.h"
#include "agent/live/service_control.h"

namespace nvagent {

namespace {

bool Installed(CmdResult& r) {
    struct stat st {};
    if (stat(kSambaDaemon.binary, &st) == 0 && !FindTool("testparm").empty())
        return true;
    r = Failed(std::string("Samba is not installed (") + kSambaDaemon.binary +
               " or testparm is missing).");
    return false;
}

std::string PackageCopy(const std::string& dataDir) {
    return dataDir + "/smb.conf.package";
}

// The share as a Samba configuration text sets it.
cConf_Inf Share(const std::string& text) {
    cConf_Inf conf;
    ParseSambaConfig(text, conf);
    return conf;
}

std::string Describe(const cConf_Inf& c) {
    return "path \"" + c.sSambaSharePath + "\", " +
           (c.chSambaShareWrite == '1' ? "writable" : "read-only");
}

// Writes next over the configuration once Samba's checker accepts it and
// reads the share as want; a running Samba reloads it.
CmdResult Rewrite(const std::string& old, const std::string& next, const cConf_Inf& want,
                  const std::string& dataDir) {
    std::string err;
    if (!KeepPackageCopy(PackageCopy(dataDir), old, err))
        return Failed("Could not keep a copy of the Samba configuration: " + err + ".");
    std::string candidate = std::string(kSambaConfigPath) + ".norvane-check";
    if (!WriteFileAtomically(candidate, next, err))
        return Failed("Could not write " + candidate + ": " + err + ".");
    ToolRun check = RunTool({"testparm", "-s", candidate}, "", 30000);
    unlink(candidate.c_str());
    if (!check.Ok())
        return Failed("Samba's checker refused the change: " + check.Why("testparm") + ".");
    // testparm -s prints the configuration as Samba holds it.
    cConf_Inf served = Share(check.sOut);
    if (served.sSambaSharePath != want.sSambaSharePath ||
        served.chSambaShareWrite != want.chSambaShareWrite)
        return Failed("Samba would read the share as " + Describe(served) + ", not " +
                      Describe(want) + "; nothing was changed.");
    if (!WriteFileAtomically(kSambaConfigPath, next, err))
        return Failed(std::string("Could not write ") + kSambaConfigPath + ": " + err + ".");
    if (DaemonRuns(kSambaDaemon) && !ControlService(kSambaDaemon.service, "reload", err)) {
        std::string ignored;
        WriteFileAtomically(kSambaConfigPath, old, ignored);
        return Failed("Samba did not reload the change (" + err +
                      "); the old configuration was put back.");
    }
    return Done();
}

}  // namespace

CmdResult ChangeSambaFlag(const FlagRequest& q, const std::string& dataDir) {
    CmdResult r;
    if (!Installed(r))
        return r;
    std::string text;
    ReadTextFile(kSambaConfigPath, text);
    if (q.cmd == 50)
        return SwitchService(q.cmd, q.on, kSambaDaemon, "Samba");
    cConf_Inf now = Share(text);
    if (now.chSambaShareWrite == (q.on ? '1' : '0'))
        return FlagUnchanged(q.cmd, q.on);
    cConf_Inf want = now;
    want.chSambaShareWrite = q.on ? '1' : '0';
    return Rewrite(text,
                   WithShareOption(text, kShareSection, "read only", q.on ? "no" : "yes",
                                   {"writable", "writeable", "write ok"}),
                   want, dataDir);
}

CmdResult ChangeSambaPath(const PathRequest& q, const std::string& dataDir) {
    CmdResult r;
    if (!Installed(r))
        return r;
    std::string text;
    ReadTextFile(kSambaConfigPath, text);
    cConf_Inf now = Share(text);
    if (now.sSambaSharePath == q.path)
        return Unchanged("The Samba share path is already " + q.path + ".");
    cConf_Inf want = now;
    want.sSambaSharePath = q.path;
    return Rewrite(text, WithShareOption(text, kShareSection, "path", q.path, {}), want, dataDir);
}

CmdResult RestoreSambaDefaults(const std::string& dataDir) {
    CmdResult r;
    if (!Installed(r))
        return r;
    std::string text, original;
    ReadTextFile(kSambaConfigPath, text);
    if (!ReadTextFile(PackageCopy(dataDir), original) || original == text)
        return Unchanged("The Samba options already have their default values.");
    return Rewrite(text, original, Share(original), dataDir);
}

}  // namespace nvagent
