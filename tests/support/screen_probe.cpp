// screen_probe: a small curses program that the screen-test harness's own
// tests run in its pseudo-terminal. It sets curses up the way the console
// does, draws known text at known places with each attribute and the
// console's seven colour pairs, reports the size curses sees, and shows the
// code of every key it reads.
//
//   screen_probe [--exit-code N] [--escdelay MS] [--gb2312]
//
// Screen (rows from 0):
//   0  "LINES=<n> COLS=<n> COLORS=<n>"
//   1  "Plain text at 1,4" from column 4
//   2  "REVERSE" at 0 (reverse), "BOLD" at 10 (bold), "UNDERLINE" at 20
//      (underline)
//   3-9  "PAIR <n>  " in colour pair n = row - 2, from column 0; row 6 also
//      "SEL" in pair 4 reversed at column 12
//   10 the two Chinese characters for "Chinese" then " OK" from column 2
//      (GB2312 bytes with --gb2312, else UTF-8)
//   11 a line-drawing box top: corner, five lines, corner, from column 0
//   LINES-2  "keys:" and the codes read so far (the latest eight)
//   LINES-1  "key #<count>: <code> <keyname>"
// Keys: 'h' hides the cursor, 's' shows it, 'm' moves it from 12,7 to
// 13,21, 'b' rings the bell, 'q' ends the program with the exit code (after
// endwin it prints "probe exit <code>").
#include <curses.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

struct ProbeOptions {
    int iExitCode = 0;
    int iEscDelay = 25;
    bool bGb2312 = false;
};

// Consecutive read errors after which the probe gives up (its terminal is
// gone).
constexpr int kMaxReadErrors = 100;
constexpr size_t kKeysShown = 8;

ProbeOptions ParseOptions(int argc, char** argv) {
    ProbeOptions o;
    for (int i = 1; i < argc; ++i) {
        std::string a = argv[i];
        if (a == "--exit-code" && i + 1 < argc)
            o.iExitCode = std::atoi(argv[++i]);
        else if (a == "--escdelay" && i + 1 < argc)
            o.iEscDelay = std::atoi(argv[++i]);
        else if (a == "--gb2312")
            o.bGb2312 = true;
    }
    return o;
}

void SetUpColors() {
    if (!has_colors())
        return;
    start_color();
    init_pair(1, COLOR_WHITE, COLOR_BLUE);
    init_pair(2, COLOR_BLACK, COLOR_WHITE);
    init_pair(3, COLOR_BLACK, COLOR_GREEN);
    init_pair(4, COLOR_BLACK, COLOR_YELLOW);
    init_pair(5, COLOR_WHITE, COLOR_BLUE);
    init_pair(6, COLOR_BLUE, COLOR_YELLOW);
    init_pair(7, COLOR_BLUE, COLOR_WHITE);
}

void DrawFixed(const ProbeOptions& o) {
    mvprintw(0, 0, "LINES=%d COLS=%d COLORS=%d", LINES, COLS, COLORS);
    mvaddstr(1, 4, "Plain text at 1,4");
    attron(A_REVERSE);
    mvaddstr(2, 0, "REVERSE");
    attroff(A_REVERSE);
    attron(A_BOLD);
    mvaddstr(2, 10, "BOLD");
    attroff(A_BOLD);
    attron(A_UNDERLINE);
    mvaddstr(2, 20, "UNDERLINE");
    attroff(A_UNDERLINE);
    for (int pair = 1; pair <= 7; ++pair) {
        attron(COLOR_PAIR(pair));
        mvprintw(2 + pair, 0, "PAIR %d    ", pair);
        attroff(COLOR_PAIR(pair));
    }
    attron(COLOR_PAIR(4) | A_REVERSE);
    mvaddstr(6, 12, "SEL");
    attroff(COLOR_PAIR(4) | A_REVERSE);
    mvaddstr(10, 2, o.bGb2312 ? "\xd6\xd0\xce\xc4 OK" : "\xe4\xb8\xad\xe6\x96\x87 OK");
    mvaddch(11, 0, ACS_ULCORNER);
    mvhline(11, 1, ACS_HLINE, 5);
    mvaddch(11, 6, ACS_URCORNER);
}

void ShowKey(int count, int key, const std::vector<int>& keys) {
    std::string list = "keys:";
    size_t first = keys.size() > kKeysShown ? keys.size() - kKeysShown : 0;
    for (size_t i = first; i < keys.size(); ++i)
        list += " " + std::to_string(keys[i]);
    mvaddstr(LINES - 2, 0, list.c_str());
    clrtoeol();
    const char* name = keyname(key);
    mvprintw(LINES - 1, 0, "key #%d: %d %s", count, key, name != nullptr ? name : "?");
    clrtoeol();
}

}  // namespace

int main(int argc, char** argv) {
    ProbeOptions o = ParseOptions(argc, argv);
    setlocale(LC_ALL, o.bGb2312 ? "zh_CN.GB2312" : "en_US.UTF-8");
    initscr();
    cbreak();
    noecho();
    keypad(stdscr, TRUE);
    set_escdelay(o.iEscDelay);
    SetUpColors();
    DrawFixed(o);

    int curRow = 12;
    int curCol = 7;
    move(curRow, curCol);
    refresh();

    std::vector<int> keys;
    int errors = 0;
    for (;;) {
        int key = getch();
        if (key == ERR) {
            if (++errors >= kMaxReadErrors)
                break;
            continue;
        }
        errors = 0;
        if (key == 'q')
            break;
        keys.push_back(key);
        if (key == 'h') {
            curs_set(0);
        } else if (key == 's') {
            curs_set(1);
        } else if (key == 'm') {
            curRow = 13;
            curCol = 21;
        } else if (key == 'b') {
            beep();
        }
        ShowKey(static_cast<int>(keys.size()), key, keys);
        move(curRow, curCol);
        refresh();
    }
    endwin();
    std::printf("probe exit %d\n", o.iExitCode);
    return o.iExitCode;
}
