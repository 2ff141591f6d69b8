// Screen tests: a real program running in a pseudo-terminal of a fixed size,
// its output decoded into a screen of cells by libvterm (text, colours,
// attributes, cursor) and kept as raw bytes too, keys encoded the way a
// terminal encodes them, and waits on conditions with deadlines.
//
// Typical use:
//   nvtest::ScreenSession s;
//   nvtest::ScreenOptions o;
//   o.iRows = 24; o.iCols = 80;
//   o.vsEnv = {"NVUI_SOCKET=" + agent.SocketPath()};
//   ASSERT_TRUE(s.Start({NV_BIN_DIR "/nvui"}, o, &err)) << err;
//   ASSERT_TRUE(s.WaitForText(21, "[up/down arrow]Select item")) << s.Dump();
//   s.SendKey(nvtest::Key::Enter);
//   ASSERT_TRUE(s.WaitForTextAt(4, 23, "Net Interface")) << s.DumpColors();
//   EXPECT_TRUE(s.Cell(4, 23).bReverse && nvtest::HasPair(s.Cell(4, 23), 4));
//   EXPECT_TRUE(s.SpanHasPair(0, 0, s.Cols(), 1));
//
// Rows and columns count from 0 at the top left. Colours are palette numbers
// as curses names them (COLOR_BLACK 0 ... COLOR_WHITE 7); kColorDefault is
// the terminal's own default colour. A reversed cell keeps the colours its
// pair asked for and has bReverse set.
#ifndef NV_TESTS_SUPPORT_SCREEN_SESSION_H
#define NV_TESTS_SUPPORT_SCREEN_SESSION_H

#include <sys/types.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

struct VTerm;
struct VTermScreen;

namespace nvtest {

class Gb2312Stream;

// How long a wait lasts by default; only a failing test waits that long.
constexpr int kDefaultWaitMs = 10000;
// Output quiet time after which WaitSettled deems the screen settled.
constexpr int kDefaultQuietMs = 80;

// Colour numbers of the eight basic colours, equal to curses' COLOR_*.
enum ScreenColor {
    kColorDefault = -1,  // SGR 39 / 49: the terminal's default colour
    kColorRgb = -2,      // a direct RGB colour (see ulFgRgb / ulBgRgb)
    kBlack = 0,
    kRed = 1,
    kGreen = 2,
    kYellow = 3,
    kBlue = 4,
    kMagenta = 5,
    kCyan = 6,
    kWhite = 7,
};

// How the program's output bytes are read: UTF-8, or GB2312 (converted to
// UTF-8 before decoding, so each Chinese character fills two cells just as
// curses counted it). Raw bytes are kept unchanged in both cases.
enum class ScreenCharset { Utf8, Gb2312 };

struct ScreenOptions {
    int iRows = 24;
    int iCols = 80;
    // Terminal type given to the program in TERM.
    std::string sTerm = "xterm-256color";
    // "NAME=value" entries added last. The test's own environment is passed
    // on without TERM, LINES, COLUMNS, LANG, LANGUAGE, LC_*, TERMINFO,
    // TERMCAP, ESCDELAY and NCURSES_*, so that a run does not depend on the
    // terminal the tests were started from; set those here when needed.
    std::vector<std::string> vsEnv;
    ScreenCharset eCharset = ScreenCharset::Utf8;
    // Honour the alternate screen as a real terminal does: what curses drew
    // disappears at endwin and text printed afterwards is on the normal
    // screen.
    bool bAltScreen = true;
    // Working directory of the program; empty keeps the test's own.
    std::string sWorkDir;
};

// Keys as a terminal sends them.
enum class Key {
    Up,
    Down,
    Left,
    Right,
    Enter,
    Esc,
    Backspace,
    Tab,
    PageUp,
    PageDown,
    Home,
    End,
    Insert,
    Delete,
    F1,
    F2,
    F3,
    F4,
    F5,
    F6,
    F7,
    F8,
    F9,
    F10,
    F11,
    F12,
};

// Key::F1 ... Key::F12 by number (1 to 12).
Key FunctionKey(int n);
// A readable name ("Up", "F9") for messages.
const char* KeyName(Key key);

struct ScreenCell {
    std::string sCh = " ";  // UTF-8; " " when blank; "" for the right half of a wide character
    int iWidth = 1;         // 2 for a wide character, 0 for its right half
    int iFg = kColorDefault;
    int iBg = kColorDefault;
    uint32_t ulFgRgb = 0;  // 0xRRGGBB the colour shows as in libvterm's palette
    uint32_t ulBgRgb = 0;
    bool bReverse = false;
    bool bBold = false;
    bool bUnderline = false;
    bool bItalic = false;
    bool bBlink = false;
};

struct ScreenPos {
    int iRow = -1;
    int iCol = -1;
    bool Found() const { return iRow >= 0; }
};

struct CursorState {
    int iRow = 0;
    int iCol = 0;
    bool bVisible = true;
};

// The console's colour pairs 1 to 7 (1 white on blue, 2 black on white,
// 3 black on green, 4 black on yellow, 5 white on blue, 6 blue on yellow,
// 7 blue on white).
struct ColorPair {
    int iFg = kColorDefault;
    int iBg = kColorDefault;
};
ColorPair ConsolePair(int pair);

// True when the cell's colours are fg on bg (curses COLOR_* numbers).
bool HasColors(const ScreenCell& cell, int fg, int bg);
// True when the cell's colours are those of console pair 1 to 7. Pairs 1 and
// 5 have the same colours and cannot be told apart on the screen.
bool HasPair(const ScreenCell& cell, int pair);
// One character naming a cell's colours in DumpColors: '1'..'7' for a console
// pair ('1' also stands for 5), 'a'..'g' for the same reversed, '0' for white
// on black (curses' pair 0, what a curses program without default colours
// paints everywhere else), '#' for that reversed, '.' for the terminal's
// default colours, '~' for those reversed, '?' for anything else.
char PairCode(const ScreenCell& cell);

class ScreenSession {
public:
    ScreenSession();
    // Kills the program (and its process group) if it still runs, reaps it,
    // stops the reader thread.
    ~ScreenSession();
    ScreenSession(const ScreenSession&) = delete;
    ScreenSession& operator=(const ScreenSession&) = delete;

    // Starts argv[0] (a path) with argv in a new pseudo-terminal of the
    // given size. False with a reason in err when it cannot.
    bool Start(const std::vector<std::string>& argv, const ScreenOptions& options = ScreenOptions(),
               std::string* err = nullptr);

    pid_t Pid() const { return m_pid; }
    // True until the program has been reaped (by WaitExit or Kill).
    bool Running() const { return m_pid > 0; }
    int Rows() const { return m_opts.iRows; }
    int Cols() const { return m_opts.iCols; }

    // ---- Input ----
    // A key, encoded by the terminal in its current modes (so arrows are
    // ESC O A once curses has switched keypad mode on). Esc is a lone 0x1b:
    // curses reports it after its escape delay.
    void SendKey(Key key, int times = 1);
    // Bytes exactly as given (UTF-8 or GB2312 text alike).
    void SendText(const std::string& bytes);
    // A character with Ctrl held ('c' gives 0x03).
    void SendCtrl(char c);

    // Gives the terminal a new size (TIOCSWINSZ, so the program gets
    // SIGWINCH) and resizes the decoded screen with it.
    void Resize(int rows, int cols);

    // ---- Waiting (each returns false at the deadline) ----
    // Row row contains text.
    bool WaitForText(int row, const std::string& text, int timeoutMs = kDefaultWaitMs);
    // text starts exactly at row, col.
    bool WaitForTextAt(int row, int col, const std::string& text, int timeoutMs = kDefaultWaitMs);
    // text is somewhere on the screen.
    bool WaitForTextAnywhere(const std::string& text, int timeoutMs = kDefaultWaitMs);
    // text is nowhere on the screen.
    bool WaitForTextGone(const std::string& text, int timeoutMs = kDefaultWaitMs);
    // Any condition (it may look at the screen, files, the agent...). It is
    // checked after every piece of output and at least every 20 ms.
    bool WaitUntil(const std::function<bool()>& predicate, int timeoutMs = kDefaultWaitMs);
    // No output arrived for quietMs (counted from the latest output or key,
    // whichever is later), or the program closed the terminal.
    bool WaitSettled(int quietMs = kDefaultQuietMs, int timeoutMs = kDefaultWaitMs);
    // Waits for the program to end, reaps it and reads what it wrote up to
    // the terminal's close. Returns the exit code (128 + signal when killed),
    // or -1 when it still runs at the deadline. Once reaped, returns the same
    // code again.
    int WaitExit(int timeoutMs = kDefaultWaitMs);
    // SIGKILL to the program's process group, then reaps it.
    void Kill();

    // ---- The decoded screen ----
    // Row r as UTF-8; trailing blanks removed unless trimRight is false.
    std::string Row(int r, bool trimRight = true) const;
    // len columns from r, c as UTF-8 (the right half of a wide character adds
    // nothing; blanks are spaces).
    std::string Text(int r, int c, int len) const;
    ScreenCell Cell(int r, int c) const;
    CursorState Cursor() const;
    // First place (top to bottom, left to right) where text starts.
    ScreenPos FindText(const std::string& text) const;
    bool ScreenContains(const std::string& text) const { return FindText(text).Found(); }
    // Every cell of len columns from r, c has colours fg on bg.
    bool SpanHasColors(int r, int c, int len, int fg, int bg) const;
    // Every cell of len columns from r, c has console pair pair.
    bool SpanHasPair(int r, int c, int len, int pair) const;
    // The whole screen as text with a column ruler and the cursor, for
    // failure messages.
    std::string Dump() const;
    // The same with a line of PairCode characters under every row.
    std::string DumpColors() const;
    // Whether the alternate screen is shown now.
    bool AltScreen() const;
    // How many times the program rang the bell.
    int Bells() const;

    // ---- Raw output ----
    // Every byte the program wrote since it started.
    std::string RawOutput() const;
    // Remembers the present end of the raw output; the *SinceMark queries and
    // WaitForRaw look only at what comes after. Returns that offset.
    size_t MarkRaw();
    std::string RawSinceMark() const;
    bool RawContains(const std::string& bytes) const;
    // Offset of bytes in the raw output at or after from; npos when absent.
    size_t FindRaw(const std::string& bytes, size_t from = 0) const;
    // bytes appear in the raw output after the mark.
    bool WaitForRaw(const std::string& bytes, int timeoutMs = kDefaultWaitMs);

private:
    using Clock = std::chrono::steady_clock;

    // libvterm's callbacks, defined with the session.
    friend struct ScreenCallbacks;

    void ReaderLoop();
    void Feed(const char* bytes, size_t len);
    void FlushInputLocked();
    void WakeReader();
    void StopReader();
    bool WaitScreen(const std::function<bool()>& predicate, int timeoutMs);
    ScreenCell CellLocked(int r, int c) const;
    std::string TextLocked(int r, int c, int len) const;
    std::string DumpLocked(bool colors) const;

    ScreenOptions m_opts;
    pid_t m_pid = -1;
    int m_exitCode = -1;
    int m_master = -1;
    int m_wake = -1;
    std::thread m_reader;

    // Everything below is guarded by m_mutex.
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    VTerm* m_vt = nullptr;
    VTermScreen* m_screen = nullptr;
    std::unique_ptr<Gb2312Stream> m_gb;
    std::string m_raw;
    size_t m_rawMark = 0;
    std::string m_toChild;
    uint64_t m_generation = 0;
    Clock::time_point m_lastActivity;
    bool m_eof = false;
    bool m_stop = false;
    bool m_cursorVisible = true;
    bool m_altScreen = false;
    int m_bells = 0;
};

}  // namespace nvtest

#endif
