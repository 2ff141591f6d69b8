// Curses set-up: the locale of the language, the terminal modes and the
// seven colour pairs.
#include <clocale>

#include "shell/start_up.h"
#include "shell/winch_signal.h"
#include "strings/com_str.h"

// A lone Esc acts at once instead of after curses' default second.
static const int ESC_DELAY_MS = 25;

static void InitColorPairs() {
    start_color();
    init_pair(1, COLOR_WHITE, COLOR_BLUE);
    init_pair(2, COLOR_BLACK, COLOR_WHITE);
    init_pair(3, COLOR_BLACK, COLOR_GREEN);
    init_pair(4, COLOR_BLACK, COLOR_YELLOW);
    init_pair(5, COLOR_WHITE, COLOR_BLUE);
    init_pair(6, COLOR_BLUE, COLOR_YELLOW);
    init_pair(7, COLOR_BLUE, COLOR_WHITE);
}

void InitCurses() {
    setlocale(LC_ALL, iLanIdx == LAN_CHINESE_GB2312 ? "zh_CN.GB2312" : "en_US.UTF-8");
    set_escdelay(ESC_DELAY_MS);
    initscr();
    // No typeahead check: curses would otherwise poll the keyboard and
    // flush its output line by line during every refresh, which made the
    // first screen a hundred small writes. A refresh now always completes
    // in one write; keys wait in the input queue as before.
    typeahead(-1);
    InitWinchSignal();
    cbreak();
    noecho();
    keypad(stdscr, TRUE);
    curs_set(0);
    if (has_colors())
        InitColorPairs();
    // Settle the standard screen now, so that the first key read from it
    // does not repaint it over the windows drawn after this.
    refresh();
    sg_Screen.CurWin = stdscr;
}
