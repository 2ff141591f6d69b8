// Terminal size: the smallest screen the console lays out, the one-line
// notice shown below it, and the new layout of every window when the
// terminal is resized.
//
// A resize closes whatever is open over the menu or the page (control bar,
// form, help page, exit question) the way Esc closes it, so that no element
// keeps drawing with the old geometry; then the frame windows, the
// drop-down menus and the open page are laid out for the new size, the page
// keeping its focused row.
#include "shell/screen_resize.h"

#include <panel.h>

#include <cstring>

#include "content/content_view.h"
#include "content/help_pager.h"
#include "ctrlbar/control_bar.h"
#include "menu/menu_bar.h"
#include "shell/nv_log.h"
#include "shell/screen_frame.h"
#include "shell/start_up.h"

namespace {

// What had the keyboard when the notice took it, given back when the
// terminal is large enough again.
struct ST_NOTICE_STATE {
    int iShown;
    pfKeyFunc pfnSavedKeyFunc;
    WINDOW* pSavedWin;
    int iSavedContentFlag;
};
ST_NOTICE_STATE gs_stNotice;

const char* const kNoticeLong = "Screen too small: nvui needs 66x18. Enlarge it, or Esc to exit.";
const char* const kNoticeShort = "Need 66x18. Esc=exit";

bool HasFrame() {
    return sg_Screen.MenuWin != NULL;
}

// Closes, as Esc would, every element open over the menu or the page. The
// exit question has no Esc; it is answered "no".
void CloseOverlays() {
    for (int i = 0; i < 8; ++i) {
        pfKeyFunc fn = sg_Screen.pfnCurKeyFunc;
        if (fn == NULL || fn == MenuKeyFunction || fn == ContentKeyFunc || fn == SmallScreenKeyFunc)
            return;
        if (fn == EnquiryKeyFunction)
            CancelEnqrCtrlBar();
        else
            fn(27);
    }
}

void PlaceWindow(WINDOW* pWin, int iRows, int iCols, int iTop, int iLeft) {
    if (pWin == NULL)
        return;
    wresize(pWin, iRows, iCols);
    mvwin(pWin, iTop, iLeft);
}

void LayOutFrame() {
    // The standard screen, grown by curses, is pushed out first: left
    // touched, the next key read from it would paint its blank new columns
    // over the windows drawn below.
    werase(stdscr);
    wnoutrefresh(stdscr);
    RelayoutMenuBar();
    PlaceWindow(sg_Screen.ContentWin, LINES - 6, COLS, 3, 0);
    werase(sg_Screen.ContentWin);
    PlaceWindow(sg_Screen.PromptWin, 2, COLS, LINES - 3, 0);
    PlaceWindow(sg_Screen.InfoWin, 1, COLS, LINES - 1, 0);
    RelayoutHelpWindow();
    int iPrompt = sg_Screen.iCurPromptIdx;
    sg_Screen.iCurPromptIdx = PROMPT_MAX;
    RefreshPrompt(iPrompt);
    ClearInformation();
}

// The open page laid out for the new size with the same row focused, or,
// on the menu, the welcome text under the drop-down.
void RedrawFocus() {
    CONTENT_DRAW_INFO& c = sg_ContentInfo;
    if (c.pstContent != NULL) {
        int iFocus = c.iFocusItem;
        time_t iEntered = c.iRefreshTime;
        GetContentDrawInfo(sg_Screen.ContentWin, 0, 0, COLS, LINES - 6, 1, c.pstContent, &c);
        c.iFocusItem = iFocus < c.iMaxItemNum ? iFocus : 0;
        c.iRefreshTime = iEntered;
        ReturnFunc();
    } else {
        ShowWelcomeInfo();
        RedrawMenuWindow();
    }
}

// Every window copied whole to the screen, the drop-downs on top, and the
// terminal cleared first: nothing of the old layout stays.
void RepaintAll() {
    WINDOW* apFrame[] = {sg_Screen.MenuWin, sg_Screen.ContentWin, sg_Screen.PromptWin,
                         sg_Screen.InfoWin};
    for (WINDOW* pWin : apFrame) {
        if (pWin) {
            touchwin(pWin);
            wnoutrefresh(pWin);
        }
    }
    for (PANEL* pPanel = panel_above(NULL); pPanel; pPanel = panel_above(pPanel))
        touchwin(panel_window(pPanel));
    update_panels();
    clearok(curscr, TRUE);
    doupdate();
}

void ShowNotice() {
    const char* pcText = static_cast<int>(strlen(kNoticeLong)) <= COLS ? kNoticeLong : kNoticeShort;
    wbkgdset(stdscr, COLOR_PAIR(0));
    werase(stdscr);
    mvwaddnstr(stdscr, 0, 0, pcText, COLS);
    clearok(curscr, TRUE);
    wrefresh(stdscr);
}

void EnterNotice() {
    ST_NOTICE_STATE& n = gs_stNotice;
    if (!n.iShown) {
        n.iShown = 1;
        n.pfnSavedKeyFunc = sg_Screen.pfnCurKeyFunc;
        n.pSavedWin = sg_Screen.CurWin;
        n.iSavedContentFlag = sg_ContentInfo.iCursorInContentWinFlag;
        // The page must not refresh under the notice.
        sg_ContentInfo.iCursorInContentWinFlag = 0;
        RegistKeyFunc(SmallScreenKeyFunc, NULL);
        NV_DBG("screen too small: %dx%d", COLS, LINES);
    }
    ShowNotice();
}

void LeaveNotice() {
    ST_NOTICE_STATE& n = gs_stNotice;
    if (!n.iShown)
        return;
    werase(stdscr);
    wnoutrefresh(stdscr);
    sg_ContentInfo.iCursorInContentWinFlag = n.iSavedContentFlag;
    RegistKeyFunc(n.pfnSavedKeyFunc, n.pSavedWin);
    memset(&n, 0, sizeof(n));
}

}  // namespace

void InitScreenFrame() {
    InitInfoWindow();
    InitPromptWindow();
    InitHelpInfoWindow();
    InitContentWindow();
    InitMenuWindow();
}

bool ScreenTooSmall() {
    return LINES < MIN_SCREEN_LINES || COLS < MIN_SCREEN_COLS;
}

void SmallScreenKeyFunc(int iKey) {
    if (iKey == 27) {
        NV_DBG("exit from the too-small screen");
        sg_Screen.iNvuiRunFlag = 0;
    }
}

void StartScreen() {
    if (ScreenTooSmall()) {
        // The frame is created once the terminal is large enough.
        RegistKeyFunc(SmallScreenKeyFunc, NULL);
        gs_stNotice.iShown = 1;
        ShowNotice();
        return;
    }
    InitScreenFrame();
}

void HandleResize() {
    NV_DBG("terminal resized to %dx%d", COLS, LINES);
    if (HasFrame())
        CloseOverlays();
    if (ScreenTooSmall()) {
        EnterNotice();
        return;
    }
    if (!HasFrame()) {
        memset(&gs_stNotice, 0, sizeof(gs_stNotice));
        werase(stdscr);
        wnoutrefresh(stdscr);
        InitScreenFrame();
        return;
    }
    LeaveNotice();
    LayOutFrame();
    RedrawFocus();
    RepaintAll();
}
