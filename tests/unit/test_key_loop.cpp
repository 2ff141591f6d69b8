// The key loop with a scripted key reader: consecutive read errors, the
// missing key function, the run flag, and the lock held around every call.
#include <gtest/gtest.h>

#include <deque>
#include <vector>

#include "link/result_codes.h"
#include "shell/start_up.h"

namespace {

std::deque<int> g_keys;
std::vector<int> g_seen;
bool g_lockHeld = true;

int ScriptedRead(WINDOW*) {
    if (g_keys.empty())
        return ERR;
    int k = g_keys.front();
    g_keys.pop_front();
    return k;
}

void RecordKey(int key) {
    g_seen.push_back(key);
    // The loop holds the refresh lock around the call: it cannot be taken.
    if (pthread_mutex_trylock(&f_refresh_lock) == 0) {
        g_lockHeld = false;
        pthread_mutex_unlock(&f_refresh_lock);
    }
    if (key == 'q')
        sg_Screen.iNvuiRunFlag = 0;
}

class KeyLoopTest : public ::testing::Test {
protected:
    void SetUp() override {
        g_keys.clear();
        g_seen.clear();
        g_lockHeld = true;
        sg_Screen.iNvuiRunFlag = 1;
        sg_Screen.pfnCurKeyFunc = RecordKey;
        sg_Screen.CurWin = reinterpret_cast<WINDOW*>(1);
    }
};

TEST_F(KeyLoopTest, NineErrorsThenAKeyAreHarmless) {
    for (int i = 0; i < 9; ++i)
        g_keys.push_back(ERR);
    g_keys.push_back('a');
    g_keys.push_back('q');
    RunKeyLoop(ScriptedRead);
    EXPECT_EQ(g_seen, (std::vector<int>{'a', 'q'}));
    EXPECT_TRUE(g_lockHeld);
}

TEST_F(KeyLoopTest, TheTenthConsecutiveErrorEndsTheLoop) {
    for (int i = 0; i < 9; ++i)
        g_keys.push_back(ERR);
    g_keys.push_back('a');
    for (int i = 0; i < 10; ++i)
        g_keys.push_back(ERR);
    g_keys.push_back('b');
    RunKeyLoop(ScriptedRead);
    EXPECT_EQ(g_seen, (std::vector<int>{'a'}));
    EXPECT_EQ(g_keys.size(), 1u);  // 'b' was never read
    EXPECT_EQ(sg_Screen.iNvuiRunFlag, 1);
}

TEST_F(KeyLoopTest, MissingKeyFunctionEndsTheLoop) {
    sg_Screen.pfnCurKeyFunc = nullptr;
    g_keys.push_back('a');
    RunKeyLoop(ScriptedRead);
    EXPECT_TRUE(g_seen.empty());
    EXPECT_EQ(g_keys.size(), 1u);
}

TEST_F(KeyLoopTest, ClearedRunFlagEndsTheLoopAfterTheKey) {
    g_keys = {'x', 'q', 'y'};
    RunKeyLoop(ScriptedRead);
    EXPECT_EQ(g_seen, (std::vector<int>{'x', 'q'}));
    EXPECT_EQ(g_keys.size(), 1u);
}

// The waiting path: the wait runs without the lock, the read and the
// read-ahead with it, and a key read ahead is handed on before the next wait.
int g_waits = 0;
bool g_waitUnlocked = true;
bool g_readLocked = true;
std::deque<int> g_ahead;

int CountingWait() {
    ++g_waits;
    if (pthread_mutex_trylock(&f_refresh_lock) == 0)
        pthread_mutex_unlock(&f_refresh_lock);
    else
        g_waitUnlocked = false;
    return 0;
}

int LockedRead(WINDOW* w) {
    if (pthread_mutex_trylock(&f_refresh_lock) == 0) {
        g_readLocked = false;
        pthread_mutex_unlock(&f_refresh_lock);
    }
    return ScriptedRead(w);
}

int AheadRead(WINDOW*) {
    if (pthread_mutex_trylock(&f_refresh_lock) == 0) {
        g_readLocked = false;
        pthread_mutex_unlock(&f_refresh_lock);
    }
    if (g_ahead.empty())
        return ERR;
    int k = g_ahead.front();
    g_ahead.pop_front();
    return k;
}

TEST_F(KeyLoopTest, WaitsOutsideTheLockAndReadsInsideIt) {
    g_waits = 0;
    g_waitUnlocked = g_readLocked = true;
    g_ahead.clear();
    g_keys = {'a', 'b', 'q'};
    RunKeyLoop(LockedRead, CountingWait, AheadRead);
    EXPECT_EQ(g_seen, (std::vector<int>{'a', 'b', 'q'}));
    EXPECT_EQ(g_waits, 3);
    EXPECT_TRUE(g_waitUnlocked);
    EXPECT_TRUE(g_readLocked);
    EXPECT_TRUE(g_lockHeld);
}

TEST_F(KeyLoopTest, KeysReadAheadAreHandedOnWithoutWaiting) {
    g_waits = 0;
    g_waitUnlocked = g_readLocked = true;
    // Esc and the key behind it arrive together: curses holds the second.
    g_keys = {27, 'z'};
    g_ahead = {'x', 'q'};
    RunKeyLoop(LockedRead, CountingWait, AheadRead);
    EXPECT_EQ(g_seen, (std::vector<int>{27, 'x', 'q'}));
    EXPECT_EQ(g_waits, 1);
    EXPECT_EQ(g_keys.size(), 1u);  // 'z' was never read
    EXPECT_TRUE(g_waitUnlocked);
    EXPECT_TRUE(g_readLocked);
}

TEST_F(KeyLoopTest, TenFailedWaitsAndReadsEndTheLoop) {
    g_waits = 0;
    g_ahead.clear();
    for (int i = 0; i < 10; ++i)
        g_keys.push_back(ERR);
    g_keys.push_back('a');
    RunKeyLoop(LockedRead, CountingWait, AheadRead);
    EXPECT_TRUE(g_seen.empty());
    EXPECT_EQ(g_waits, 10);
}

TEST(ExitMessages, FourCodesPrintTheirMessage) {
    EXPECT_STREQ(ExitMessage(ERR_OPEN_LOG_FAILED), "Error! open log file failed!");
    EXPECT_STREQ(ExitMessage(ERR_CONNECT_FAILED),
                 "Error! connect failed!please run 'service norvane start' or 'nvstart' first!");
    EXPECT_STREQ(ExitMessage(ERR_LANG_CODE_INVALID),
                 "Error! Language code gotten from norvane server is invalid!");
    EXPECT_STREQ(ExitMessage(ERR_REFRESH_THREAD_FAILED), "Error! Refresh thread create failed!");
}

TEST(ExitMessages, OtherCodesPrintNothing) {
    for (int code : {0, -1, 7, (int)ERR_PARAMTER, (int)ERR_VERSION_GET_FAILED,
                     (int)NEED_NOT_SHOW_INFO, (int)UI_ERR_CODE_MIN, (int)UI_ERR_CODE_MAX}) {
        EXPECT_EQ(ExitMessage(code), nullptr) << code;
    }
}

TEST(RegistKeyFunc, SetsFunctionAndWindow) {
    RegistKeyFunc(RecordKey, reinterpret_cast<WINDOW*>(8));
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, RecordKey);
    EXPECT_EQ(sg_Screen.CurWin, reinterpret_cast<WINDOW*>(8));
    RegistKeyFunc(nullptr, nullptr);
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, nullptr);
    EXPECT_EQ(sg_Screen.CurWin, nullptr);
}

}  // namespace
