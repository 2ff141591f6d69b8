// The help pager: its window, created once at start, and the paging of a
// help text in it.
#include "content/help_pager.h"

#include <cstring>

#include "content/draw_types.h"
#include "shell/nv_log.h"
#include "shell/screen.h"
#include "shell/screen_frame.h"
#include "strings/com_str.h"
#include "strings/help_id.h"

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

void RelayoutHelpWindow() {
    WINDOW* pWin = sg_HelpInfo.pHelpWin;
    if (pWin == NULL)
        return;
    wresize(pWin, LINES - 6, COLS);
    mvwin(pWin, 3, 0);
    werase(pWin);
    box(pWin, 0, 0);
    sg_HelpInfo.iWidth = COLS - 2;
    sg_HelpInfo.iHeight = LINES - 8;
}

void UnInitHelpInfo() {
    if (sg_HelpInfo.pHelpWin)
        delwin(sg_HelpInfo.pHelpWin);
    memset(&sg_HelpInfo, 0, sizeof(sg_HelpInfo));
}

static void ResetPages(HELP_INFO_PARA* p) {
    memset(p->aiPageStartStrPos, 0, sizeof(p->aiPageStartStrPos));
    p->iTotalPageNum = 1;
    p->iCurPageNum = 0;
}

// A new page starts where a line feed or a full line would pass the last
// line of the area. Widths are counted in bytes, so a multi-byte character
// can be split across two lines. A line feed that starts a page opens it
// with an empty line, which the page's line count includes, so that no
// line of a page wraps back over its top.
void BreakHelpPages(HELP_INFO_PARA* p, const char* pcText) {
    ResetPages(p);
    int iLine = p->iStartY, iCol = p->iStartX;
    for (int i = 0; pcText[i] != '\0'; ++i) {
        bool bLineFeed = pcText[i] == '\n';
        if (!bLineFeed && iCol < p->iStartX + p->iWidth) {
            ++iCol;
            continue;
        }
        ++iLine;
        iCol = p->iStartX;
        if (iLine >= p->iStartY + p->iHeight) {
            if (p->iTotalPageNum < HELP_MAX_PAGES)
                p->aiPageStartStrPos[p->iTotalPageNum++] = i;
            iLine = bLineFeed ? p->iStartY + 1 : p->iStartY;
        }
        if (!bLineFeed)
            ++iCol;
    }
}

void ShowHelpInfoPage(int iPage) {
    HELP_INFO_PARA* p = &sg_HelpInfo;
    const char* pcText = p->pcHelpInfoStr;
    if (iPage >= p->iTotalPageNum || iPage < 0 || pcText == nullptr)
        return;
    p->iCurPageNum = iPage;
    ClearWindowRegion(p->pHelpWin, p->iStartX, p->iStartY, p->iWidth, p->iHeight);
    int iEnd = iPage < p->iTotalPageNum - 1 ? p->aiPageStartStrPos[iPage + 1]
                                            : static_cast<int>(strlen(pcText)) + 1;
    int iLine = p->iStartY, iCol = p->iStartX;
    wmove(p->pHelpWin, iLine, iCol);
    for (int i = p->aiPageStartStrPos[iPage]; pcText[i] != '\0' && i < iEnd; ++i) {
        if (pcText[i] == '\n' || iCol >= p->iStartX + p->iWidth) {
            if (++iLine >= p->iStartY + p->iHeight)
                iLine = p->iStartY;
            iCol = p->iStartX;
            wmove(p->pHelpWin, iLine, iCol);
        }
        if (pcText[i] == '\n')
            continue;
        waddch(p->pHelpWin, static_cast<unsigned char>(pcText[i]));
        ++iCol;
    }
    wrefresh(p->pHelpWin);
}

void ShowHelpInfo(int id, pfBackToLastLevel pfnReturn) {
    if (id < 0 || id >= EN_HELP_MAX || pfnReturn == nullptr)
        return;
    HELP_INFO_PARA* p = &sg_HelpInfo;
    p->pfnReturn = pfnReturn;
    RegistKeyFunc(HelpInfoKeyFunc, p->pHelpWin);
    box(p->pHelpWin, 0, 0);
    RefreshPrompt(PROMPT_HELP);
    p->pcHelpInfoStr = const_cast<char*>(pcStrHelp[id][iLanIdx]);
    NV_DBG("Show help info:%s", p->pcHelpInfoStr);
    BreakHelpPages(p, p->pcHelpInfoStr);
    ShowHelpInfoPage(0);
}

void HelpInfoKeyFunc(int iKey) {
    HELP_INFO_PARA* p = &sg_HelpInfo;
    switch (iKey) {
        case KEY_UP:
        case KEY_PPAGE:
            if (p->iCurPageNum >= 1)
                ShowHelpInfoPage(p->iCurPageNum - 1);
            break;
        case KEY_DOWN:
        case KEY_NPAGE:
            if (p->iTotalPageNum >= 2 && p->iCurPageNum < p->iTotalPageNum - 1) {
                ShowHelpInfoPage(p->iCurPageNum + 1);
            }
            break;
        case 27:
            ResetPages(p);
            if (p->pfnReturn) {
                pfBackToLastLevel pfnReturn = p->pfnReturn;
                p->pfnReturn = nullptr;
                pfnReturn();
            }
            break;
        default:
            break;
    }
}
