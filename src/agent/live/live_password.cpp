// A user's password (command 56): the user must exist in the system's user
// database; the change goes through chpasswd with "user:password" on its
// standard input, never on a command line.
#include <pwd.h>

#include <vector>

#include "agent/live/live_changes.h"
#include "agent/live/run_process.h"

namespace nvagent {

CmdResult ChangePassword(const PasswordRequest& q) {
    struct passwd pw {};
    struct passwd* found = nullptr;
    std::vector<char> buf(16384);
    if (getpwnam_r(q.user.c_str(), &pw, buf.data(), buf.size(), &found) != 0 || found == nullptr) {
        return Invalid("There is no user named " + q.user + ".");
    }
    ToolRun run = RunTool({"chpasswd"}, q.user + ":" + q.password + "\n", 20000);
    if (!run.Ok())
        return Failed("The password was not changed: " + run.Why("chpasswd") + ".");
    return Done();
}

}  // namespace nvagent
