// Keys typed while the console waits for a slow answer: a scripted agent
// holds the answer to a set command for a while, the user presses Esc twice
// meanwhile, and once the answer is shown those keys are gone: the page
// stays, no exit question opens.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "fake_agent.h"
#include "link/result_codes.h"
#include "screen_console.h"
#include "screen_session.h"
#include "state_samples.h"
#include "temp_dir.h"
#include "wire/wire.h"

namespace {

using nvtest::Key;
using nvtest::ScreenSession;

constexpr int kAnswerDelayMs = 1500;

TEST(ScreenSlowAnswer, KeysTypedWhileACommandIsAwaitedAreDiscarded) {
    // The answer waits until the keys are typed (on a loaded machine the
    // test itself may be late to type them), then a while more.
    std::atomic<bool> typed{false};
    FakeAgent agent([&typed](const FakeRequest& req) {
        if (req.cmd == nvwire::kCmdCheck) {
            cConf_Inf c;
            cSvrState s;
            FillSampleState(c, s);
            c.chLangCode = emEn;
            return MakeAnswer(req.cmd, em_OK, "", EncodeState(c, s));
        }
        for (int i = 0; i < 200 && !typed; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        std::this_thread::sleep_for(std::chrono::milliseconds(kAnswerDelayMs));
        return MakeAnswer(req.cmd, em_ActSuccAll, "");
    });
    nvtest::TempDir dir;
    ScreenSession s;
    nvtest::ScreenOptions o;
    o.vsEnv = {"NVUI_SOCKET=" + agent.SocketPath(), "NVUI_LOG=" + dir.Path() + "/nvui.log"};
    ASSERT_TRUE(s.Start({nvtest::ConsoleRun::BinaryPath()}, o));
    ASSERT_TRUE(s.WaitForTextAnywhere("Select menu")) << s.Dump();
    // System Config, System State, F2: the host-name form.
    s.SendKey(Key::Enter);
    s.SendKey(Key::Down);
    s.SendKey(Key::Enter);
    ASSERT_TRUE(s.WaitForTextAnywhere("Host Name:")) << s.Dump();
    s.SendKey(Key::F2);
    ASSERT_TRUE(s.WaitForTextAnywhere("┌")) << s.Dump();
    s.SendKey(Key::Enter);
    s.SendText("web9");
    s.SendKey(Key::Enter);
    s.SendKey(Key::F9);
    ASSERT_TRUE(s.WaitForTextAnywhere("Excuting command, please wait...")) << s.Dump();
    s.SendKey(Key::Esc);
    s.SendKey(Key::Esc);
    typed = true;
    // The page's own prompt once the answer came (the wait text alone may
    // vanish for a moment while the refresh thread redraws the line).
    ASSERT_TRUE(s.WaitForTextAnywhere("[F2]Modify Host Name", kAnswerDelayMs + 10000)) << s.Dump();
    s.WaitSettled(500);
    // Still the System State page with its prompt; neither the menu's
    // prompt nor the exit question.
    EXPECT_TRUE(s.ScreenContains("Host Name:")) << s.Dump();
    EXPECT_TRUE(s.ScreenContains("[F2]Modify Host Name")) << s.Dump();
    EXPECT_FALSE(s.ScreenContains("Select menu")) << s.Dump();
    EXPECT_FALSE(s.ScreenContains("┌")) << s.Dump();
}

}  // namespace
