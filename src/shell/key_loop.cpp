// The key loop: one key at a time from the current window to the current
// key function, always under the refresh lock.
#include "shell/nv_log.h"
#include "shell/screen_resize.h"
#include "shell/start_up.h"

// Consecutive read errors after which the loop gives up.
static const int MAX_READ_ERRORS = 10;

void RunKeyLoop(pfKeyReader pfnRead) {
    int iErrors = 0;
    while (sg_Screen.iNvuiRunFlag) {
        if (sg_Screen.pfnCurKeyFunc == NULL) {
            NV_DBG("current key function is NULL!");
            break;
        }
        if (sg_Screen.CurWin == NULL)
            sg_Screen.CurWin = stdscr;
        int iKey = pfnRead(sg_Screen.CurWin);
        if (iKey == ERR) {
            if (++iErrors < MAX_READ_ERRORS)
                continue;
            NV_DBG("wgetch error!");
            break;
        }
        iErrors = 0;
        pthread_mutex_lock(&f_refresh_lock);
        if (iKey == KEY_RESIZE)
            HandleResize();
        else
            sg_Screen.pfnCurKeyFunc(iKey);
        pthread_mutex_unlock(&f_refresh_lock);
    }
}
