// The help pager's window: created once at start, released at exit.
#include "content/help_pager.h"

#include <cstring>

HELP_INFO_PARA sg_HelpInfo;

void InitHelpInfoWindow() {
    memset(&sg_HelpInfo, 0, sizeof(sg_HelpInfo));
    WINDOW* pWin = newwin(LINES - 6, COLS, 3, 0);
    box(pWin, 0, 0);
    wbkgd(pWin, COLOR_PAIR(6));
    keypad(pWin, TRUE);
    sg_HelpInfo.pHelpWin = pWin;
    sg_HelpInfo.iStartX = 1;
    sg_HelpInfo.iStartY = 1;
    sg_HelpInfo.iWidth = COLS - 2;
    sg_HelpInfo.iHeight = LINES - 8;
    sg_HelpInfo.iTotalPageNum = 1;
}

void UnInitHelpInfo() {
    if (sg_HelpInfo.pHelpWin)
        delwin(sg_HelpInfo.pHelpWin);
    memset(&sg_HelpInfo, 0, sizeof(sg_HelpInfo));
}
