// The exit sequence shared by a normal end, a loop failure and every
// start-up failure.
#include <cerrno>
#include <cstdlib>

#include "content/help_pager.h"
#include "link/result_codes.h"
#include "menu/menu_bar.h"
#include "shell/screen_frame.h"
#include "shell/start_up.h"

const char* ExitMessage(int iRet) {
    switch (iRet) {
        case ERR_OPEN_LOG_FAILED:
            return "Error! open log file failed!";
        case ERR_CONNECT_FAILED:
            return "Error! connect failed!please run 'service norvane start' or 'nvstart' first!";
        case ERR_LANG_CODE_INVALID:
            return "Error! Language code gotten from norvane server is invalid!";
        case ERR_REFRESH_THREAD_FAILED:
            return "Error! Refresh thread create failed!";
        default:
            return NULL;
    }
}

void ExitNvui(int iRet) {
    // The refresh thread runs until the process ends; holding the lock from
    // here to exit keeps it from drawing on windows being released or after
    // curses has ended. The main thread never holds the lock on its way here.
    pthread_mutex_lock(&f_refresh_lock);
    UnInitMenu();
    UnInitContent();
    UnInitPromt();
    UnInitHelpInfo();
    UnInitInfoWin();
    curs_set(1);
    endwin();
    const char* pcMsg = ExitMessage(iRet);
    if (pcMsg)
        printf("%s\n", pcMsg);
    exit(0);
}
