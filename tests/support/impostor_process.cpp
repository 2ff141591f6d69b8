// The impostor: sleep copied into a temporary directory others can enter,
// started through setpriv with user and group 65534 and no other groups.
#include "impostor_process.h"

#include <sys/stat.h>
#include <unistd.h>

#include "child_process.h"

namespace nvtest {

namespace {

std::string ProcFile(pid_t pid, const char* name) {
    std::string text = ReadFile("/proc/" + std::to_string(pid) + "/" + name);
    if (!text.empty() && text.back() == '\n')
        text.pop_back();
    return text;
}

}  // namespace

ImpostorProcess::ImpostorProcess(const std::string& name) : m_name(name) {
    std::string sleepPath = access("/usr/bin/sleep", X_OK) == 0 ? "/usr/bin/sleep" : "/bin/sleep";
    std::string copy = m_dir.File(name);
    if (!WriteFile(copy, ReadFile(sleepPath)) || chmod(copy.c_str(), 0755) != 0 ||
        chmod(m_dir.Path().c_str(), 0755) != 0)
        return;
    m_pid = SpawnProcess(
        {"/usr/bin/setpriv", "--reuid=65534", "--regid=65534", "--clear-groups", copy, "600"}, "",
        "");
    // Until setpriv has become the impostor.
    for (int i = 0; i < 200 && m_pid > 0 && !Running(); ++i)
        usleep(10000);
}

ImpostorProcess::~ImpostorProcess() {
    if (m_pid > 0)
        KillAndReap(m_pid);
}

bool ImpostorProcess::Running() const {
    if (m_pid <= 0 || ProcFile(m_pid, "comm") != m_name)
        return false;
    std::string status = ProcFile(m_pid, "status");
    return status.find("\nUid:\t65534\t65534\t65534\t65534") != std::string::npos;
}

}  // namespace nvtest
