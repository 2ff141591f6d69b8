// Drawing types shared by the menu, the content view and the control bars:
// how an item is drawn, the rectangle handed to a control bar, and blanking a
// region of a window.
#ifndef NV_CONTENT_DRAW_TYPES_H
#define NV_CONTENT_DRAW_TYPES_H

#include <curses.h>

typedef enum { SHOW_NORMAL_STR = 0, SHOW_FOUCS_STR = 1, CLEAR_STR = 2 } SHOW_FLAG;

typedef struct _ST_DRAW_PARAMETER {
    int iStartX;
    int iStartY;
    int iWidth;
    int iHeight;
} DRAW_PARAMETER;

// Writes iWidth blanks on each of iHeight lines from (iStartY, iStartX), then
// refreshes the window.
void ClearWindowRegion(WINDOW* pWin, int iStartX, int iStartY, int iWidth, int iHeight);

#endif
