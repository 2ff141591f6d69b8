// A user's password (command 56) or password hash (command 60): the user
// must exist in the system's user database; the change goes through
// chpasswd with "user:password" on its standard input, never on a command
// line, and a hash through "chpasswd -e", which stores it as it is. A hash
// that already is the user's changes nothing.
#include <pwd.h>
#include <shadow.h>

#include <vector>

#include "agent/live/live_changes.h"
#include "agent/live/run_process.h"

namespace nvagent {

namespace {

bool HashIsCurrent(const std::string& user, const std::string& hash) {
    struct spwd sp {};
    struct spwd* found = nullptr;
    std::vector<char> buf(16384);
    return getspnam_r(user.c_str(), &sp, buf.data(), buf.size(), &found) == 0 && found != nullptr &&
           found->sp_pwdp != nullptr && hash == found->sp_pwdp;
}

}  // namespace

CmdResult ChangePassword(const PasswordRequest& q) {
    struct passwd pw {};
    struct passwd* found = nullptr;
    std::vector<char> buf(16384);
    if (getpwnam_r(q.user.c_str(), &pw, buf.data(), buf.size(), &found) != 0 || found == nullptr) {
        return Invalid("There is no user named " + q.user + ".");
    }
    if (q.hashed && HashIsCurrent(q.user, q.password))
        return Unchanged("The password of " + q.user + " is already this one.");
    std::vector<std::string> argv = {"chpasswd"};
    if (q.hashed)
        argv.push_back("-e");
    ToolRun run = RunTool(argv, q.user + ":" + q.password + "\n", 20000);
    if (!run.Ok())
        return Failed("The password was not changed: " + run.Why("chpasswd") + ".");
    return Done();
}

}  // namespace nvagent
