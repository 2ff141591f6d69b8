// The session guard on the console's screen: nvui run over the sandbox's
// sshd from the remote client, in a pseudo-terminal decoded by libvterm,
// against the live agent. Setting the input policy to drop, which would cut
// that very session, shows the refusal on the information line; F9 again
// on the same form carries it out, the session stalls, the agent undoes
// the change, and the console's next answer shows why.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "guard_bed.h"
#include "live_sandbox.h"
#include "remote_session.h"
#include "temp_dir.h"
#include "test_screen_edit_util.h"
#include "test_screen_form_util.h"

namespace {

using namespace nvform;

const char* const kRefusal = "Cuts SSH session from 198.51.100.7";
const char* const kUndone = "Undone: the change at ";

// The policy form with its choice.
std::vector<FormRow> PolicyForm(const std::string& choice) {
    return {{"Please choose the modify policy:", choice, 0, ""}};
}

// Some row shows the policy form's question with this choice.
bool FormOpenWith(const ScreenSession& s, const std::string& choice) {
    for (int r = 0; r < s.Rows(); ++r) {
        std::string row = s.Row(r);
        if (row.find("Please choose the modify policy:") != std::string::npos &&
            row.find(choice) != std::string::npos)
            return true;
    }
    return false;
}

// The last row of the screen (the information line) holds text.
AssertionResult InfoHolds(const ScreenSession& s, const std::string& text) {
    std::string got = s.Row(s.Rows() - 1);
    if (got.find(text) == std::string::npos)
        return AssertionFailure() << "information line shows '" << got << "', expected '" << text
                                  << "' in it";
    return AssertionSuccess();
}

TEST(LiveGuardScreen, RefusalThenConfirmedCutRolledBackOnTheInformationLine) {
    if (!nvtest::InSandbox() || !nvtest::HaveSandboxSshd())
        GTEST_SKIP() << "runs only inside tests/support/nv-sandbox.sh --sshd";
    std::string err;
    ASSERT_TRUE(nvtest::PrepareGuardBed(err)) << err;
    // The console started over ssh from the remote namespace, with the
    // environment the harness gives it.
    nvtest::TempDir files;
    std::string wrapper = files.File("nvui-over-ssh");
    ASSERT_TRUE(nvtest::WriteFile(
        wrapper,
        std::string("#!/bin/sh\nexec \"$NV_SANDBOX_SSH\" -tt 10.77.0.2 env \"TERM=$TERM\" "
                    "\"LANG=$LANG\" \"NVUI_SOCKET=$NVUI_SOCKET\" \"NVUI_LOG=$NVUI_LOG\" ") +
            NV_BIN_DIR + "/nvui \"$@\"\n"));
    ASSERT_EQ(chmod(wrapper.c_str(), 0755), 0);
    setenv("NV_FORM_TEST_NVUI", wrapper.c_str(), 1);
    FormConsole c;
    c.SetAgentArgs({"--backend", "system", "--data-dir", files.File("data")});
    AssertionResult started = c.Start("", LAN_ENGLISH, 24, 100);
    unsetenv("NV_FORM_TEST_NVUI");
    ASSERT_TRUE(started);
    ScreenSession& s = c.S();
    ASSERT_TRUE(c.Open(kInputLeaf, PROMPT_SCKEY_POLICY));
    const std::string before = nvtest::LiveConfiguration();
    s.SendKey(Key::F5);
    ASSERT_TRUE(Eventually(s, [&] { return FormShows(s, PolicyForm("[Accept]"), 0); }));
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return PromptShows(s, PROMPT_CHOOSE, LAN_ENGLISH); }));
    s.SendKey(Key::Down);
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return FormShows(s, PolicyForm("[Drop]"), 0); }));

    s.SendKey(Key::F9);
    ASSERT_TRUE(Eventually(s, [&] { return InfoHolds(s, kRefusal); }));
    EXPECT_EQ(nvtest::LiveConfiguration(), before) << "the refused change must change nothing";

    // The confirming F9 on the same form: the refusal closed it, F5 opens
    // it again with the choice kept.
    if (!FormOpenWith(s, "[Drop]")) {
        s.SendKey(Key::F5);
        ASSERT_TRUE(Eventually(s, [&] { return FormShows(s, PolicyForm("[Drop]"), 0); }));
    }
    nvtest::ChangeWatcher watch(before);
    watch.Start();
    s.SendKey(Key::F9);
    ASSERT_TRUE(watch.WaitChanged(30000)) << s.Dump();
    ASSERT_TRUE(watch.WaitRestored(20000)) << nvtest::LiveConfiguration();
    EXPECT_LE(nvtest::MsBetween(watch.Changed(), watch.Restored()), 15000);
    // The session comes back: the confirmed change's answer is drawn.
    ASSERT_TRUE(Eventually(
        s, [&] { return InfoHolds(s, "Done."); }, 40000));
    // The console's next answer says what was undone: here, the policy set
    // back to accept, which it already is.
    s.SendKey(Key::F5);
    ASSERT_TRUE(Eventually(s, [&] { return FormShows(s, PolicyForm("[Drop]"), 0); }));
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return PromptShows(s, PROMPT_CHOOSE, LAN_ENGLISH); }));
    s.SendKey(Key::Up);
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return FormShows(s, PolicyForm("[Accept]"), 0); }));
    s.SendKey(Key::F9);
    EXPECT_TRUE(Eventually(
        s, [&] { return InfoHolds(s, kUndone); }, 20000));
    EXPECT_EQ(nvtest::LiveConfiguration(), before);
}

}  // namespace
