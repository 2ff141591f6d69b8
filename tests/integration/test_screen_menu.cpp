// The menu bar in a terminal: the first drop-down appears at the first Up or
// Down, movement is cyclic, Right and Enter open a sub-menu in the next
// 22-column band, Left goes back, keys without an effect change nothing,
// every node of the tree is reachable with its labels in order (in each
// language), a page that cannot be built leaves its text on the
// information line and the menu in charge, and every menu key clears that
// line.
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "test_screen_util.h"

namespace nvscreentest {
namespace {

// One node of the menu tree: its English label, its catalogue entry and its
// children in display order.
struct MenuNode {
    const char* pcEnglish;
    const char* const* ppcLabel;
    std::vector<MenuNode> vChildren;
};

const std::vector<MenuNode>& TopLevel() {
    UseCatalogue();
    static const std::vector<MenuNode> s_tree = {
        {"System Config",
         pcStrSysConfig,
         {{"Net Interface", pcStrNetInterface, {}}, {"System State", pcStrSysStateConfig, {}}}},
        {"System Optimize",
         pcStrSysOptimize,
         {{"Network", pcStrNetOptimize, {}}, {"Resource", pcStrResOptimize, {}}}},
        {"System Monitor",
         pcStrSysMonit,
         {{"File", pcStrFileMonit, {}},
          {"Process", pcStrProcMonit, {}},
          {"CPU Usage", pcStrCpuMonit, {}},
          {"Memory Usage", pcStrMemoryMonit, {}},
          {"Disk Volume", pcStrDiskMonit, {}},
          {"File Backup", pcStrBakMonit, {}},
          {"Tcp listen Port", pcStrTcpPortState, {}}}},
        {"App Config",
         pcStrAppConfig,
         {{"Iptables",
           pcStrIpTable,
           {{"Input chain", pcStrInput, {}}, {"Output chain", pcStrOutput, {}}}},
          {"Vsftpd", pcStrVsftpd, {}},
          {"Samba", pcStrSamba, {}}}},
    };
    return s_tree;
}

std::vector<std::string> Labels(const std::vector<MenuNode>& nodes, int lang) {
    std::vector<std::string> out;
    for (const MenuNode& n : nodes)
        out.push_back(OnScreen(n.ppcLabel, lang));
    return out;
}

std::vector<std::string> EnglishLabels(const std::vector<MenuNode>& nodes) {
    return Labels(nodes, LAN_ENGLISH);
}

const std::vector<std::string> kTop = {"System Config", "System Optimize", "System Monitor",
                                       "App Config"};

class ScreenMenu : public ::testing::Test {
protected:
    void Start() { ASSERT_TRUE(StartConsole(m_run, ConsoleOptions())); }
    ScreenSession& S() { return m_run.Screen(); }

    // The drop-down of a level shows labels with item cur current, and the
    // path band of that level shows the current item focused.
    AssertionResult AtItem(int level, const std::vector<std::string>& labels, int cur,
                           bool hasChildren) {
        AssertionResult box = DropDownShows(S(), level, labels, cur);
        if (!box)
            return box;
        return PathShows(S(), level, labels[cur], true, hasChildren);
    }

    ConsoleRun m_run;
};

TEST_F(ScreenMenu, FirstDownShowsTheFirstDropDown) {
    Start();
    S().SendKey(Key::Down);
    ASSERT_TRUE(Eventually(S(), [&] { return AtItem(0, kTop, 1, true); }));
    EXPECT_TRUE(PathBandBlank(S(), 1));
    // Drawn over the welcome text, which stays where it is not covered.
    EXPECT_EQ(S().Row(10), "              If you have any questions or suggetions, contact us:");
    EXPECT_EQ(S().Text(8, 22, 37), "to use server norvane for linux v1.0.");
    EXPECT_TRUE(InfoLineClear(S()));
}

TEST_F(ScreenMenu, FirstUpShowsTheDropDownAtItsLastItem) {
    Start();
    S().SendKey(Key::Up);
    EXPECT_TRUE(Eventually(S(), [&] { return AtItem(0, kTop, 3, true); }));
}

TEST_F(ScreenMenu, DownAndUpAreCyclic) {
    Start();
    S().SendKey(Key::Down, 3);
    ASSERT_TRUE(Eventually(S(), [&] { return AtItem(0, kTop, 3, true); }));
    S().SendKey(Key::Down);
    ASSERT_TRUE(Eventually(S(), [&] { return AtItem(0, kTop, 0, true); }));
    S().SendKey(Key::Up);
    ASSERT_TRUE(Eventually(S(), [&] { return AtItem(0, kTop, 3, true); }));
    // In a sub-menu too: System Monitor has seven items.
    S().SendKey(Key::Up);
    S().SendKey(Key::Right);
    std::vector<std::string> monitor = EnglishLabels(TopLevel()[2].vChildren);
    ASSERT_TRUE(Eventually(S(), [&] { return AtItem(1, monitor, 0, false); }));
    S().SendKey(Key::Up);
    ASSERT_TRUE(Eventually(S(), [&] { return AtItem(1, monitor, 6, false); }));
    S().SendKey(Key::Down);
    EXPECT_TRUE(Eventually(S(), [&] { return AtItem(1, monitor, 0, false); }));
}

// Right on System Config: the parent's band turns plain (arrow kept), the
// sub-menu opens at column 22 with its first item current and focused on the
// path row, the first drop-down is hidden and the content area is cleared.
TEST_F(ScreenMenu, RightOpensTheSubMenuInTheNextBand) {
    Start();
    S().SendKey(Key::Right);
    std::vector<std::string> sys = EnglishLabels(TopLevel()[0].vChildren);
    // Only the sub-menu's box (rows 3 to 6, columns 22 to 43) on the cleared
    // content area.
    ASSERT_TRUE(Eventually(S(), [&] {
        AssertionResult a = AtItem(1, sys, 0, false);
        if (a)
            a = PathShows(S(), 0, "System Config", false, true);
        return a ? ContentBlank(S(), 3, 7, 22, 44) : a;
    }));
    EXPECT_TRUE(PathBandBlank(S(), 2));
    EXPECT_TRUE(InfoLineClear(S()));
}

TEST_F(ScreenMenu, EnterOnANodeOpensItsSubMenu) {
    Start();
    S().SendKey(Key::Down);
    S().SendKey(Key::Enter);
    std::vector<std::string> opt = EnglishLabels(TopLevel()[1].vChildren);
    ASSERT_TRUE(Eventually(S(), [&] {
        AssertionResult a = AtItem(1, opt, 0, false);
        if (a)
            a = PathShows(S(), 0, "System Optimize", false, true);
        return a ? ContentBlank(S(), 3, 7, 22, 44) : a;
    }));
}

// Left from a sub-menu clears its band, highlights the parent again and
// shows the parent's drop-down in place of the sub-menu's.
TEST_F(ScreenMenu, LeftReturnsToTheParent) {
    Start();
    S().SendKey(Key::Down);
    S().SendKey(Key::Right);
    S().SendKey(Key::Down);
    std::vector<std::string> opt = EnglishLabels(TopLevel()[1].vChildren);
    ASSERT_TRUE(Eventually(S(), [&] { return AtItem(1, opt, 1, false); }));
    S().SendKey(Key::Left);
    ASSERT_TRUE(Eventually(S(), [&] {
        AssertionResult a = AtItem(0, kTop, 1, true);
        if (a)
            a = PathBandBlank(S(), 1);
        return a ? ContentBlank(S(), 3, 9, 0, 22) : a;
    }));
    // The sub-menu remembers its item.
    S().SendKey(Key::Right);
    EXPECT_TRUE(Eventually(S(), [&] { return AtItem(1, opt, 1, false); }));
}

// Left in the first drop-down does nothing: the Down after it moves on from
// where the menu was, and no band opens or closes.
TEST_F(ScreenMenu, LeftInTheFirstDropDownDoesNothing) {
    Start();
    S().SendKey(Key::Left);
    S().SendKey(Key::Down);
    ASSERT_TRUE(Eventually(S(), [&] { return AtItem(0, kTop, 1, true); }));
    S().SendKey(Key::Left);
    S().SendKey(Key::Down);
    ASSERT_TRUE(Eventually(S(), [&] { return AtItem(0, kTop, 2, true); }));
    EXPECT_TRUE(PathBandBlank(S(), 1));
    EXPECT_EQ(S().Row(10), "              If you have any questions or suggetions, contact us:")
        << "the content area was cleared";
}

// Right on a leaf does nothing: no third band, the leaf stays current.
TEST_F(ScreenMenu, RightOnALeafDoesNothing) {
    Start();
    S().SendKey(Key::Right);
    S().SendKey(Key::Right);
    S().SendKey(Key::Down);
    std::vector<std::string> sys = EnglishLabels(TopLevel()[0].vChildren);
    ASSERT_TRUE(Eventually(S(), [&] { return AtItem(1, sys, 1, false); }));
    EXPECT_TRUE(PathShows(S(), 0, "System Config", false, true));
    EXPECT_TRUE(PathBandBlank(S(), 2));
    // The content area is cleared after the drop-down is drawn.
    EXPECT_TRUE(Eventually(S(), [&] { return ContentBlank(S(), 3, 7, 22, 44); }));
}

// Every leaf has its page: Enter on Net Interface, the first leaf the
// first drop-down offers, opens it with one check request of its own.
TEST_F(ScreenMenu, EnterOnTheNetInterfaceLeafOpensItsPage) {
    Start();
    S().SendKey(Key::Right);
    std::vector<std::string> sys = EnglishLabels(TopLevel()[0].vChildren);
    ASSERT_TRUE(Eventually(S(), [&] { return AtItem(1, sys, 0, false); }));
    // The content area is cleared after the drop-down is drawn.
    EXPECT_TRUE(Eventually(S(), [&] { return ContentBlank(S(), 3, 7, 22, 44); }));
    EXPECT_EQ(m_run.Agent().ReadJournal().size(), 1u);
    S().SendKey(Key::Enter);
    ASSERT_TRUE(S().WaitForTextAt(21, 0, "[Esc]Return [F12]Help [F2]Set Interface Down"))
        << S().Dump();
    EXPECT_TRUE(S().ScreenContains("eth0"));
    EXPECT_EQ(m_run.Agent().ReadJournal().size(), 2u);
}

// A page that cannot be built (the agent has gone away) shows its failure
// text on the information line; the drop-down stays on the cleared content
// area and the menu keeps the keyboard. Every menu key clears that text
// first, whatever else it does.
TEST_F(ScreenMenu, PageFailureIsShownAndEveryKeyClearsIt) {
    Start();
    S().SendKey(Key::Down, 2);
    S().SendKey(Key::Right);
    S().SendKey(Key::Up);
    std::vector<std::string> monitor = EnglishLabels(TopLevel()[2].vChildren);
    ASSERT_TRUE(Eventually(S(), [&] { return AtItem(1, monitor, 6, false); }));
    ASSERT_EQ(m_run.Agent().Stop(), 0);
    const std::string failure = "Error:connect failed!";

    auto failAgain = [&] {
        S().SendKey(Key::Enter);
        return Eventually(S(), [&] {
            AssertionResult a = InfoLineShows(S(), failure);
            return a ? AtItem(1, monitor, 6, false) : a;
        });
    };
    ASSERT_TRUE(failAgain());
    // The content area is cleared after the drop-down is drawn.
    EXPECT_TRUE(Eventually(S(), [&] { return ContentBlank(S(), 3, 12, 22, 44); }));
    EXPECT_EQ(S().Row(21), WrapRows(kMenuPromptEn, 80)[0]);

    // Right on the leaf and a key the menu does not use: only the line is
    // cleared.
    S().SendKey(Key::Right);
    ASSERT_TRUE(Eventually(S(), [&] { return InfoLineClear(S()); }));
    EXPECT_TRUE(AtItem(1, monitor, 6, false));
    ASSERT_TRUE(failAgain());
    S().SendText("a");
    ASSERT_TRUE(Eventually(S(), [&] { return InfoLineClear(S()); }));
    EXPECT_TRUE(AtItem(1, monitor, 6, false));
    // Up and Down.
    ASSERT_TRUE(failAgain());
    S().SendKey(Key::Up);
    ASSERT_TRUE(Eventually(S(), [&] {
        AssertionResult a = InfoLineClear(S());
        return a ? AtItem(1, monitor, 5, false) : a;
    }));
    S().SendKey(Key::Down);
    ASSERT_TRUE(Eventually(S(), [&] { return AtItem(1, monitor, 6, false); }));
    ASSERT_TRUE(failAgain());
    S().SendKey(Key::Down);
    ASSERT_TRUE(Eventually(S(), [&] {
        AssertionResult a = InfoLineClear(S());
        return a ? AtItem(1, monitor, 0, false) : a;
    }));
    S().SendKey(Key::Up);
    ASSERT_TRUE(Eventually(S(), [&] { return AtItem(1, monitor, 6, false); }));
    // Left, and Right back into the sub-menu.
    ASSERT_TRUE(failAgain());
    S().SendKey(Key::Left);
    ASSERT_TRUE(Eventually(S(), [&] {
        AssertionResult a = InfoLineClear(S());
        return a ? AtItem(0, kTop, 2, true) : a;
    }));
    S().SendKey(Key::Right);
    ASSERT_TRUE(Eventually(S(), [&] { return AtItem(1, monitor, 6, false); }));
    // Esc: the exit question opens on a clear line.
    ASSERT_TRUE(failAgain());
    S().SendKey(Key::Esc);
    ASSERT_TRUE(Eventually(S(), [&] {
        if (S().Text(10, 17, 21) != "Are you sure to exit?")
            return AssertionFailure() << "no exit question";
        return InfoLineClear(S());
    }));
}

// ---- The whole tree, in each language ----

const char* const kLangNames[] = {"English", "Gb2312", "Utf8"};

class ScreenMenuTree : public ::testing::TestWithParam<int> {};

// Walks every node: in each drop-down, Down through all items checking the
// labels in order, the current item and the path row; into every sub-menu
// and back. Every label fits the 20 bytes the path row shows of it, in all
// three languages, so the cut at 20 bytes never shows; the band's layout
// (label field of 20 columns, then the arrow) is checked for each item.
TEST_P(ScreenMenuTree, EveryNodeIsReachableWithItsLabels) {
    const int lang = GetParam();
    ConsoleRun run;
    ConsoleOptions o;
    o.iLangCode = lang;
    ASSERT_TRUE(StartConsole(run, o));
    ScreenSession& s = run.Screen();

    // Starting on item start, Down n times visits every item and ends there.
    std::function<void(const std::vector<MenuNode>&, int, int)> walk =
        [&](const std::vector<MenuNode>& nodes, int level, int start) {
            std::vector<std::string> labels = Labels(nodes, lang);
            if (lang == LAN_ENGLISH) {
                std::vector<std::string> english;
                for (const MenuNode& n : nodes)
                    english.push_back(n.pcEnglish);
                ASSERT_EQ(labels, english);
            }
            const int n = static_cast<int>(nodes.size());
            for (int k = 0; k < n; ++k) {
                const int i = (start + 1 + k) % n;
                SCOPED_TRACE("level " + std::to_string(level) + " item " + labels[i]);
                ASSERT_LE(strlen(nodes[i].ppcLabel[lang]), static_cast<size_t>(kLabelBytes));
                s.SendKey(Key::Down);
                const bool kids = !nodes[i].vChildren.empty();
                ASSERT_TRUE(Eventually(s, [&] {
                    AssertionResult a = DropDownShows(s, level, labels, i);
                    return a ? PathShows(s, level, labels[i], true, kids) : a;
                }));
                if (!kids)
                    continue;
                s.SendKey(Key::Right);
                std::vector<std::string> sub = Labels(nodes[i].vChildren, lang);
                ASSERT_TRUE(Eventually(s, [&] {
                    AssertionResult a = DropDownShows(s, level + 1, sub, 0);
                    return a ? PathShows(s, level, labels[i], false, true) : a;
                }));
                walk(nodes[i].vChildren, level + 1, 0);
                if (::testing::Test::HasFatalFailure())
                    return;
                s.SendKey(Key::Left);
                ASSERT_TRUE(Eventually(s, [&] {
                    AssertionResult a = DropDownShows(s, level, labels, i);
                    if (a)
                        a = PathShows(s, level, labels[i], true, true);
                    return a ? PathBandBlank(s, level + 1) : a;
                }));
            }
        };
    // The first drop-down is shown at the first Up (on its last item).
    s.SendKey(Key::Up);
    std::vector<std::string> top = Labels(TopLevel(), lang);
    ASSERT_TRUE(Eventually(s, [&] { return DropDownShows(s, 0, top, 3); }));
    walk(TopLevel(), 0, 3);
}

INSTANTIATE_TEST_SUITE_P(Languages, ScreenMenuTree, ::testing::Values(0, 1, 2),
                         [](const ::testing::TestParamInfo<int>& info) {
                             return std::string(kLangNames[info.param]);
                         });

}  // namespace
}  // namespace nvscreentest
