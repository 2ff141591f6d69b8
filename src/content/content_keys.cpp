// Keys of the content page. Esc leaves the page and gives the menu back.
#include "content/content_view.h"
#include "menu/menu_bar.h"
#include "shell/screen.h"
#include "shell/screen_frame.h"

void ContentKeyFunc(int iKey) {
    ClearInformation();
    if (iKey == 27) {
        ClearWindowRegion(sg_Screen.ContentWin, 0, 0, COLS, LINES - 6);
        RedrawMenuWindow();
    }
}
