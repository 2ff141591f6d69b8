// Laying a page out in a rectangle of a window and drawing it: column
// widths and spacing, row spreading, paging by modulo, and the normal and
// focused looks of rows and cells.
#ifndef NV_CONTENT_CONTENT_DRAW_H
#define NV_CONTENT_CONTENT_DRAW_H

#include <curses.h>

#include <ctime>
#include <string>

#include "content/content_data.h"
#include "content/draw_types.h"

enum { CONTENT_MAX_COLS = 20 };

typedef struct _ST_CONTENT_DRAW_INFO {
    int iMaxItemNum;
    int iMaxColNum;
    int aiMaxColWidth[CONTENT_MAX_COLS];
    int iStartX;
    int iStartY;
    int iIntervalWidth;
    int iIntervalHeight;
    int iFocusItem;
    int iFocusCol;
    int iWindowStartX;
    int iWindowStartY;
    int iWindowWidth;
    int iWindowHeight;
    time_t iRefreshTime;
    int iCursorInContentWinFlag;
    CONTENT_DATA* pstContent;
    WINDOW* pWin;
} CONTENT_DRAW_INFO;

int GetContentDrawInfo(WINDOW* pShowWin, int iStartX, int iStartY, int iWidth, int iHeight,
                       int iIsHaveVerticalInterval, CONTENT_DATA* pstContentData,
                       CONTENT_DRAW_INFO* pstContentInfo);
int ShowContent(CONTENT_DRAW_INFO* pstContentInfo);
int ShowContentPage(CONTENT_DRAW_INFO* pstContentInfo, int iPageIdx);
int ShowContentRow(CONTENT_DRAW_INFO* pstContentInfo, int iRow, SHOW_FLAG enFlag);
int ShowContentCol(CONTENT_DRAW_INFO* pstContentInfo, int iRow, int iCol, SHOW_FLAG enFlag);
void RedrawContent(CONTENT_DRAW_INFO* pstContentInfo);

// Where row r and cell j stand in the window.
int ContentRowLine(const CONTENT_DRAW_INFO* pstInfo, int iRow);
int ContentColX(const CONTENT_DRAW_INFO* pstInfo, int iCol);
// The text a cell shows: asterisks for a masked input cell.
std::string CellText(const CONTENT_SECTION& stSection);

#endif
