// Every leaf of the menu opens its page; on the six pages with forms every
// form of F2 to F5 opens and closes; the console then leaves the page and
// ends through the exit question with status 0 (under the address checker,
// a page's forms left unreleased would end it with a leak report instead).
#include <gtest/gtest.h>

#include "test_screen_form_util.h"

namespace {

using namespace nvform;

AssertionResult EndsCleanly(FormConsole& c) {
    ScreenSession& s = c.S();
    for (int i = 0; i < 5 && !s.ScreenContains("Are you sure to exit?"); ++i) {
        s.SendKey(Key::Esc);
        s.WaitUntil([&] { return s.ScreenContains("Are you sure to exit?"); }, 300);
    }
    if (!s.ScreenContains("Are you sure to exit?"))
        return AssertionFailure() << "no exit question\n" << s.Dump();
    s.SendKey(Key::Left);
    s.SendKey(Key::Enter);
    int status = s.WaitExit();
    if (status != 0)
        return AssertionFailure() << "exit status " << status << "\n"
                                  << s.Dump() << "\nlog:\n"
                                  << c.Run().ReadConsoleLog();
    return AssertionSuccess();
}

TEST(FormAll, EveryFormOfEveryFormPageOpensAndTheConsoleEndsCleanly) {
    const struct {
        FormLeaf leaf;
        int prompt;
    } pages[] = {{kNetIfLeaf, PROMPT_NET_INTERFACE}, {kSysStateLeaf, PROMPT_SYS_STATE_CONFIG},
                 {kDiskLeaf, PROMPT_SCKEY_TOGGLE},   {kBakLeaf, PROMPT_SCKEY_TOGGLE},
                 {kInputLeaf, PROMPT_SCKEY_POLICY},  {kOutputLeaf, PROMPT_SCKEY_POLICY}};
    for (const auto& p : pages) {
        FormConsole c;
        ASSERT_TRUE(c.Start("", LAN_ENGLISH, 24, 100));
        ScreenSession& s = c.S();
        ASSERT_TRUE(c.Open(p.leaf, p.prompt));
        for (Key k : {Key::F2, Key::F3, Key::F4, Key::F5}) {
            s.SendKey(k);
            ASSERT_TRUE(Eventually(s, [&] {
                return And(BoxShows(s, LayOutForm({}, 24, 100)),
                           PromptRowShows(s, PROMPT_CONTENT_NEW_LEVEL, LAN_ENGLISH));
            }));
            s.SendKey(Key::Esc);
            ASSERT_TRUE(Eventually(s, [&] { return PromptRowShows(s, p.prompt, LAN_ENGLISH); }));
        }
        EXPECT_TRUE(EndsCleanly(c));
    }
}

TEST(FormAll, EveryLeafOfTheMenuOpensAPage) {
    const FormLeaf leaves[] = {{0, 0, -1}, {0, 1, -1}, {1, 0, -1}, {1, 1, -1}, {2, 0, -1},
                               {2, 1, -1}, {2, 2, -1}, {2, 3, -1}, {2, 4, -1}, {2, 5, -1},
                               {2, 6, -1}, {3, 0, 0},  {3, 0, 1},  {3, 1, -1}, {3, 2, -1}};
    FormConsole c;
    ASSERT_TRUE(c.Start("", LAN_ENGLISH, 24, 100));
    ScreenSession& s = c.S();
    std::string menuPrompt = CutToWidth(Prompt(PROMPT_MENU, LAN_ENGLISH), 30);
    for (const FormLeaf& l : leaves) {
        // Back to the first drop-down, as the console starts.
        for (int i = 0; i < 5 && !s.ScreenContains("Are you sure to exit?"); ++i) {
            s.SendKey(Key::Esc);
            s.WaitUntil([&] { return s.ScreenContains("Are you sure to exit?"); }, 300);
        }
        ASSERT_TRUE(s.ScreenContains("Are you sure to exit?"));
        s.SendKey(Key::Enter);  // "[No]": the first drop-down again
        ASSERT_TRUE(s.WaitForTextGone("Are you sure to exit?"));
        size_t from = c.JournalSize();
        if (l.iMenu > 0)
            s.SendKey(Key::Down, l.iMenu);
        s.SendKey(Key::Enter);
        if (l.iItem > 0)
            s.SendKey(Key::Down, l.iItem);
        s.SendKey(Key::Enter);
        if (l.iSubItem >= 0) {
            if (l.iSubItem > 0)
                s.SendKey(Key::Down, l.iSubItem);
            s.SendKey(Key::Enter);
        }
        // A page shown: its check request made and the menu prompt gone.
        ASSERT_TRUE(s.WaitUntil([&] {
            return c.ChecksFrom(from) >= 1 && s.Row(s.Rows() - 3).rfind(menuPrompt, 0) != 0;
        })) << l.iMenu
            << "/" << l.iItem << "/" << l.iSubItem << "\n"
            << s.Dump();
    }
}

}  // namespace
