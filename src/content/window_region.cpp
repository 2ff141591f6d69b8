// Blanking a rectangle of a window.
#include "content/draw_types.h"

void ClearWindowRegion(WINDOW* pWin, int iStartX, int iStartY, int iWidth, int iHeight) {
    for (int i = 0; i < iHeight; ++i) {
        wmove(pWin, iStartY + i, iStartX);
        for (int j = 0; j < iWidth; ++j)
            waddch(pWin, ' ');
    }
    wrefresh(pWin);
}
