// The input bar: a field, in place over a cell or in a boxed window of its
// own, that takes printable ASCII. Typing appends, Backspace removes the last
// character, Enter hands the text typed to the update function, Esc closes
// without change. A limited field ignores what does not fit; an unlimited one
// scrolls to show the end of the text.
#include <cstdlib>
#include <cstring>
#include <string>

#include "ctrlbar/control_bar.h"
#include "shell/nv_log.h"
#include "shell/screen.h"
#include "shell/screen_frame.h"
#include "strings/com_str.h"

ST_INPUT_CTRL gs_stInputCtrl;

namespace {

int ReadDecimal(const std::string& s) {
    return static_cast<int>(strtol(s.c_str(), NULL, 10));
}

// Writes one typed character at (iY, iX) as the echo type says.
void EchoChar(int iY, int iX, char ch) {
    ST_INPUT_CTRL& c = gs_stInputCtrl;
    if (c.iInputType == 0)
        mvwaddch(c.pInputWin, iY, iX, static_cast<unsigned char>(ch));
    else if (c.iInputType == 1)
        mvwaddch(c.pInputWin, iY, iX, '*');
}

// The text as the log may hold it: a password field's bytes become
// asterisks of the same number.
std::string LoggedText(const char* pcText) {
    if (gs_stInputCtrl.iInputType == 1)
        return std::string(strlen(pcText), '*');
    return pcText;
}

// One column on; past the right edge, the start of the next line.
void AdvanceCursor() {
    ST_INPUT_CTRL& c = gs_stInputCtrl;
    if (++c.x >= c.iStartX + c.iWidth) {
        c.x = c.iStartX;
        ++c.y;
    }
}

// Blanks the field and redraws the text from index iFrom on from the
// field's top-left, wrapping at the right edge.
void RedrawTail(int iFrom) {
    ST_INPUT_CTRL& c = gs_stInputCtrl;
    if (iFrom < 0)
        iFrom = 0;
    ClearWindowRegion(c.pInputWin, c.iStartX, c.iStartY, c.iWidth, c.iHeight);
    c.x = c.iStartX;
    c.y = c.iStartY;
    for (int i = iFrom; i < c.iInputNum; ++i) {
        EchoChar(c.y, c.x, c.szInputBuf[i]);
        AdvanceCursor();
    }
}

// The initial text is only shown: the cursor stays behind it.
void ShowInitialText(const std::string& strText) {
    ST_INPUT_CTRL& c = gs_stInputCtrl;
    for (size_t i = 0; i < strText.size() && c.y < c.iStartY + c.iHeight; ++i) {
        mvwaddch(c.pInputWin, c.y, c.x, static_cast<unsigned char>(strText[i]));
        AdvanceCursor();
    }
}

void CloseInputBar() {
    ST_INPUT_CTRL& c = gs_stInputCtrl;
    if (c.iNewWinFlag == 1 && c.pInputWin != NULL)
        delwin(c.pInputWin);
    if (c.pfnReturn)
        c.pfnReturn();
    memset(&c, 0, sizeof(c));
    curs_set(0);
}

void TypeChar(int iKey) {
    ST_INPUT_CTRL& c = gs_stInputCtrl;
    int iCells = c.iWidth * c.iHeight;
    if (c.y >= c.iStartY + c.iHeight) {
        if (c.iInputLenLimitFlag != 0)
            return;
        // The last (cells - 1) characters leave the cursor on the field's
        // last cell. After an initial text fewer may have been typed; the
        // cursor then follows them.
        RedrawTail(c.iInputNum - iCells + 1);
    }
    c.szInputBuf[c.iInputNum++] = static_cast<char>(iKey);
    EchoChar(c.y, c.x, static_cast<char>(iKey));
    AdvanceCursor();
    wmove(c.pInputWin, c.y, c.x);
    wrefresh(c.pInputWin);
}

void EraseChar() {
    ST_INPUT_CTRL& c = gs_stInputCtrl;
    if (c.x <= c.iStartX && c.y <= c.iStartY)
        return;
    c.szInputBuf[--c.iInputNum] = '\0';
    int iCells = c.iWidth * c.iHeight;
    if (c.iInputLenLimitFlag == 0 && c.iInputNum >= iCells) {
        NV_DBG("Input info:%s", LoggedText(c.szInputBuf + c.iInputNum - iCells).c_str());
        RedrawTail(c.iInputNum - iCells);
        // One column right of the field, on its last line: kept so.
        c.x = c.iStartX + c.iWidth;
        c.y = c.iStartY + c.iHeight - 1;
    } else {
        if (c.x <= c.iStartX) {
            c.x = c.iStartX + c.iWidth - 1;
            --c.y;
        } else {
            --c.x;
        }
        mvwaddch(c.pInputWin, c.y, c.x, ' ');
    }
    wmove(c.pInputWin, c.y, c.x);
    wrefresh(c.pInputWin);
}

void ConfirmInput() {
    ST_INPUT_CTRL& c = gs_stInputCtrl;
    if (c.pfnInputUpdate == NULL) {
        NV_DBG("ERR! Input update is NULL!");
        return;
    }
    // A text of the full 1024 characters has no terminator of its own.
    char szText[INPUT_BUF_LEN + 1];
    memcpy(szText, c.szInputBuf, INPUT_BUF_LEN);
    szText[c.iInputNum] = '\0';
    NV_DBG("Input string(%d):%s", c.iInputNum, LoggedText(szText).c_str());
    if (c.iInputNum > 0) {
        RunUpdateShowingWait(c.pfnInputUpdate, szText, c.arg);
    }
    CloseInputBar();
}

// Reads the arguments into the zeroed structure; -1 without an update
// function.
int ReadInputArgs(const tVstr& vstrArgv, const DRAW_PARAMETER* pstRect,
                  pfBackToLastLevel pfnReturn) {
    ST_INPUT_CTRL& c = gs_stInputCtrl;
    memset(&c, 0, sizeof(c));
    c.pfnInputUpdate = reinterpret_cast<UPDATE_FUNC>(ArgToPtr(vstrArgv[0]));
    if (c.pfnInputUpdate == NULL) {
        NV_DBG("Input Ctrl para error:%s", "input update function is NULL");
        return -1;
    }
    c.iNewWinFlag = ReadDecimal(vstrArgv[1]);
    c.iInputLenLimitFlag = ReadDecimal(vstrArgv[2]);
    c.iInputType = ReadDecimal(vstrArgv[3]);
    if (vstrArgv.size() > 4)
        c.arg = ArgToPtr(vstrArgv[4]);
    c.iStartX = pstRect->iStartX;
    c.iStartY = pstRect->iStartY;
    c.iWidth = pstRect->iWidth;
    c.iHeight = pstRect->iHeight;
    c.pfnReturn = pfnReturn;
    return 0;
}

// Makes the boxed window or takes the given one; -1 when neither can be had.
int SetUpInputWindow(const DRAW_PARAMETER* pstRect, WINDOW* pWin) {
    ST_INPUT_CTRL& c = gs_stInputCtrl;
    if (c.iNewWinFlag == 1) {
        if (pstRect->iWidth <= 2 || pstRect->iHeight <= 2) {
            memset(&c, 0, sizeof(c));
            return -1;
        }
        c.pInputWin = newwin(pstRect->iHeight, pstRect->iWidth, pstRect->iStartY, pstRect->iStartX);
        box(c.pInputWin, 0, 0);
        keypad(c.pInputWin, TRUE);
        c.iStartX = 1;
        c.iStartY = 1;
        c.iWidth = pstRect->iWidth - 2;
        c.iHeight = pstRect->iHeight - 2;
        return 0;
    }
    if (pWin == NULL) {
        NV_DBG("Error:%s", "iNewWinFlag is 0 and pInputWin is NULL");
        memset(&c, 0, sizeof(c));
        return -1;
    }
    c.pInputWin = pWin;
    return 0;
}

}  // namespace

int EnterInputCtrlBar(const tVstr& vstrShowStr, const tVstr& vstrArgv,
                      const DRAW_PARAMETER* pstRect, pfBackToLastLevel pfnReturn, WINDOW* pWin) {
    if (vstrArgv.size() < 4 || pstRect == NULL || pfnReturn == NULL) {
        NV_DBG("Input ctrl para error:%d:%d:%d", static_cast<int>(vstrArgv.size()), pstRect != NULL,
               pfnReturn != NULL);
        return -1;
    }
    if (ReadInputArgs(vstrArgv, pstRect, pfnReturn) != 0)
        return -1;
    if (SetUpInputWindow(pstRect, pWin) != 0)
        return -1;
    ST_INPUT_CTRL& c = gs_stInputCtrl;
    NV_DBG("Input window:%d:%d", c.iWidth, c.iHeight);
    ClearWindowRegion(c.pInputWin, c.iStartX, c.iStartY, c.iWidth, c.iHeight);
    c.x = c.iStartX;
    c.y = c.iStartY;
    RegistKeyFunc(InputKeyFunction, c.pInputWin);
    curs_set(1);
    wmove(c.pInputWin, c.y, c.x);
    if (!vstrShowStr.empty())
        ShowInitialText(vstrShowStr[0]);
    RefreshPrompt(PROMPT_INPUT);
    // Drawing the prompt moved the terminal cursor; the user types into the
    // field, so the cursor goes back there.
    wmove(c.pInputWin, c.y, c.x);
    wrefresh(c.pInputWin);
    NV_DBG("Input ctrl init ok!");
    return 0;
}

void InputKeyFunction(int iKey) {
    ST_INPUT_CTRL& c = gs_stInputCtrl;
    if (c.pInputWin == NULL)
        return;
    if (iKey >= 32 && iKey <= 126) {
        if (c.iInputNum < INPUT_BUF_LEN)
            TypeChar(iKey);
    } else if (iKey == 8 || iKey == KEY_BACKSPACE) {
        if (c.iInputNum > 0)
            EraseChar();
    } else if (iKey == 10) {
        ConfirmInput();
    } else if (iKey == 27) {
        NV_DBG("input ctrl Esc!");
        CloseInputBar();
    }
}
