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

// Bytes of the character at pcText in the current language's encoding:
// two for a GB2312 pair, two to four for a UTF-8 sequence, else one.
static int CharBytes(const char* pcText) {
    const unsigned char* p = reinterpret_cast<const unsigned char*>(pcText);
    if (p[0] < 0x80)
        return 1;
    if (iLanIdx == LAN_CHINESE_GB2312)
        return p[0] >= 0xA1 && p[1] >= 0xA1 ? 2 : 1;
    int n = p[0] >= 0xF0 ? 4 : p[0] >= 0xE0 ? 3 : p[0] >= 0xC0 ? 2 : 1;
    for (int k = 1; k < n; ++k) {
        if ((p[k] & 0xC0) != 0x80)
            return 1;
    }
    return n;
}

// A line feed, or a character that does not fit what is left of its line,
// moves to the next line: widths are counted in bytes, but a line never
// ends inside a character.
static bool StartsLine(const HELP_INFO_PARA* p, const char* pcText, int iCol) {
    return *pcText == '\n' || iCol + CharBytes(pcText) > p->iStartX + p->iWidth;
}

// A new page starts where a line feed or a character would pass the last
// line of the area; a line feed that starts a page opens it with an empty
// line, which the page's line count includes.
void BreakHelpPages(HELP_INFO_PARA* p, const char* pcText) {
    ResetPages(p);
    int iLine = p->iStartY, iCol = p->iStartX;
    for (int i = 0; pcText[i] != '\0';) {
        bool bLineFeed = pcText[i] == '\n';
        if (StartsLine(p, pcText + i, iCol)) {
            ++iLine;
            iCol = p->iStartX;
            if (iLine >= p->iStartY + p->iHeight) {
                if (p->iTotalPageNum < HELP_MAX_PAGES)
                    p->aiPageStartStrPos[p->iTotalPageNum++] = i;
                iLine = bLineFeed ? p->iStartY + 1 : p->iStartY;
            }
        }
        if (bLineFeed) {
            ++i;
            continue;
        }
        int n = CharBytes(pcText + i);
        iCol += n;
        i += n;
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
    for (int i = p->aiPageStartStrPos[iPage]; pcText[i] != '\0' && i < iEnd;) {
        if (StartsLine(p, pcText + i, iCol)) {
            if (++iLine >= p->iStartY + p->iHeight)
                iLine = p->iStartY;
            iCol = p->iStartX;
            wmove(p->pHelpWin, iLine, iCol);
        }
        if (pcText[i] == '\n') {
            ++i;
            continue;
        }
        int n = CharBytes(pcText + i);
        waddnstr(p->pHelpWin, pcText + i, n);
        iCol += n;
        i += n;
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
