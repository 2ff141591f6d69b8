// The exit question in a terminal: Esc in the menu opens it, boxed and
// centred by its formula, "[No]" preselected; Enter at once answers no and
// gives the menu back over a cleared content area; Left, Left, Enter answers
// yes and the program ends with status 0 and the terminal restored; the keys
// it does not use change nothing.
#include <string>
#include <vector>

#include "test_screen_util.h"

namespace nvscreentest {
namespace {

// Where the exit question and its answers are on a terminal of a size.
struct ExitBox {
    int iWidth, iHeight, iX, iY;
    int iYesCol, iNoCol, iAnswerRow;
};

ExitBox ExitBoxFor(int rows, int cols, int yesLen = 5, int noLen = 4) {
    ExitBox b;
    b.iWidth = cols * 3 / 5;
    b.iHeight = (rows - 6) / 3;
    b.iX = (cols - b.iWidth) / 2;
    b.iY = (rows - 6 - b.iHeight) / 2 + 3;
    int gap = (b.iWidth - 2 - yesLen - noLen) / 3;
    b.iYesCol = b.iX + gap;
    b.iNoCol = b.iX + gap + yesLen + gap;
    b.iAnswerRow = b.iY + 2;
    return b;
}

// The box's border: corners and edges, with blanks inside except where the
// question and answers stand.
AssertionResult BoxDrawn(const ScreenSession& s, const ExitBox& b) {
    const int right = b.iX + b.iWidth - 1, bottom = b.iY + b.iHeight - 1;
    if (s.Cell(b.iY, b.iX).sCh != "┌" || s.Cell(b.iY, right).sCh != "┐" ||
        s.Cell(bottom, b.iX).sCh != "└" || s.Cell(bottom, right).sCh != "┘")
        return AssertionFailure() << "no box corners at rows " << b.iY << "-" << bottom
                                  << ", columns " << b.iX << "-" << right;
    for (int c = b.iX + 1; c < right; ++c) {
        if (s.Cell(b.iY, c).sCh != "─" || s.Cell(bottom, c).sCh != "─")
            return AssertionFailure() << "box edge broken at column " << c;
    }
    for (int r = b.iY + 1; r < bottom; ++r) {
        if (s.Cell(r, b.iX).sCh != "│" || s.Cell(r, right).sCh != "│")
            return AssertionFailure() << "box side broken on row " << r;
    }
    // Nothing drawn beyond the box on its rows' neighbours.
    if (b.iX > 0 && s.Cell(b.iY, b.iX - 1).sCh == "─")
        return AssertionFailure() << "box wider than expected";
    return AssertionSuccess();
}

// The question and both answers, the chosen one reversed.
AssertionResult QuestionShows(const ScreenSession& s, const ExitBox& b, const std::string& question,
                              const std::string& yes, const std::string& no, bool yesChosen) {
    AssertionResult box = BoxDrawn(s, b);
    if (!box)
        return box;
    const int inner = b.iWidth - 2;
    std::string line1 = s.Text(b.iY + 1, b.iX + 1, inner);
    std::string want1 =
        question + std::string(static_cast<size_t>(inner - DisplayWidth(question)), ' ');
    if (line1 != want1)
        return AssertionFailure() << "question line shows '" << line1 << "'";
    const int yesW = DisplayWidth(yes), noW = DisplayWidth(no);
    if (s.Text(b.iAnswerRow, b.iYesCol, yesW) != yes || s.Text(b.iAnswerRow, b.iNoCol, noW) != no)
        return AssertionFailure() << "answers row shows '" << s.Row(b.iAnswerRow) << "'";
    // The rest of the answers row inside the box is blank.
    for (int c = b.iX + 1; c < b.iX + b.iWidth - 1; ++c) {
        bool inYes = c >= b.iYesCol && c < b.iYesCol + yesW;
        bool inNo = c >= b.iNoCol && c < b.iNoCol + noW;
        ScreenCell cell = s.Cell(b.iAnswerRow, c);
        if (!inYes && !inNo && (cell.sCh != " " || cell.bReverse))
            return AssertionFailure() << "answers row column " << c << " is '" << cell.sCh << "'";
        if ((inYes || inNo) && cell.iWidth != 0 && cell.bReverse != (inYes == yesChosen))
            return AssertionFailure() << "column " << c << " of " << (inYes ? yes : no)
                                      << (cell.bReverse ? " is" : " is not") << " reversed";
    }
    for (int r = b.iAnswerRow + 1; r < b.iY + b.iHeight - 1; ++r) {
        if (s.Text(r, b.iX + 1, inner) != std::string(static_cast<size_t>(inner), ' '))
            return AssertionFailure() << "row " << r << " inside the box is not blank";
    }
    return AssertionSuccess();
}

AssertionResult EnglishQuestion(const ScreenSession& s, const ExitBox& b, bool yesChosen) {
    return QuestionShows(s, b, "Are you sure to exit?", "[Yes]", "[No]", yesChosen);
}

const std::vector<std::string> kTop = {"System Config", "System Optimize", "System Monitor",
                                       "App Config"};

class ScreenExitQuestion : public ::testing::Test {
protected:
    void Start(int rows = 24, int cols = 80) {
        ConsoleOptions o;
        o.iRows = rows;
        o.iCols = cols;
        ASSERT_TRUE(StartConsole(m_run, o));
        m_box = ExitBoxFor(rows, cols);
    }
    void Open() {
        S().SendKey(Key::Esc);
        ASSERT_TRUE(Eventually(S(), [&] { return EnglishQuestion(S(), m_box, false); }));
    }
    ScreenSession& S() { return m_run.Screen(); }

    ConsoleRun m_run;
    ExitBox m_box{};
};

// On 80x24: 48 columns by 6 rows at column 16, row 9; the question on its
// line 1 (screen row 10, column 17); "[Yes]" at window column 12 and "[No]" at
// 29 (screen columns 28 and 45 on row 11), "[No]" reversed. The prompt and
// the information line stay as they were.
TEST_F(ScreenExitQuestion, OpensBoxedWithNoPreselected) {
    Start();
    EXPECT_EQ(m_box.iWidth, 48);
    EXPECT_EQ(m_box.iHeight, 6);
    EXPECT_EQ(m_box.iX, 16);
    EXPECT_EQ(m_box.iY, 9);
    EXPECT_EQ(m_box.iYesCol, 28);
    EXPECT_EQ(m_box.iNoCol, 45);
    Open();
    EXPECT_EQ(S().Text(10, 17, 21), "Are you sure to exit?");
    EXPECT_EQ(S().Text(11, 28, 5), "[Yes]");
    EXPECT_EQ(S().Text(11, 45, 4), "[No]");
    EXPECT_TRUE(S().Cell(11, 45).bReverse && S().Cell(11, 48).bReverse);
    EXPECT_FALSE(S().Cell(11, 28).bReverse || S().Cell(11, 32).bReverse);
    EXPECT_EQ(S().Row(21), WrapRows(kMenuPromptEn, 80)[0]);
    EXPECT_EQ(S().Row(22), "t");
    EXPECT_TRUE(InfoLineClear(S()));
    // The welcome text around the box is untouched.
    EXPECT_EQ(S().Text(8, 14, 45), "Welcome to use server norvane for linux v1.0.");
    EXPECT_EQ(S().Text(16, 14, 30), "mail : support@norvane.example");
    // Logged once the question is drawn.
    EXPECT_TRUE(S().WaitUntil([&] {
        return m_run.ReadConsoleLog().find("]Enqr init ok!\n\n") != std::string::npos;
    })) << m_run.ReadConsoleLog();
}

// Enter at once answers no: the box goes, the content area is cleared, the
// first drop-down is shown and the menu has the keyboard again.
TEST_F(ScreenExitQuestion, EnterAtOnceAnswersNo) {
    Start();
    Open();
    S().SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(S(), [&] {
        AssertionResult a = DropDownShows(S(), 0, kTop, 0);
        return a ? ContentBlank(S(), 3, 9, 0, 22) : a;
    }));
    EXPECT_TRUE(PathShows(S(), 0, "System Config", true, true));
    EXPECT_TRUE(InfoLineClear(S()));
    EXPECT_EQ(S().Row(21), WrapRows(kMenuPromptEn, 80)[0]);
    EXPECT_TRUE(S().Running());
    EXPECT_NE(m_run.ReadConsoleLog().find("]enquiry choose 'no'\n"), std::string::npos);
    S().SendKey(Key::Down);
    EXPECT_TRUE(Eventually(S(), [&] {
        AssertionResult a = DropDownShows(S(), 0, kTop, 1);
        return a ? PathShows(S(), 0, "System Optimize", true, true) : a;
    }));
    // And the question can be asked again.
    Open();
}

// Left chooses yes, a second Left changes nothing, Enter ends the program:
// status 0, the normal screen back and the cursor visible.
TEST_F(ScreenExitQuestion, LeftLeftEnterAnswersYes) {
    Start();
    Open();
    S().SendKey(Key::Left);
    ASSERT_TRUE(Eventually(S(), [&] { return EnglishQuestion(S(), m_box, true); }));
    S().SendKey(Key::Left);
    S().SendKey(Key::Enter);
    EXPECT_EQ(S().WaitExit(), 0);
    EXPECT_FALSE(S().AltScreen());
    EXPECT_TRUE(S().Cursor().bVisible);
    EXPECT_FALSE(S().ScreenContains("Are you sure")) << S().Dump();
    EXPECT_FALSE(S().ScreenContains("norvane for linux")) << S().Dump();
    std::string log = m_run.ReadConsoleLog();
    EXPECT_NE(log.find("]enquiry choose 'yes'\n"), std::string::npos) << log;
    EXPECT_EQ(log.find("enquiry choose 'no'"), std::string::npos) << log;
    EXPECT_EQ(m_run.Agent().ReadJournal().size(), 1u);
}

// Right with no chosen changes nothing (the Enter after it answers no);
// Right after Left chooses no again.
TEST_F(ScreenExitQuestion, RightOnNoChangesNothing) {
    Start();
    Open();
    S().SendKey(Key::Left);
    ASSERT_TRUE(Eventually(S(), [&] { return EnglishQuestion(S(), m_box, true); }));
    S().SendKey(Key::Right);
    ASSERT_TRUE(Eventually(S(), [&] { return EnglishQuestion(S(), m_box, false); }));
    S().SendKey(Key::Right);
    S().SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(S(), [&] { return DropDownShows(S(), 0, kTop, 0); }));
    EXPECT_TRUE(S().Running());
    EXPECT_EQ(S().WaitExit(0), -1) << "the program ended";
}

// Esc, Up and Down reach the question, not the menu, and change nothing: the
// drop-down does not appear, the path row keeps its item, no is still chosen
// (the Left after them chooses yes, the Right no, and Enter answers no).
TEST_F(ScreenExitQuestion, EscUpAndDownChangeNothing) {
    Start();
    Open();
    S().SendKey(Key::Esc);
    S().SendKey(Key::Up);
    S().SendKey(Key::Down);
    S().SendKey(Key::Left);
    ASSERT_TRUE(Eventually(S(), [&] { return EnglishQuestion(S(), m_box, true); }));
    EXPECT_TRUE(PathShows(S(), 0, "System Config", true, true));
    EXPECT_EQ(S().Cell(3, 0).sCh, " ") << "the drop-down appeared\n" << S().Dump();
    S().SendKey(Key::Esc);
    S().SendKey(Key::Down);
    S().SendKey(Key::Right);
    ASSERT_TRUE(Eventually(S(), [&] { return EnglishQuestion(S(), m_box, false); }));
    EXPECT_EQ(S().Cell(3, 0).sCh, " ") << "the drop-down appeared\n" << S().Dump();
    S().SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(S(), [&] { return DropDownShows(S(), 0, kTop, 0); }));
    EXPECT_TRUE(S().Running());
    // Exactly one question was opened and answered.
    std::string log = m_run.ReadConsoleLog();
    EXPECT_EQ(log.find("Enqr init ok!"), log.rfind("Enqr init ok!")) << log;
}

// Asked from a sub-menu, "no" gives back that sub-menu with the path row
// as it was.
TEST_F(ScreenExitQuestion, NoFromASubMenuGivesItBack) {
    Start();
    S().SendKey(Key::Down);
    S().SendKey(Key::Right);
    S().SendKey(Key::Down);
    const std::vector<std::string> opt = {"Network", "Resource"};
    ASSERT_TRUE(Eventually(S(), [&] { return DropDownShows(S(), 1, opt, 1); }));
    Open();
    S().SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(S(), [&] {
        AssertionResult a = DropDownShows(S(), 1, opt, 1);
        return a ? ContentBlank(S(), 3, 7, 22, 44) : a;
    }));
    EXPECT_TRUE(PathShows(S(), 0, "System Optimize", false, true));
    EXPECT_TRUE(PathShows(S(), 1, "Resource", true, false));
    S().SendKey(Key::Left);
    EXPECT_TRUE(Eventually(S(), [&] { return DropDownShows(S(), 0, kTop, 1); }));
}

// In other sizes the box follows its formula: width COLS * 3 / 5, height
// (LINES - 6) / 3, column (COLS - width) / 2, row (LINES - 6 - height) / 2 + 3.
struct Size {
    int iRows, iCols;
};

class ScreenExitQuestionSize : public ::testing::TestWithParam<Size> {};

TEST_P(ScreenExitQuestionSize, BoxFollowsTheFormula) {
    const Size& z = GetParam();
    ConsoleRun run;
    ConsoleOptions o;
    o.iRows = z.iRows;
    o.iCols = z.iCols;
    ASSERT_TRUE(StartConsole(run, o));
    ExitBox b = ExitBoxFor(z.iRows, z.iCols);
    ScreenSession& s = run.Screen();
    s.SendKey(Key::Esc);
    ASSERT_TRUE(Eventually(s, [&] { return EnglishQuestion(s, b, false); }));
    s.SendKey(Key::Left);
    ASSERT_TRUE(Eventually(s, [&] { return EnglishQuestion(s, b, true); }));
    s.SendKey(Key::Enter);
    EXPECT_EQ(s.WaitExit(), 0);
    EXPECT_FALSE(s.AltScreen());
}

INSTANTIATE_TEST_SUITE_P(Sizes, ScreenExitQuestionSize,
                         ::testing::Values(Size{30, 100}, Size{19, 66}, Size{40, 132}),
                         [](const ::testing::TestParamInfo<Size>& info) {
                             return std::to_string(info.param.iCols) + "x" +
                                    std::to_string(info.param.iRows);
                         });

}  // namespace
}  // namespace nvscreentest
