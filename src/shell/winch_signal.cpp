// Terminal resize as a readable descriptor, for the key loop's poll.
#include "shell/winch_signal.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace {

int gs_aiWinchPipe[2] = {-1, -1};
struct sigaction gs_stCursesWinch;

void OnWinch(int iSig) {
    int iSavedErrno = errno;
    char c = 1;
    ssize_t n = write(gs_aiWinchPipe[1], &c, 1);
    (void)n;  // a full pipe already says "resized"
    if (gs_stCursesWinch.sa_flags & SA_SIGINFO)
        gs_stCursesWinch.sa_sigaction(iSig, NULL, NULL);
    else if (gs_stCursesWinch.sa_handler != SIG_DFL && gs_stCursesWinch.sa_handler != SIG_IGN)
        gs_stCursesWinch.sa_handler(iSig);
    errno = iSavedErrno;
}

}  // namespace

int InitWinchSignal() {
    if (gs_aiWinchPipe[0] >= 0)
        return 0;
    if (pipe2(gs_aiWinchPipe, O_NONBLOCK | O_CLOEXEC) != 0) {
        gs_aiWinchPipe[0] = gs_aiWinchPipe[1] = -1;
        return -1;
    }
    struct sigaction stAction;
    memset(&stAction, 0, sizeof(stAction));
    stAction.sa_handler = OnWinch;
    sigemptyset(&stAction.sa_mask);
    stAction.sa_flags = SA_RESTART;
    return sigaction(SIGWINCH, &stAction, &gs_stCursesWinch);
}

int WinchFd() {
    return gs_aiWinchPipe[0];
}

void DrainWinch() {
    char acBuf[64];
    while (gs_aiWinchPipe[0] >= 0 && read(gs_aiWinchPipe[0], acBuf, sizeof(acBuf)) > 0) {
    }
}
