// Closing descriptors, resetting signals and exec, in a forked child.
#include "agent/monitors/child_exec.h"

#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

namespace nvmonit {

namespace {

void CloseFrom(unsigned int first, unsigned int last) {
    if (first > last)
        return;
    if (syscall(SYS_close_range, first, last, 0U) == 0)
        return;
    long max = sysconf(_SC_OPEN_MAX);
    unsigned int end = max > 0 ? static_cast<unsigned int>(max) - 1 : 65535U;
    for (unsigned int fd = first; fd <= last && fd <= end; ++fd)
        close(static_cast<int>(fd));
}

}  // namespace

void ExecClean(const char* path, char* const* argv, char* const* envp, int errFd) {
    if (errFd >= 3) {
        CloseFrom(3, static_cast<unsigned int>(errFd) - 1);
        CloseFrom(static_cast<unsigned int>(errFd) + 1, ~0U);
    } else {
        CloseFrom(3, ~0U);
    }
    struct sigaction dfl {};
    dfl.sa_handler = SIG_DFL;
    for (int sig = 1; sig < NSIG; ++sig)
        sigaction(sig, &dfl, nullptr);  // refused for KILL, STOP and the C library's own
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    int err = 0;
    if (chdir("/") != 0)
        err = errno;
    else
        execve(path, argv, envp);
    if (err == 0)
        err = errno;
    if (errFd >= 0) {
        ssize_t w = write(errFd, &err, sizeof err);
        (void)w;  // the parent sees a failed start either way
    }
    _exit(127);
}

}  // namespace nvmonit
