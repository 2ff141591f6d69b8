// The screen record, the version string and the focus hand-over.
#include "shell/screen.h"

SCREEN_ARGUMENT sg_Screen;
std::string str_NvuiVersion;

void RegistKeyFunc(pfKeyFunc fn, WINDOW* win) {
    sg_Screen.pfnCurKeyFunc = fn;
    sg_Screen.CurWin = win;
}
