// Content layout and drawing.
#include "content/content_draw.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <cwchar>

#include "shell/screen_frame.h"
#include "strings/com_str.h"

namespace {

// The width a cell claims for its column: its iMaxWidth when set and its
// text fits the rectangle, otherwise its text's length in bytes.
int CellClaim(const CONTENT_SECTION& stSection, int iWidth) {
    int iLen = static_cast<int>(stSection.strSecName.size());
    return stSection.iMaxWidth > 0 && iLen < iWidth ? stSection.iMaxWidth : iLen;
}

// The widest claim in column j, or -1 when no row has a cell j.
int ColumnWidth(const CONTENT_DATA* pstContent, int j, int iWidth) {
    int iMax = -1;
    for (int r = 0; r < pstContent->iItemNum; ++r) {
        const CONTENT_ITEM& stItem = pstContent->pstItem[r];
        if (stItem.iSectionNum <= j || stItem.pstSection == nullptr)
            continue;
        int iClaim = CellClaim(stItem.pstSection[j], iWidth);
        if (iClaim > iMax)
            iMax = iClaim;
    }
    return iMax;
}

// Columns are accepted while they fit; the column that overflows the width
// is not counted, but its width stays in the sum.
int LayoutColumns(CONTENT_DRAW_INFO* pstInfo, int iWidth, int& iSum) {
    iSum = 0;
    int j = 0;
    for (; j < CONTENT_MAX_COLS; ++j) {
        int iColWidth = ColumnWidth(pstInfo->pstContent, j, iWidth);
        pstInfo->aiMaxColWidth[j] = iColWidth < 0 ? 0 : iColWidth;
        if (iColWidth < 0)
            break;
        iSum += iColWidth;
        if (iSum >= iWidth)
            break;
    }
    return j;
}

bool ValidRow(const CONTENT_DRAW_INFO* pstInfo, int iRow) {
    return pstInfo && pstInfo->pstContent && iRow < pstInfo->pstContent->iItemNum &&
           pstInfo->pstContent->pstItem[iRow].pstSection != nullptr;
}

// Bytes of sText from iFrom that form whole characters in the current
// locale, so that a clipped multi-byte text never shows half a character.
size_t CharStart(const std::string& sText, size_t iFrom) {
    mbstate_t stState;
    memset(&stState, 0, sizeof(stState));
    size_t i = 0;
    while (i < iFrom && i < sText.size()) {
        size_t n = mbrlen(sText.data() + i, sText.size() - i, &stState);
        if (n == 0 || n == static_cast<size_t>(-1) || n == static_cast<size_t>(-2))
            n = 1;
        i += n;
    }
    return i;
}

size_t CharEnd(const std::string& sText, size_t iFrom, size_t iMax) {
    mbstate_t stState;
    memset(&stState, 0, sizeof(stState));
    size_t i = iFrom;
    while (i < sText.size()) {
        size_t n = mbrlen(sText.data() + i, sText.size() - i, &stState);
        if (n == 0 || n == static_cast<size_t>(-1) || n == static_cast<size_t>(-2))
            n = 1;
        if (i + n - iFrom > iMax)
            break;
        i += n;
    }
    return i;
}

// Writes a cell's text on its own line, clipped to the page's rectangle:
// a cell placed left of the rectangle (a text wider than the window) loses
// its first bytes, one that runs past the right edge loses its last ones, and
// nothing wraps onto the next line or lands at a stale cursor position.
void DrawCell(const CONTENT_DRAW_INFO* pstInfo, int iRow, int iCol, const CONTENT_SECTION& stSec,
              int iAttr) {
    WINDOW* pWin = pstInfo->pWin;
    int iLine = ContentRowLine(pstInfo, iRow);
    int iLeft = pstInfo->iWindowStartX;
    int iRight = std::min(iLeft + pstInfo->iWindowWidth, getmaxx(pWin));
    if (iLine < 0 || iLine >= getmaxy(pWin) || iLeft >= iRight)
        return;
    std::string sText = CellText(stSec);
    long lX = ContentColX(pstInfo, iCol);
    size_t iFirst = 0;
    if (lX < iLeft) {
        iFirst = CharStart(sText, static_cast<size_t>(iLeft - lX));
        lX += static_cast<long>(iFirst);
    }
    if (iFirst >= sText.size() || lX >= iRight)
        return;
    size_t iEnd = CharEnd(sText, iFirst, static_cast<size_t>(iRight - lX));
    wmove(pWin, iLine, static_cast<int>(lX));
    wattron(pWin, iAttr);
    waddnstr(pWin, sText.data() + iFirst, static_cast<int>(iEnd - iFirst));
    wattroff(pWin, iAttr);
}

void ClearRect(const CONTENT_DRAW_INFO* pstInfo) {
    ClearWindowRegion(pstInfo->pWin, pstInfo->iWindowStartX, pstInfo->iWindowStartY,
                      pstInfo->iWindowWidth, pstInfo->iWindowHeight);
}

}  // namespace

int ContentRowLine(const CONTENT_DRAW_INFO* pstInfo, int iRow) {
    int iLine = pstInfo->iStartY + iRow * (pstInfo->iIntervalHeight + 1);
    return pstInfo->iWindowHeight > 0 ? iLine % pstInfo->iWindowHeight : iLine;
}

int ContentColX(const CONTENT_DRAW_INFO* pstInfo, int iCol) {
    int iX = pstInfo->iStartX;
    for (int j = 0; j < iCol && j < CONTENT_MAX_COLS; ++j) {
        iX += pstInfo->aiMaxColWidth[j] + pstInfo->iIntervalWidth;
    }
    return iX;
}

std::string CellText(const CONTENT_SECTION& stSection) {
    bool bMasked = stSection.enCtrlType == EN_INPUT_CONTROL &&
                   stSection.strSecName != pcStrNullInfo[iLanIdx] &&
                   stSection.vstrCtrlArgv.size() > 3 &&
                   atoi(stSection.vstrCtrlArgv[3].c_str()) == 1;
    return bMasked ? std::string(stSection.strSecName.size(), '*') : stSection.strSecName;
}

int GetContentDrawInfo(WINDOW* pShowWin, int iStartX, int iStartY, int iWidth, int iHeight,
                       int iIsHaveVerticalInterval, CONTENT_DATA* pstContentData,
                       CONTENT_DRAW_INFO* pstContentInfo) {
    if (pShowWin == nullptr || pstContentData == nullptr || pstContentInfo == nullptr)
        return -1;
    CONTENT_DRAW_INFO* p = pstContentInfo;
    memset(p, 0, sizeof(*p));
    p->pWin = pShowWin;
    p->pstContent = pstContentData;
    p->iMaxItemNum = pstContentData->iItemNum;
    p->iWindowStartX = iStartX;
    p->iWindowStartY = iStartY;
    p->iWindowWidth = iWidth;
    p->iWindowHeight = iHeight;
    int iSum = 0;
    p->iMaxColNum = LayoutColumns(p, iWidth, iSum);
    p->iIntervalWidth = (iWidth - iSum) / (p->iMaxColNum + 1);
    int n = p->iMaxItemNum;
    p->iIntervalHeight = iIsHaveVerticalInterval == 1 && n < iHeight ? (iHeight - n) / (n + 1) : 0;
    p->iStartX = p->iIntervalWidth + iStartX;
    p->iStartY = p->iIntervalHeight + iStartY;
    return 0;
}

int ShowContentPage(CONTENT_DRAW_INFO* pstContentInfo, int iPageIdx) {
    CONTENT_DRAW_INFO* p = pstContentInfo;
    if (p == nullptr || p->pstContent == nullptr)
        return -1;
    int iFirst = p->iWindowHeight * iPageIdx;
    if (p->iMaxItemNum <= iFirst)
        return -1;
    ClearRect(p);
    for (int r = iFirst; r < p->iMaxItemNum && r - iFirst < p->iWindowHeight; ++r) {
        ShowContentRow(p, r, SHOW_NORMAL_STR);
    }
    wrefresh(p->pWin);
    return 0;
}

int ShowContentRow(CONTENT_DRAW_INFO* pstContentInfo, int iRow, SHOW_FLAG enFlag) {
    CONTENT_DRAW_INFO* p = pstContentInfo;
    if (!ValidRow(p, iRow))
        return -1;
    const CONTENT_ITEM& stItem = p->pstContent->pstItem[iRow];
    bool bFocus = enFlag == SHOW_FOUCS_STR;
    int iRowAttr = 0;
    if (bFocus) {
        p->iFocusItem = iRow;
        p->iFocusCol = 0;
        RefreshPrompt(stItem.iPromptIndex);
        iRowAttr = COLOR_PAIR(7);
    }
    wattron(p->pWin, iRowAttr);
    // A fixed cell keeps the attribute of the editable cell before it.
    int iCellAttr = 0;
    bool bChosen = false;
    for (int j = 0; j < stItem.iSectionNum; ++j) {
        const CONTENT_SECTION& stSec = stItem.pstSection[j];
        if (IsEditable(stSec)) {
            if (bFocus && !bChosen) {
                p->iFocusCol = j;
                bChosen = true;
            }
            iCellAttr = bFocus && j == p->iFocusCol ? COLOR_PAIR(5) : A_UNDERLINE;
        }
        DrawCell(p, iRow, j, stSec, iCellAttr);
    }
    wattroff(p->pWin, iRowAttr);
    return 0;
}

int ShowContentCol(CONTENT_DRAW_INFO* pstContentInfo, int iRow, int iCol, SHOW_FLAG enFlag) {
    CONTENT_DRAW_INFO* p = pstContentInfo;
    if (!ValidRow(p, iRow) || iCol >= p->pstContent->pstItem[iRow].iSectionNum)
        return -1;
    const CONTENT_SECTION& stSec = p->pstContent->pstItem[iRow].pstSection[iCol];
    bool bFocus = enFlag == SHOW_FOUCS_STR;
    if (bFocus && !IsEditable(stSec))
        return -1;
    if (bFocus)
        p->iFocusCol = iCol;
    DrawCell(p, iRow, iCol, stSec, bFocus ? COLOR_PAIR(5) : 0);
    return 0;
}

void RedrawContent(CONTENT_DRAW_INFO* pstContentInfo) {
    CONTENT_DRAW_INFO* p = pstContentInfo;
    if (p == nullptr || p->pstContent == nullptr)
        return;
    ClearRect(p);
    if (p->iWindowHeight > 0)
        ShowContentPage(p, p->iFocusItem / p->iWindowHeight);
    ShowContentRow(p, p->iFocusItem, SHOW_FOUCS_STR);
}

int ShowContent(CONTENT_DRAW_INFO* pstContentInfo) {
    if (ShowContentPage(pstContentInfo, 0) != 0)
        return -1;
    if (ShowContentRow(pstContentInfo, 0, SHOW_FOUCS_STR) != 0)
        return -1;
    wrefresh(pstContentInfo->pWin);
    return 0;
}
