// nvui's entry: with any argument only the options are parsed; without,
// the service link, curses, the windows and the key loop, in this order.
#include <string>

#include "content/help_pager.h"
#include "link/ui_interface.h"
#include "menu/menu_bar.h"
#include "shell/nv_log.h"
#include "shell/screen_frame.h"
#include "shell/screen_resize.h"
#include "shell/start_up.h"
#include "strings/com_str.h"

int main(int argc, char** argv) {
    if (argc >= 2) {
        std::string sReserved1, sReserved2;
        GetMyOpt(argc, argv, sReserved1, sReserved2);
        return 0;
    }
    InitComStr();
    int iRet = UI_InitInterface(&iLanIdx, str_NvuiVersion);
    if (iRet != 0) {
        NV_DBG("ui_interface initialize failed!");
        ExitNvui(iRet);
    }
    InitCurses();
    StartScreen();
    iRet = InitRefreshThread();
    if (iRet == 0) {
        pthread_mutex_lock(&f_refresh_lock);
        NV_DBG("norvane ui start ok!\n");
        pthread_mutex_unlock(&f_refresh_lock);
        sg_Screen.iNvuiRunFlag = 1;
        RunKeyLoop(wgetch, WaitForTerminalInput, ReadPendingKey);
    }
    ExitNvui(iRet);
    return 0;
}
