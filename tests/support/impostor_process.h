// A local user's impostor of a system daemon, for the sandbox tests: a copy
// of a harmless program (sleep) renamed as the daemon and run by the
// unprivileged user 65534, as any user of the machine could.
#ifndef NV_TESTS_SUPPORT_IMPOSTOR_PROCESS_H
#define NV_TESTS_SUPPORT_IMPOSTOR_PROCESS_H

#include <sys/types.h>

#include <string>

#include "temp_dir.h"

namespace nvtest {

class ImpostorProcess {
public:
    // Starts the impostor named name; Running() tells whether it did.
    explicit ImpostorProcess(const std::string& name);
    // Ends and reaps it.
    ~ImpostorProcess();
    ImpostorProcess(const ImpostorProcess&) = delete;
    ImpostorProcess& operator=(const ImpostorProcess&) = delete;

    // It runs, under its name, as user 65534.
    bool Running() const;
    pid_t Pid() const { return m_pid; }

private:
    TempDir m_dir;
    std::string m_name;
    pid_t m_pid = -1;
};

}  // namespace nvtest

#endif
