// The screen frame on an in-memory curses screen (output to /dev/null):
// window geometry, the prompt's redraw rule and the information line.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "shell/screen.h"
#include "shell/screen_frame.h"
#include "shell/start_up.h"
#include "strings/com_str.h"

namespace {

class FrameTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        setenv("LINES", "24", 1);
        setenv("COLUMNS", "80", 1);
        s_out = fopen("/dev/null", "w");
        s_in = fopen("/dev/null", "r");
        InitComStr();
        iLanIdx = LAN_ENGLISH;
        s_screen = newterm("xterm-256color", s_out, s_in);
        start_color();
        for (int i = 1; i <= 7; ++i)
            init_pair(i, COLOR_WHITE, COLOR_BLUE);
        InitInfoWindow();
        InitPromptWindow();
        InitContentWindow();
    }
    static void TearDownTestSuite() {
        UnInitContent();
        UnInitPromt();
        UnInitInfoWin();
        endwin();
        delscreen(s_screen);
        fclose(s_out);
        fclose(s_in);
    }
    static std::string RowText(WINDOW* w, int row) {
        std::string s;
        for (int c = 0; c < getmaxx(w); ++c)
            s += static_cast<char>(mvwinch(w, row, c) & A_CHARTEXT);
        size_t end = s.find_last_not_of(' ');
        return end == std::string::npos ? "" : s.substr(0, end + 1);
    }
    static SCREEN* s_screen;
    static FILE* s_out;
    static FILE* s_in;
};

SCREEN* FrameTest::s_screen;
FILE* FrameTest::s_out;
FILE* FrameTest::s_in;

TEST_F(FrameTest, GeometryOnTwentyFourRows) {
    EXPECT_EQ(getbegy(sg_Screen.ContentWin), 3);
    EXPECT_EQ(getmaxy(sg_Screen.ContentWin), 18);  // rows 3 to 20
    EXPECT_EQ(getmaxx(sg_Screen.ContentWin), 80);
    EXPECT_EQ(getbegy(sg_Screen.PromptWin), 21);
    EXPECT_EQ(getmaxy(sg_Screen.PromptWin), 2);
    EXPECT_EQ(getbegy(sg_Screen.InfoWin), 23);
    EXPECT_EQ(getmaxy(sg_Screen.InfoWin), 1);
    EXPECT_EQ(getbkgd(sg_Screen.ContentWin) & A_COLOR, COLOR_PAIR(2));
    EXPECT_EQ(getbkgd(sg_Screen.PromptWin) & A_COLOR, COLOR_PAIR(3));
    EXPECT_EQ(getbkgd(sg_Screen.InfoWin) & A_COLOR, COLOR_PAIR(3));
    EXPECT_TRUE(is_keypad(sg_Screen.ContentWin));
}

TEST_F(FrameTest, PromptIsNotRedrawnWhileItIsShown) {
    sg_Screen.iCurPromptIdx = PROMPT_MAX;
    RefreshPrompt(PROMPT_MENU);
    EXPECT_EQ(sg_Screen.iCurPromptIdx, PROMPT_MENU);
    std::string menuPrompt =
        "[up/down arrow]Select item [left/right arrow]Select menu [Enter]Confirm [Esc]exit";
    EXPECT_EQ(RowText(sg_Screen.PromptWin, 0) + RowText(sg_Screen.PromptWin, 1), menuPrompt);
    mvwaddstr(sg_Screen.PromptWin, 0, 0, "OVERWRITTEN");
    RefreshPrompt(PROMPT_MENU);
    EXPECT_EQ(RowText(sg_Screen.PromptWin, 0).substr(0, 11), "OVERWRITTEN");
    RefreshPrompt(PROMPT_CONTENT);
    EXPECT_EQ(RowText(sg_Screen.PromptWin, 0),
              "[up/down arrow]Select item [F12]Help [Enter]Modify [Esc]Return to menu");
}

TEST_F(FrameTest, PromptThirteenOrMoreChangesNothing) {
    RefreshPrompt(PROMPT_CONTENT);
    RefreshPrompt(PROMPT_MAX);
    RefreshPrompt(40);
    EXPECT_EQ(sg_Screen.iCurPromptIdx, PROMPT_CONTENT);
    EXPECT_EQ(RowText(sg_Screen.PromptWin, 0),
              "[up/down arrow]Select item [F12]Help [Enter]Modify [Esc]Return to menu");
}

TEST_F(FrameTest, LongPromptContinuesOnTheSecondRow) {
    RefreshPrompt(PROMPT_SYS_STATE_CONFIG);
    std::string text = pcStrPrompt[PROMPT_SYS_STATE_CONFIG][LAN_ENGLISH];
    EXPECT_EQ(RowText(sg_Screen.PromptWin, 0), text.substr(0, 80));
    EXPECT_EQ(RowText(sg_Screen.PromptWin, 1), text.substr(80));
}

TEST_F(FrameTest, InformationTextIsAFullWidthBar) {
    ShowInfomation("Done. ");
    EXPECT_EQ(RowText(sg_Screen.InfoWin, 0), "Done.");
    for (int c : {0, 5, 40, 79}) {
        EXPECT_EQ(mvwinch(sg_Screen.InfoWin, 0, c) & A_COLOR, COLOR_PAIR(1)) << c;
    }
}

TEST_F(FrameTest, EmptyInformationTextStillPaintsTheBar) {
    ShowInfomation("");
    EXPECT_EQ(RowText(sg_Screen.InfoWin, 0), "");
    EXPECT_EQ(mvwinch(sg_Screen.InfoWin, 0, 0) & A_COLOR, COLOR_PAIR(1));
    EXPECT_EQ(mvwinch(sg_Screen.InfoWin, 0, 79) & A_COLOR, COLOR_PAIR(1));
}

TEST_F(FrameTest, NullInformationClearsToTheBackground) {
    ShowInfomation("message");
    ShowInfomation(nullptr);
    EXPECT_EQ(RowText(sg_Screen.InfoWin, 0), "");
    EXPECT_EQ(mvwinch(sg_Screen.InfoWin, 0, 0) & A_COLOR, COLOR_PAIR(3));
    ShowInfomation("message");
    ClearInformation();
    EXPECT_EQ(RowText(sg_Screen.InfoWin, 0), "");
    EXPECT_EQ(mvwinch(sg_Screen.InfoWin, 0, 79) & A_COLOR, COLOR_PAIR(3));
}

}  // namespace
