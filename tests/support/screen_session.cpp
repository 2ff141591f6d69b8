// The screen-test session: the program in a pseudo-terminal made by forkpty,
// a reader thread that feeds its output to libvterm and wakes waiters, and
// keys encoded by libvterm's keyboard layer. The reader thread is the only
// reader of the terminal; writes to it are non-blocking, and what the
// terminal does not take at once is written by the reader when it can.
#include "screen_session.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>
#include <vterm.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sstream>

#include "child_process.h"
#include "screen_charset.h"

extern char** environ;

namespace nvtest {

namespace {

// How often WaitUntil looks at a condition that may change without output.
constexpr int kConditionPollMs = 20;
constexpr uint32_t kWideRightHalf = 0xFFFFFFFFu;

// Environment entries not handed on to the program unless given again.
bool IsTerminalVariable(const std::string& entry) {
    std::string name = entry.substr(0, entry.find('='));
    static const char* const kExact[] = {"TERM",     "LINES",   "COLUMNS",  "LANG",
                                         "LANGUAGE", "TERMCAP", "TERMINFO", "ESCDELAY"};
    for (const char* n : kExact) {
        if (name == n)
            return true;
    }
    return name.compare(0, 3, "LC_") == 0 || name.compare(0, 8, "NCURSES_") == 0;
}

std::string NameOf(const std::string& entry) {
    return entry.substr(0, entry.find('=') + 1);
}

std::vector<std::string> SessionEnvironment(const ScreenOptions& o) {
    std::vector<std::string> extra = {"TERM=" + o.sTerm};
    for (const std::string& e : o.vsEnv) {
        std::string name = NameOf(e);
        extra.erase(std::remove_if(extra.begin(), extra.end(),
                                   [&](const std::string& x) { return NameOf(x) == name; }),
                    extra.end());
        extra.push_back(e);
    }
    std::vector<std::string> env;
    for (char** e = environ; *e != nullptr; ++e) {
        std::string entry(*e);
        if (IsTerminalVariable(entry))
            continue;
        bool replaced = std::any_of(extra.begin(), extra.end(), [&](const std::string& x) {
            return NameOf(x) == NameOf(entry);
        });
        if (!replaced)
            env.push_back(entry);
    }
    env.insert(env.end(), extra.begin(), extra.end());
    return env;
}

std::vector<char*> CStrings(std::vector<std::string>& v) {
    std::vector<char*> out;
    for (std::string& s : v)
        out.push_back(&s[0]);
    out.push_back(nullptr);
    return out;
}

// Runs in the child between fork and exec: only async-signal-safe calls.
[[noreturn]] void ExecInTerminal(char* const* argv, char* const* envp, const char* dir) {
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    const int kSignals[] = {SIGPIPE, SIGINT, SIGQUIT, SIGTERM, SIGHUP, SIGCHLD, SIGTSTP};
    for (int sig : kSignals)
        signal(sig, SIG_DFL);
    if (dir != nullptr && chdir(dir) != 0)
        _exit(126);
    execve(argv[0], argv, envp);
    _exit(127);
}

VTermKey ToVTermKey(Key key) {
    switch (key) {
        case Key::Up:
            return VTERM_KEY_UP;
        case Key::Down:
            return VTERM_KEY_DOWN;
        case Key::Left:
            return VTERM_KEY_LEFT;
        case Key::Right:
            return VTERM_KEY_RIGHT;
        case Key::Enter:
            return VTERM_KEY_ENTER;
        case Key::Esc:
            return VTERM_KEY_ESCAPE;
        case Key::Backspace:
            return VTERM_KEY_BACKSPACE;
        case Key::Tab:
            return VTERM_KEY_TAB;
        case Key::PageUp:
            return VTERM_KEY_PAGEUP;
        case Key::PageDown:
            return VTERM_KEY_PAGEDOWN;
        case Key::Home:
            return VTERM_KEY_HOME;
        case Key::End:
            return VTERM_KEY_END;
        case Key::Insert:
            return VTERM_KEY_INS;
        case Key::Delete:
            return VTERM_KEY_DEL;
        default:
            break;
    }
    int n = static_cast<int>(key) - static_cast<int>(Key::F1) + 1;
    return static_cast<VTermKey>(VTERM_KEY_FUNCTION(n));
}

uint32_t RgbOf(const VTermScreen* screen, VTermColor c) {
    vterm_screen_convert_color_to_rgb(screen, &c);
    return (static_cast<uint32_t>(c.rgb.red) << 16) | (static_cast<uint32_t>(c.rgb.green) << 8) |
           c.rgb.blue;
}

int IndexOf(const VTermColor& c, bool isDefault) {
    if (isDefault)
        return kColorDefault;
    if (VTERM_COLOR_IS_INDEXED(&c))
        return c.indexed.idx;
    return kColorRgb;
}

int RemainingMs(std::chrono::steady_clock::time_point deadline) {
    auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                    deadline - std::chrono::steady_clock::now())
                    .count();
    return left > 0 ? static_cast<int>(left) : 0;
}

}  // namespace

// libvterm's callbacks; user is the session, whose mutex the caller holds.
struct ScreenCallbacks {
    static int Damage(VTermRect, void* user) {
        ++static_cast<ScreenSession*>(user)->m_generation;
        return 1;
    }
    static int MoveCursor(VTermPos, VTermPos, int, void* user) {
        ++static_cast<ScreenSession*>(user)->m_generation;
        return 1;
    }
    static int SetTermProp(VTermProp prop, VTermValue* val, void* user) {
        ScreenSession* s = static_cast<ScreenSession*>(user);
        if (prop == VTERM_PROP_CURSORVISIBLE)
            s->m_cursorVisible = val->boolean != 0;
        else if (prop == VTERM_PROP_ALTSCREEN)
            s->m_altScreen = val->boolean != 0;
        ++s->m_generation;
        return 1;
    }
    static int Bell(void* user) {
        ++static_cast<ScreenSession*>(user)->m_bells;
        return 1;
    }
    static void Output(const char* bytes, size_t len, void* user) {
        static_cast<ScreenSession*>(user)->m_toChild.append(bytes, len);
    }
};

Key FunctionKey(int n) {
    return static_cast<Key>(static_cast<int>(Key::F1) + std::min(std::max(n, 1), 12) - 1);
}

const char* KeyName(Key key) {
    static const char* const kNames[] = {
        "Up",       "Down", "Left", "Right",  "Enter",  "Esc", "Backspace", "Tab", "PageUp",
        "PageDown", "Home", "End",  "Insert", "Delete", "F1",  "F2",        "F3",  "F4",
        "F5",       "F6",   "F7",   "F8",     "F9",     "F10", "F11",       "F12"};
    return kNames[static_cast<int>(key)];
}

ColorPair ConsolePair(int pair) {
    static const ColorPair kPairs[] = {{kWhite, kBlue},   {kBlack, kWhite}, {kBlack, kGreen},
                                       {kBlack, kYellow}, {kWhite, kBlue},  {kBlue, kYellow},
                                       {kBlue, kWhite}};
    if (pair < 1 || pair > 7)
        return ColorPair();
    return kPairs[pair - 1];
}

bool HasColors(const ScreenCell& cell, int fg, int bg) {
    return cell.iFg == fg && cell.iBg == bg;
}

bool HasPair(const ScreenCell& cell, int pair) {
    if (pair < 1 || pair > 7)
        return false;
    ColorPair p = ConsolePair(pair);
    return HasColors(cell, p.iFg, p.iBg);
}

char PairCode(const ScreenCell& cell) {
    if (cell.iFg == kColorDefault && cell.iBg == kColorDefault)
        return cell.bReverse ? '~' : '.';
    if (HasColors(cell, kWhite, kBlack))
        return cell.bReverse ? '#' : '0';
    for (int p = 1; p <= 7; ++p) {
        if (HasPair(cell, p))
            return static_cast<char>((cell.bReverse ? 'a' : '1') + p - 1);
    }
    return '?';
}

ScreenSession::ScreenSession() = default;

ScreenSession::~ScreenSession() {
    Kill();
    StopReader();
    if (m_master >= 0)
        close(m_master);
    if (m_wake >= 0)
        close(m_wake);
    if (m_vt != nullptr)
        vterm_free(m_vt);
}

bool ScreenSession::Start(const std::vector<std::string>& argv, const ScreenOptions& options,
                          std::string* err) {
    auto fail = [&](const std::string& why) {
        if (err != nullptr)
            *err = why;
        return false;
    };
    if (m_vt != nullptr)
        return fail("the session has already been started");
    if (argv.empty() || options.iRows < 1 || options.iCols < 1)
        return fail("no program or no size");
    if (access(argv[0].c_str(), X_OK) != 0)
        return fail("cannot execute " + argv[0]);
    m_opts = options;

    m_vt = vterm_new(m_opts.iRows, m_opts.iCols);
    vterm_set_utf8(m_vt, 1);
    vterm_output_set_callback(m_vt, &ScreenCallbacks::Output, this);
    m_screen = vterm_obtain_screen(m_vt);
    static const VTermScreenCallbacks kCallbacks = {&ScreenCallbacks::Damage,
                                                    nullptr,
                                                    &ScreenCallbacks::MoveCursor,
                                                    &ScreenCallbacks::SetTermProp,
                                                    &ScreenCallbacks::Bell,
                                                    nullptr,
                                                    nullptr,
                                                    nullptr};
    vterm_screen_set_callbacks(m_screen, &kCallbacks, this);
    vterm_screen_enable_altscreen(m_screen, m_opts.bAltScreen ? 1 : 0);
    vterm_screen_set_damage_merge(m_screen, VTERM_DAMAGE_SCROLL);
    vterm_screen_reset(m_screen, 1);
    if (m_opts.eCharset == ScreenCharset::Gb2312)
        m_gb.reset(new Gb2312Stream());

    m_wake = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (m_wake < 0)
        return fail(std::string("eventfd: ") + strerror(errno));

    std::vector<std::string> args = argv;
    std::vector<std::string> env = SessionEnvironment(m_opts);
    std::vector<char*> cargs = CStrings(args);
    std::vector<char*> cenv = CStrings(env);
    const char* dir = m_opts.sWorkDir.empty() ? nullptr : m_opts.sWorkDir.c_str();
    winsize ws{};
    ws.ws_row = static_cast<unsigned short>(m_opts.iRows);
    ws.ws_col = static_cast<unsigned short>(m_opts.iCols);
    int master = -1;
    pid_t pid = forkpty(&master, nullptr, nullptr, &ws);
    if (pid < 0)
        return fail(std::string("forkpty: ") + strerror(errno));
    if (pid == 0)
        ExecInTerminal(cargs.data(), cenv.data(), dir);
    m_pid = pid;
    m_master = master;
    fcntl(m_master, F_SETFD, FD_CLOEXEC);
    fcntl(m_master, F_SETFL, fcntl(m_master, F_GETFL) | O_NONBLOCK);
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_lastActivity = Clock::now();
    }
    m_reader = std::thread(&ScreenSession::ReaderLoop, this);
    return true;
}

void ScreenSession::ReaderLoop() {
    char buf[8192];
    for (;;) {
        pollfd fds[2];
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            if (m_stop)
                return;
            fds[0].fd = m_eof ? -1 : m_master;
            fds[0].events = static_cast<short>(POLLIN | (m_toChild.empty() ? 0 : POLLOUT));
        }
        fds[0].revents = 0;
        fds[1] = {m_wake, POLLIN, 0};
        if (poll(fds, 2, -1) < 0) {
            if (errno == EINTR)
                continue;
            return;
        }
        if (fds[1].revents != 0) {
            uint64_t n = 0;
            ssize_t rc = read(m_wake, &n, sizeof n);
            (void)rc;
        }
        if ((fds[0].revents & POLLOUT) != 0) {
            std::lock_guard<std::mutex> lock(m_mutex);
            FlushInputLocked();
        }
        if ((fds[0].revents & (POLLIN | POLLHUP | POLLERR)) != 0) {
            ssize_t n = read(m_master, buf, sizeof buf);
            if (n > 0) {
                Feed(buf, static_cast<size_t>(n));
            } else if (n == 0 || (errno != EAGAIN && errno != EINTR)) {
                // Every holder of the terminal's other end has closed it.
                std::lock_guard<std::mutex> lock(m_mutex);
                m_eof = true;
                m_toChild.clear();
                ++m_generation;
                m_changed.notify_all();
            }
        }
    }
}

void ScreenSession::Feed(const char* bytes, size_t len) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_raw.append(bytes, len);
    if (m_gb) {
        std::string utf8 = m_gb->Feed(bytes, len);
        vterm_input_write(m_vt, utf8.data(), utf8.size());
    } else {
        vterm_input_write(m_vt, bytes, len);
    }
    vterm_screen_flush_damage(m_screen);
    ++m_generation;
    m_lastActivity = Clock::now();
    // Answers to the program's queries, if it asked any.
    FlushInputLocked();
    m_changed.notify_all();
}

void ScreenSession::FlushInputLocked() {
    while (!m_toChild.empty()) {
        if (m_eof || m_master < 0) {
            m_toChild.clear();
            return;
        }
        ssize_t n = write(m_master, m_toChild.data(), m_toChild.size());
        if (n > 0) {
            m_toChild.erase(0, static_cast<size_t>(n));
        } else if (n < 0 && errno == EINTR) {
            continue;
        } else if (n < 0 && errno == EAGAIN) {
            // The reader writes the rest when the terminal takes more.
            WakeReader();
            return;
        } else {
            m_toChild.clear();
            return;
        }
    }
}

void ScreenSession::WakeReader() {
    uint64_t one = 1;
    ssize_t rc = write(m_wake, &one, sizeof one);
    (void)rc;
}

void ScreenSession::StopReader() {
    if (!m_reader.joinable())
        return;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_stop = true;
    }
    WakeReader();
    m_reader.join();
}

void ScreenSession::SendKey(Key key, int times) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_vt == nullptr)
        return;
    for (int i = 0; i < times; ++i)
        vterm_keyboard_key(m_vt, ToVTermKey(key), VTERM_MOD_NONE);
    m_lastActivity = Clock::now();
    FlushInputLocked();
}

void ScreenSession::SendText(const std::string& bytes) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_vt == nullptr)
        return;
    m_toChild += bytes;
    m_lastActivity = Clock::now();
    FlushInputLocked();
}

void ScreenSession::Resize(int rows, int cols) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_vt == nullptr || m_master < 0)
        return;
    // The emulator first, so that output drawn for the new size lands on a
    // screen of that size; then the terminal, whose kernel sends SIGWINCH
    // to the program's foreground process group.
    vterm_set_size(m_vt, rows, cols);
    m_opts.iRows = rows;
    m_opts.iCols = cols;
    winsize ws{};
    ws.ws_row = static_cast<unsigned short>(rows);
    ws.ws_col = static_cast<unsigned short>(cols);
    ioctl(m_master, TIOCSWINSZ, &ws);
    m_lastActivity = Clock::now();
}

void ScreenSession::SendCtrl(char c) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_vt == nullptr)
        return;
    vterm_keyboard_unichar(m_vt, static_cast<unsigned char>(c), VTERM_MOD_CTRL);
    m_lastActivity = Clock::now();
    FlushInputLocked();
}

bool ScreenSession::WaitScreen(const std::function<bool()>& predicate, int timeoutMs) {
    Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    for (;;) {
        uint64_t seen = 0;
        bool eof = false;
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            seen = m_generation;
            eof = m_eof || m_vt == nullptr;
        }
        if (predicate())
            return true;
        // Nothing more can change the screen.
        if (eof)
            return false;
        std::unique_lock<std::mutex> lock(m_mutex);
        if (!m_changed.wait_until(lock, deadline, [&] { return m_generation != seen || m_eof; })) {
            lock.unlock();
            return predicate();
        }
    }
}

bool ScreenSession::WaitForText(int row, const std::string& text, int timeoutMs) {
    return WaitScreen([&] { return Row(row, false).find(text) != std::string::npos; }, timeoutMs);
}

bool ScreenSession::WaitForTextAt(int row, int col, const std::string& text, int timeoutMs) {
    return WaitScreen(
        [&] { return Text(row, col, Cols() - col).compare(0, text.size(), text) == 0; }, timeoutMs);
}

bool ScreenSession::WaitForTextAnywhere(const std::string& text, int timeoutMs) {
    return WaitScreen([&] { return FindText(text).Found(); }, timeoutMs);
}

bool ScreenSession::WaitForTextGone(const std::string& text, int timeoutMs) {
    return WaitScreen([&] { return !FindText(text).Found(); }, timeoutMs);
}

bool ScreenSession::WaitUntil(const std::function<bool()>& predicate, int timeoutMs) {
    Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    for (;;) {
        uint64_t seen = 0;
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            seen = m_generation;
        }
        if (predicate())
            return true;
        Clock::time_point now = Clock::now();
        if (now >= deadline)
            return false;
        Clock::time_point next =
            std::min(deadline, now + std::chrono::milliseconds(kConditionPollMs));
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait_until(lock, next, [&] { return m_generation != seen; });
    }
}

bool ScreenSession::WaitSettled(int quietMs, int timeoutMs) {
    Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    std::unique_lock<std::mutex> lock(m_mutex);
    for (;;) {
        if (m_eof || m_vt == nullptr)
            return true;
        Clock::time_point quietAt = m_lastActivity + std::chrono::milliseconds(quietMs);
        Clock::time_point now = Clock::now();
        if (now >= quietAt)
            return true;
        if (now >= deadline)
            return false;
        m_changed.wait_until(lock, std::min(quietAt, deadline));
    }
}

int ScreenSession::WaitExit(int timeoutMs) {
    if (m_pid <= 0)
        return m_exitCode;
    Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    int status = -1;
    if (!nvtest::WaitExit(m_pid, timeoutMs, status))
        return -1;
    m_pid = -1;
    m_exitCode = ExitCodeOf(status);
    // The program is gone; collect what it wrote before it went.
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait_for(lock, std::chrono::milliseconds(RemainingMs(deadline)),
                       [&] { return m_eof; });
    return m_exitCode;
}

void ScreenSession::Kill() {
    if (m_pid <= 0)
        return;
    // The program leads its own session and process group (forkpty made
    // it so): take its children with it.
    kill(-m_pid, SIGKILL);
    m_exitCode = ExitCodeOf(KillAndReap(m_pid));
    m_pid = -1;
}

ScreenCell ScreenSession::CellLocked(int r, int c) const {
    ScreenCell out;
    if (m_screen == nullptr || r < 0 || c < 0 || r >= m_opts.iRows || c >= m_opts.iCols)
        return out;
    VTermScreenCell cell;
    VTermPos pos;
    pos.row = r;
    pos.col = c;
    vterm_screen_get_cell(m_screen, pos, &cell);
    if (cell.chars[0] == kWideRightHalf) {
        out.sCh.clear();
        out.iWidth = 0;
    } else {
        out.iWidth = cell.width;
        if (cell.chars[0] != 0) {
            out.sCh.clear();
            for (int i = 0; i < VTERM_MAX_CHARS_PER_CELL && cell.chars[i] != 0; ++i)
                AppendUtf8(out.sCh, cell.chars[i]);
        }
    }
    out.iFg = IndexOf(cell.fg, VTERM_COLOR_IS_DEFAULT_FG(&cell.fg));
    out.iBg = IndexOf(cell.bg, VTERM_COLOR_IS_DEFAULT_BG(&cell.bg));
    out.ulFgRgb = RgbOf(m_screen, cell.fg);
    out.ulBgRgb = RgbOf(m_screen, cell.bg);
    out.bReverse = cell.attrs.reverse != 0;
    out.bBold = cell.attrs.bold != 0;
    out.bUnderline = cell.attrs.underline != 0;
    out.bItalic = cell.attrs.italic != 0;
    out.bBlink = cell.attrs.blink != 0;
    return out;
}

std::string ScreenSession::TextLocked(int r, int c, int len) const {
    std::string out;
    if (r < 0 || r >= m_opts.iRows)
        return out;
    int end = std::min(c + len, m_opts.iCols);
    for (int col = std::max(c, 0); col < end; ++col)
        out += CellLocked(r, col).sCh;
    return out;
}

ScreenCell ScreenSession::Cell(int r, int c) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return CellLocked(r, c);
}

std::string ScreenSession::Text(int r, int c, int len) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return TextLocked(r, c, len);
}

std::string ScreenSession::Row(int r, bool trimRight) const {
    std::string row = Text(r, 0, m_opts.iCols);
    if (trimRight) {
        size_t last = row.find_last_not_of(' ');
        row.erase(last == std::string::npos ? 0 : last + 1);
    }
    return row;
}

CursorState ScreenSession::Cursor() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    CursorState out;
    if (m_vt == nullptr)
        return out;
    VTermPos pos;
    vterm_state_get_cursorpos(vterm_obtain_state(m_vt), &pos);
    out.iRow = pos.row;
    out.iCol = pos.col;
    out.bVisible = m_cursorVisible;
    return out;
}

ScreenPos ScreenSession::FindText(const std::string& text) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    ScreenPos found;
    if (text.empty())
        return found;
    for (int r = 0; r < m_opts.iRows; ++r) {
        std::string row;
        std::vector<int> colOfByte;
        for (int c = 0; c < m_opts.iCols; ++c) {
            std::string ch = CellLocked(r, c).sCh;
            row += ch;
            colOfByte.insert(colOfByte.end(), ch.size(), c);
        }
        size_t at = row.find(text);
        if (at != std::string::npos) {
            found.iRow = r;
            found.iCol = colOfByte[at];
            return found;
        }
    }
    return found;
}

bool ScreenSession::SpanHasColors(int r, int c, int len, int fg, int bg) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (len <= 0 || r < 0 || r >= m_opts.iRows || c < 0 || c + len > m_opts.iCols)
        return false;
    for (int col = c; col < c + len; ++col) {
        if (!HasColors(CellLocked(r, col), fg, bg))
            return false;
    }
    return true;
}

bool ScreenSession::SpanHasPair(int r, int c, int len, int pair) const {
    if (pair < 1 || pair > 7)
        return false;
    ColorPair p = ConsolePair(pair);
    return SpanHasColors(r, c, len, p.iFg, p.iBg);
}

std::string ScreenSession::DumpLocked(bool colors) const {
    std::ostringstream out;
    CursorState cur;
    if (m_vt != nullptr) {
        VTermPos pos;
        vterm_state_get_cursorpos(vterm_obtain_state(m_vt), &pos);
        cur.iRow = pos.row;
        cur.iCol = pos.col;
    }
    out << "screen " << m_opts.iRows << "x" << m_opts.iCols << ", cursor " << cur.iRow << ","
        << cur.iCol << (m_cursorVisible ? " visible" : " hidden")
        << (m_altScreen ? ", alternate screen" : "") << (m_eof ? ", terminal closed" : "") << "\n";
    std::string tens, ones;
    for (int c = 0; c < m_opts.iCols; ++c) {
        tens += c % 10 == 0 ? static_cast<char>('0' + (c / 10) % 10) : ' ';
        ones += static_cast<char>('0' + c % 10);
    }
    out << "   " << tens << "\n   " << ones << "\n";
    for (int r = 0; r < m_opts.iRows; ++r) {
        out << (r < 10 ? " " : "") << r << "|";
        std::string codes;
        for (int c = 0; c < m_opts.iCols; ++c) {
            ScreenCell cell = CellLocked(r, c);
            out << cell.sCh;
            codes += PairCode(cell);
        }
        out << "|\n";
        if (colors)
            out << "  :" << codes << ":\n";
    }
    return out.str();
}

std::string ScreenSession::Dump() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return DumpLocked(false);
}

std::string ScreenSession::DumpColors() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return DumpLocked(true);
}

bool ScreenSession::AltScreen() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_altScreen;
}

int ScreenSession::Bells() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_bells;
}

std::string ScreenSession::RawOutput() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_raw;
}

size_t ScreenSession::MarkRaw() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_rawMark = m_raw.size();
    return m_rawMark;
}

std::string ScreenSession::RawSinceMark() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_raw.substr(m_rawMark);
}

bool ScreenSession::RawContains(const std::string& bytes) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_raw.find(bytes, m_rawMark) != std::string::npos;
}

size_t ScreenSession::FindRaw(const std::string& bytes, size_t from) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_raw.find(bytes, from);
}

bool ScreenSession::WaitForRaw(const std::string& bytes, int timeoutMs) {
    return WaitScreen([&] { return RawContains(bytes); }, timeoutMs);
}

}  // namespace nvtest
