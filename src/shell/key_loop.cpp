// The key loop: one key at a time from the current window to the current
// key function, always under the refresh lock.
//
// curses is not thread-safe and the refresh thread draws too, so every
// curses call happens with the refresh lock held, reading included: wgetch
// refreshes a touched window before it reads. The loop therefore waits for
// input outside the lock (poll on the terminal) and takes the lock only to
// read the key, which is then already there, and to hand it on. Keys curses
// has read ahead into its own queue (an Esc followed at once by another key)
// are invisible to poll; they are taken without waiting before the loop
// waits again.
#include <poll.h>
#include <unistd.h>

#include <cerrno>

#include "shell/nv_log.h"
#include "shell/screen_resize.h"
#include "shell/start_up.h"
#include "shell/winch_signal.h"

// Consecutive read errors after which the loop gives up.
static const int MAX_READ_ERRORS = 10;

int WaitForTerminalInput() {
    struct pollfd astFd[2] = {{STDIN_FILENO, POLLIN, 0}, {WinchFd(), POLLIN, 0}};
    for (;;) {
        int iRet = poll(astFd, astFd[1].fd >= 0 ? 2 : 1, -1);
        if (iRet > 0 && astFd[0].revents != 0)
            return KEY_WAIT_INPUT;
        if (iRet > 0) {
            DrainWinch();
            return KEY_WAIT_RESIZED;
        }
        if (iRet < 0 && errno != EINTR)
            return -1;
    }
}

int ReadPendingKey(WINDOW* win) {
    nodelay(win, TRUE);
    int iKey = wgetch(win);
    nodelay(win, FALSE);
    return iKey;
}

void RunKeyLoop(pfKeyReader pfnRead, pfKeyWait pfnWait, pfKeyReader pfnPending) {
    int iErrors = 0;
    int iPending = ERR;
    while (sg_Screen.iNvuiRunFlag) {
        if (sg_Screen.pfnCurKeyFunc == NULL) {
            pthread_mutex_lock(&f_refresh_lock);
            NV_DBG("current key function is NULL!");
            pthread_mutex_unlock(&f_refresh_lock);
            break;
        }
        int iWait = KEY_WAIT_INPUT;
        if (iPending == ERR && pfnWait != NULL)
            iWait = pfnWait();  // a failed wait shows as a failed read below
        pthread_mutex_lock(&f_refresh_lock);
        if (sg_Screen.CurWin == NULL)
            sg_Screen.CurWin = stdscr;
        if (iWait == KEY_WAIT_RESIZED && pfnPending != NULL) {
            // curses has noted the new size: the read without waiting
            // hands over its KEY_RESIZE (nothing when the size is the same).
            iPending = pfnPending(sg_Screen.CurWin);
            if (iPending == ERR) {
                pthread_mutex_unlock(&f_refresh_lock);
                continue;
            }
        }
        int iKey = iPending;
        iPending = ERR;
        if (iKey == ERR)
            iKey = pfnRead(sg_Screen.CurWin);
        if (iKey == ERR) {
            if (++iErrors >= MAX_READ_ERRORS)
                NV_DBG("wgetch error!");
            pthread_mutex_unlock(&f_refresh_lock);
            if (iErrors < MAX_READ_ERRORS)
                continue;
            break;
        }
        iErrors = 0;
        if (iKey == KEY_RESIZE)
            HandleResize();
        else
            sg_Screen.pfnCurKeyFunc(iKey);
        if (pfnPending != NULL && sg_Screen.iNvuiRunFlag && sg_Screen.pfnCurKeyFunc != NULL)
            iPending = pfnPending(sg_Screen.CurWin ? sg_Screen.CurWin : stdscr);
        pthread_mutex_unlock(&f_refresh_lock);
    }
}
