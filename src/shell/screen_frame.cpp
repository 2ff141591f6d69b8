// The frame windows around the menu bar: content area, prompt and
// information line, and what is drawn on them.
#include "shell/screen_frame.h"

#include <cstring>

#include "content/content_view.h"
#include "shell/screen.h"
#include "strings/com_str.h"

static WINDOW* NewBandWindow(int iRows, int iTop, int iPair) {
    WINDOW* pWin = newwin(iRows, COLS, iTop, 0);
    wbkgd(pWin, COLOR_PAIR(iPair));
    wrefresh(pWin);
    return pWin;
}

void InitInfoWindow() {
    sg_Screen.InfoWin = NewBandWindow(1, LINES - 1, 3);
}

void InitPromptWindow() {
    sg_Screen.PromptWin = NewBandWindow(2, LINES - 3, 3);
    sg_Screen.iCurPromptIdx = PROMPT_MAX;
}

void InitContentWindow() {
    sg_Screen.ContentWin = NewBandWindow(LINES - 6, 3, 2);
    keypad(sg_Screen.ContentWin, TRUE);
    memset(&sg_ContentInfo, 0, sizeof(sg_ContentInfo));
}

static void DeleteWindow(WINDOW*& pWin) {
    if (pWin == NULL)
        return;
    delwin(pWin);
    pWin = NULL;
}

void UnInitInfoWin() {
    DeleteWindow(sg_Screen.InfoWin);
}
void UnInitPromt() {
    DeleteWindow(sg_Screen.PromptWin);
}
void UnInitContent() {
    DeleteWindow(sg_Screen.ContentWin);
}

void RefreshPrompt(int id) {
    if (id == sg_Screen.iCurPromptIdx || id >= PROMPT_MAX || id < 0)
        return;
    sg_Screen.iCurPromptIdx = id;
    werase(sg_Screen.PromptWin);
    mvwaddstr(sg_Screen.PromptWin, 0, 0, pcStrPrompt[id][iLanIdx]);
    wrefresh(sg_Screen.PromptWin);
}

static void BlankInfoLine() {
    for (int i = 0; i < COLS; ++i)
        mvwaddch(sg_Screen.InfoWin, 0, i, ' ');
}

void ShowInfomation(const char* pcText) {
    WINDOW* pWin = sg_Screen.InfoWin;
    if (pcText == NULL) {
        werase(pWin);
        wrefresh(pWin);
        return;
    }
    wattron(pWin, COLOR_PAIR(1));
    BlankInfoLine();
    wrefresh(pWin);
    mvwaddstr(pWin, 0, 0, pcText);
    wattroff(pWin, COLOR_PAIR(1));
    wrefresh(pWin);
}

void ClearInformation() {
    BlankInfoLine();
    wrefresh(sg_Screen.InfoWin);
}

// Rows are the line breaks in the text; the width is that of the widest line
// ending in a break, so a last line without one is not measured.
static void MeasureWelcome(const char* pcText, int& iRows, int& iWidth) {
    iRows = 0;
    iWidth = 0;
    int iLine = 0;
    for (const char* p = pcText; *p; ++p) {
        if (*p != '\n') {
            ++iLine;
            continue;
        }
        ++iRows;
        if (iLine > iWidth)
            iWidth = iLine;
        iLine = 0;
    }
}

void ShowWelcomeInfo() {
    const char* pcText = pcStrWelcomeInfo[iLanIdx];
    WINDOW* pWin = sg_Screen.ContentWin;
    int iRows, iWidth;
    MeasureWelcome(pcText, iRows, iWidth);
    if (iRows > LINES - 6)
        iRows = LINES - 6;
    if (iWidth > COLS)
        iWidth = COLS;
    int iTop = (LINES - 6 - iRows) / 2;
    int iLeft = (COLS - iWidth) / 2;
    werase(pWin);
    wmove(pWin, iTop, iLeft);
    for (const char* p = pcText; *p; ++p) {
        if (*p == '\n') {
            wmove(pWin, ++iTop, iLeft);
        } else {
            waddch(pWin, static_cast<unsigned char>(*p));
        }
    }
    wrefresh(pWin);
}
