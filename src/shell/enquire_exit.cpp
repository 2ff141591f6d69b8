// The exit question's answer: yes ends the key loop, no gives the menu back.
#include <cstring>

#include "content/draw_types.h"
#include "link/result_codes.h"
#include "menu/menu_bar.h"
#include "shell/start_up.h"
#include "strings/com_str.h"

int EnqireExit(char* pcAnswer, void* arg) {
    (void)arg;
    if (pcAnswer && strcmp(pcAnswer, pcStrYes[iLanIdx]) == 0) {
        sg_Screen.iNvuiRunFlag = 0;
    } else if (pcAnswer && strcmp(pcAnswer, pcStrNo[iLanIdx]) == 0) {
        if (sg_Screen.ContentWin)
            ClearWindowRegion(sg_Screen.ContentWin, 0, 0, COLS, LINES - 6);
        RedrawMenuWindow();
    }
    return NEED_NOT_SHOW_INFO;
}
