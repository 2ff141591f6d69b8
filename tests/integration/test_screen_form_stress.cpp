// The System State page under load: for twenty seconds a key arrives every
// 50 ms (forms opened, edited and closed, the help pager, the input bar,
// moves, Esc) while the refresh thread rebuilds the page. The console must
// keep running, the refreshes must have happened, a thread checker built
// into the console (when it is one) must report nothing, and the final
// screen must equal a fresh console's drawing of the same page.
//
// NV_FORM_TEST_NVUI names the console binary to run (the thread-checked
// build in CI); without it the build's own console runs.
#include <dirent.h>
#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <sstream>
#include <thread>

#include "test_screen_form_util.h"

namespace {

using namespace nvform;

constexpr int kTimeRow = 14;
constexpr int kTimeX = 50;

// One round of keys: forms opened, moved in, edited in the input bar and
// closed with Esc (never F9, so nothing is sent), the help pager, moves on
// the page, keys the page has no form for. It starts and ends on the page.
const std::vector<Key> kRound = {
    Key::F2,   Key::Down,  Key::Esc, Key::F12, Key::PageDown, Key::Esc, Key::Down, Key::F4,
    Key::Down, Key::Enter, Key::F6,  Key::Esc, Key::Esc,      Key::F3,  Key::Up,   Key::Esc,
    Key::F12,  Key::Esc,   Key::F5,  Key::Esc, Key::F9,       Key::F6,  Key::Up};

// The screen's cells, text and look, with the shown time blanked.
std::string Picture(const ScreenSession& s) {
    std::ostringstream out;
    for (int r = 0; r < s.Rows(); ++r) {
        for (int c = 0; c < s.Cols(); ++c) {
            if (r == kTimeRow && c >= kTimeX && c < kTimeX + 8) {
                out << '#';
                continue;
            }
            ScreenCell cell = s.Cell(r, c);
            out << cell.sCh << nvtest::PairCode(cell) << (cell.bUnderline ? 'u' : '-')
                << (cell.bReverse ? 'r' : '-') << (cell.bBold ? 'b' : '-');
        }
        out << '\n';
    }
    out << "cursor visible " << s.Cursor().bVisible;
    return out.str();
}

// Files the thread checker or the address checker left in dir.
std::string Reports(const std::string& dir) {
    std::string found;
    DIR* d = opendir(dir.c_str());
    if (d == nullptr)
        return found;
    while (dirent* e = readdir(d)) {
        std::string name = e->d_name;
        if (name.rfind("sanitizer", 0) == 0)
            found += nvtest::ReadFile(dir + "/" + name) + "\n";
    }
    closedir(d);
    return found;
}

TEST(FormStress, TwentySecondsOfKeysAndRefreshesLeaveAnIntactPage) {
    nvtest::TempDir reports;
    FormConsole c;
    c.AddEnv("TSAN_OPTIONS=log_path=" + reports.Path() + "/sanitizer:halt_on_error=0");
    ASSERT_TRUE(c.Start());
    ScreenSession& s = c.S();
    ASSERT_TRUE(c.Open(kSysStateLeaf, PROMPT_SYS_STATE_CONFIG));
    ASSERT_TRUE(s.WaitForTextAnywhere("System Time:"));
    size_t from = c.JournalSize();

    const std::vector<Key>& round = kRound;
    auto start = std::chrono::steady_clock::now();
    size_t sent = 0;
    while (std::chrono::steady_clock::now() - start < std::chrono::seconds(20)) {
        s.SendKey(round[sent % round.size()]);
        ++sent;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    // Finish the round, so that the page is shown with its first row focused.
    while (sent % round.size() != 0)
        s.SendKey(round[sent++ % round.size()]);
    ASSERT_TRUE(
        Eventually(s, [&] { return PromptShows(s, PROMPT_SYS_STATE_CONFIG, LAN_ENGLISH); }));
    ASSERT_TRUE(s.WaitSettled(1500, 10000));
    EXPECT_TRUE(s.Running());
    EXPECT_TRUE(c.SetsFrom(from).empty());
    EXPECT_GE(c.ChecksFrom(from), 3u) << "the page was hardly refreshed";

    EXPECT_EQ(Reports(reports.Path()), "");

    FormConsole fresh;
    fresh.AddEnv("TSAN_OPTIONS=log_path=" + reports.Path() + "/fresh:halt_on_error=0");
    ASSERT_TRUE(fresh.Start());
    ASSERT_TRUE(fresh.Open(kSysStateLeaf, PROMPT_SYS_STATE_CONFIG));
    ASSERT_TRUE(fresh.S().WaitForTextAnywhere("System Time:"));
    ASSERT_TRUE(fresh.S().WaitSettled(300));
    // A refresh may redraw either screen while it is read: read until two
    // pictures in a row agree.
    std::string want, got;
    for (int i = 0; i < 20; ++i) {
        want = Picture(fresh.S());
        got = Picture(s);
        if (want == got)
            break;
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    EXPECT_EQ(got, want) << "stressed:\n"
                         << s.DumpColors() << "\nfresh:\n"
                         << fresh.S().DumpColors();
    EXPECT_EQ(Reports(reports.Path()), "");
}

}  // namespace
