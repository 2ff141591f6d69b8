// The enquiry bar: a question wrapped in a box with "[Yes]" and "[No]" below
// it. Left and Right choose, Enter answers; there is no way out but an answer.
#include <cstring>

#include "ctrlbar/control_bar.h"
#include "shell/nv_log.h"
#include "shell/screen.h"
#include "strings/com_str.h"

ST_ENQUIRY_CTRL gs_stEnqrCtrl;

// Writes the question from line 1, column 1, wrapping at the inner width and
// at line feeds, on lines 1 to height - 3. Returns the last line written.
// Moves only at line starts, so that curses assembles multi-byte
// characters from their bytes; the wrap still counts bytes.
static int WriteQuestion(WINDOW* pWin, const char* pcQuestion, int iWidth, int iHeight) {
    int iLine = 1, iCol = 1;
    wmove(pWin, iLine, iCol);
    for (const char* p = pcQuestion; *p && iLine < iHeight - 2; ++p) {
        if (*p != '\n') {
            waddch(pWin, static_cast<unsigned char>(*p));
            ++iCol;
        }
        if (*p == '\n' || iCol == iWidth - 1) {
            iCol = 1;
            if (p[1] != '\0')
                wmove(pWin, ++iLine, iCol);
        }
    }
    return iLine;
}

static void DrawAnswers() {
    ST_ENQUIRY_CTRL& e = gs_stEnqrCtrl;
    wattrset(e.pEnqrWin, e.iCurChoice == 0 ? A_REVERSE : A_NORMAL);
    mvwaddstr(e.pEnqrWin, e.iYesStartY, e.iYesStartX, pcStrYes[iLanIdx]);
    wattrset(e.pEnqrWin, e.iCurChoice == 1 ? A_REVERSE : A_NORMAL);
    mvwaddstr(e.pEnqrWin, e.iNoStartY, e.iNoStartX, pcStrNo[iLanIdx]);
    wattrset(e.pEnqrWin, A_NORMAL);
    wrefresh(e.pEnqrWin);
}

int EnterEnqrCtrlBar(const char* pcQuestion, const DRAW_PARAMETER* pstRect, UPDATE_FUNC pfnUpdate,
                     pfBackToLastLevel pfnReturn) {
    if (pstRect == NULL || pfnUpdate == NULL) {
        NV_DBG("Enqr para error:%d:%d", pstRect != NULL, pfnUpdate != NULL);
        return -1;
    }
    if (pstRect->iHeight < 4 || pstRect->iWidth <= 10) {
        NV_DBG("Enqr draw para error:%d:%d", pstRect->iHeight, pstRect->iWidth);
        return -1;
    }
    ST_ENQUIRY_CTRL& e = gs_stEnqrCtrl;
    e.pfnEnquireUpdate = pfnUpdate;
    e.pfnReturn = pfnReturn;
    e.pEnqrWin = newwin(pstRect->iHeight, pstRect->iWidth, pstRect->iStartY, pstRect->iStartX);
    box(e.pEnqrWin, 0, 0);
    keypad(e.pEnqrWin, TRUE);
    int iLastLine =
        WriteQuestion(e.pEnqrWin, pcQuestion ? pcQuestion : "", pstRect->iWidth, pstRect->iHeight);
    int iYesLen = static_cast<int>(strlen(pcStrYes[iLanIdx]));
    int iNoLen = static_cast<int>(strlen(pcStrNo[iLanIdx]));
    int iGap = (pstRect->iWidth - 2 - iYesLen - iNoLen) / 3;
    e.iYesStartY = e.iNoStartY = iLastLine + 1;
    e.iYesStartX = iGap;
    e.iNoStartX = iGap + iYesLen + iGap;
    e.iCurChoice = 1;
    DrawAnswers();
    RegistKeyFunc(EnquiryKeyFunction, e.pEnqrWin);
    NV_DBG("Enqr init ok!\n");
    return 0;
}

static void Answer() {
    ST_ENQUIRY_CTRL& e = gs_stEnqrCtrl;
    if (e.pfnEnquireUpdate) {
        const char* pcAnswer = e.iCurChoice == 0 ? pcStrYes[iLanIdx] : pcStrNo[iLanIdx];
        NV_DBG(e.iCurChoice == 0 ? "enquiry choose 'yes'" : "enquiry choose 'no'");
        char szAnswer[64];
        strncpy(szAnswer, pcAnswer, sizeof(szAnswer) - 1);
        szAnswer[sizeof(szAnswer) - 1] = '\0';
        RunUpdate(e.pfnEnquireUpdate, szAnswer, NULL);
    }
    delwin(e.pEnqrWin);
    if (e.pfnReturn)
        e.pfnReturn();
    memset(&e, 0, sizeof(e));
}

void CancelEnqrCtrlBar() {
    if (gs_stEnqrCtrl.pEnqrWin == NULL)
        return;
    gs_stEnqrCtrl.iCurChoice = 1;
    Answer();
}

void EnquiryKeyFunction(int iKey) {
    ST_ENQUIRY_CTRL& e = gs_stEnqrCtrl;
    if (iKey == KEY_LEFT && e.iCurChoice == 1) {
        e.iCurChoice = 0;
        DrawAnswers();
    } else if (iKey == KEY_RIGHT && e.iCurChoice == 0) {
        e.iCurChoice = 1;
        DrawAnswers();
    } else if (iKey == 10) {
        Answer();
    }
}
