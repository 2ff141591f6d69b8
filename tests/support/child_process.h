// Starting, waiting for and reaping child programs in tests, without fixed
// sleeps: exits are waited for on a process descriptor with a deadline.
#ifndef NV_TESTS_SUPPORT_CHILD_PROCESS_H
#define NV_TESTS_SUPPORT_CHILD_PROCESS_H

#include <sys/types.h>

#include <string>
#include <vector>

namespace nvtest {

// Starts argv[0] (a path) with argv. Standard output and standard error go
// to the given files (created or truncated) or, when a path is empty, stay
// the test's own; standard input is /dev/null. extraEnv entries ("NAME=value")
// are added to the environment. Returns the pid, or -1.
pid_t SpawnProcess(const std::vector<std::string>& argv, const std::string& stdoutPath,
                   const std::string& stderrPath,
                   const std::vector<std::string>& extraEnv = std::vector<std::string>());

// Waits up to timeoutMs for pid to end and reaps it. Returns true with its
// wait status, or false when it is still running at the deadline.
bool WaitExit(pid_t pid, int timeoutMs, int& status);

// Waits up to timeoutMs for pid to end, without reaping it.
bool WaitUntilExited(pid_t pid, int timeoutMs);

// Waits up to timeoutMs for a process that is not our child (a daemon that
// detached) to end. True when it is gone.
bool WaitForeignExit(pid_t pid, int timeoutMs);

// Sends SIGKILL and reaps. Returns the wait status.
int KillAndReap(pid_t pid);

// The shell's view of a wait status: the exit code, or 128 + the signal.
int ExitCodeOf(int status);

struct RunResult {
    bool bFinished = false;  // ended before the deadline (else it was killed)
    int iExitCode = -1;      // as ExitCodeOf
    std::string sStdout;
    std::string sStderr;
};

// Runs a program to its end (killing it at the deadline) and collects what
// it printed.
RunResult RunProgram(const std::vector<std::string>& argv, int timeoutMs = 10000);
// The same with input as the program's standard input (a file).
RunResult RunProgramWithInput(const std::vector<std::string>& argv, const std::string& input,
                              int timeoutMs = 10000);

}  // namespace nvtest

#endif
