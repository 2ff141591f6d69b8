// The shortcut-key bar on an in-memory curses screen: opening checks, the
// box and its colours, the F-key dispatch of a page (a key without entry, an
// entry naming no sender), field editing, the F9 join, Esc keeping the typed
// values, and a page with forms but no rows.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ctrlbar/control_bar.h"
#include "link/cmd_catalogue.h"
#include "link/payload_kinds.h"
#include "link/result_codes.h"
#include "pages/form_build.h"
#include "strings/help_id.h"
#include "strings/prompt_id.h"
#include "test_content_screen.h"

namespace {

using namespace nvcontenttest;

std::vector<std::string> g_sent;
int g_senderResult = NEED_NOT_SHOW_INFO;
int g_returns = 0;

int RecordSender(char* pcSetting, void* arg) {
    EXPECT_EQ(arg, nullptr);
    g_sent.push_back(pcSetting ? pcSetting : "<null>");
    return g_senderResult;
}

void CountReturn() {
    ++g_returns;
}

const ST_FORM_ROW kRuleRows[] = {
    {pcStrPriority, EN_CHOOSE_CONTROL, 0, pcStrHighest, 0, 0, pcStrHighest, pcStrLowest, nullptr},
    {pcStrSrcIp, EN_INPUT_CONTROL, 20, pcStrDefaultIP, 1, 0, nullptr, nullptr, nullptr},
    {pcStrSrcPort, EN_INPUT_CONTROL, 5, pcStrDefaultPort, 1, 0, nullptr, nullptr, nullptr},
    {pcStrHostName, EN_INPUT_CONTROL, 32, pcStrNullInfo, 0, 0, nullptr, nullptr, nullptr}};

class ShortcutBarTest : public CursesScreenTest {
protected:
    void SetUp() override {
        CursesScreenTest::SetUp();
        g_sent.clear();
        g_senderResult = NEED_NOT_SHOW_INFO;
        g_returns = 0;
        memset(&gs_stSckeyCtrl, 0, sizeof(gs_stSckeyCtrl));
    }
    void TearDown() override {
        if (gs_stSckeyCtrl.pSckeyWin)
            delwin(gs_stSckeyCtrl.pSckeyWin);
        memset(&gs_stSckeyCtrl, 0, sizeof(gs_stSckeyCtrl));
        CursesScreenTest::TearDown();
    }
    static tVstr Argv(UPDATE_FUNC fn, CONTENT_DATA* form) {
        return {PtrToArg(reinterpret_cast<const void*>(fn)), PtrToArg(form)};
    }
    static DRAW_PARAMETER Rect() { return ShortcutBarRect(); }
    // A page of one row with the form under F2.
    static CONTENT_DATA* PageWithForm(CONTENT_DATA* form, UPDATE_FUNC fn = RecordSender) {
        CONTENT_DATA* page = NumberedPage(1);
        AddFormKey(page, MAP_KEY_F2, fn, form);
        return page;
    }
    static CONTENT_SECTION& Field(CONTENT_DATA* form, int row) {
        return form->pstItem[row].pstSection[1];
    }
};

TEST_F(ShortcutBarTest, RefusesMissingArguments) {
    PageGuard form(BuildForm(kRuleRows, 4, EN_IPTABLE_INPUT));
    DRAW_PARAMETER r = Rect();
    EXPECT_EQ(EnterShortcutKeyCtrlBar({"1"}, &r, CountReturn), -1);
    EXPECT_EQ(EnterShortcutKeyCtrlBar(Argv(RecordSender, form.Get()), nullptr, CountReturn), -1);
    EXPECT_EQ(EnterShortcutKeyCtrlBar(Argv(RecordSender, form.Get()), &r, nullptr), -1);
    // An entry whose sender is "0" does not open; neither does a form "0".
    EXPECT_EQ(EnterShortcutKeyCtrlBar({"0", PtrToArg(form.Get())}, &r, CountReturn), -1);
    EXPECT_EQ(EnterShortcutKeyCtrlBar(Argv(RecordSender, nullptr), &r, CountReturn), -1);
    EXPECT_EQ(gs_stSckeyCtrl.pSckeyWin, nullptr);
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, nullptr);
}

TEST_F(ShortcutBarTest, OpensInABoxedWindowOfPairSix) {
    PageGuard form(BuildForm(kRuleRows, 4, EN_IPTABLE_INPUT));
    DRAW_PARAMETER r = Rect();
    EXPECT_EQ(r.iStartX, 10);
    EXPECT_EQ(r.iStartY, 6);
    EXPECT_EQ(r.iWidth, 60);
    EXPECT_EQ(r.iHeight, 15);
    ASSERT_EQ(EnterShortcutKeyCtrlBar(Argv(RecordSender, form.Get()), &r, CountReturn), 0);
    WINDOW* w = gs_stSckeyCtrl.pSckeyWin;
    ASSERT_NE(w, nullptr);
    EXPECT_EQ(getbegx(w), 10);
    EXPECT_EQ(getbegy(w), 6);
    EXPECT_EQ(getmaxx(w), 60);
    EXPECT_EQ(getmaxy(w), 15);
    EXPECT_EQ(At(w, 0, 0) & A_CHARTEXT, ACS_ULCORNER & A_CHARTEXT);
    EXPECT_EQ(At(w, 14, 59) & A_CHARTEXT, ACS_LRCORNER & A_CHARTEXT);
    EXPECT_EQ(PairAt(w, 0, 0), 6);
    EXPECT_EQ(PairAt(w, 7, 30), 6);
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, ScKeyKeyFunction);
    EXPECT_EQ(sg_Screen.CurWin, w);
    // The form's first row has the focus: caption blue on white, the field
    // white on blue; the other fields underlined.
    const CONTENT_DRAW_INFO& d = gs_stSckeyCtrl.stDrawInfo;
    EXPECT_EQ(d.iFocusItem, 0);
    EXPECT_EQ(d.iFocusCol, 1);
    int y0 = ContentRowLine(&d, 0), y1 = ContentRowLine(&d, 1);
    EXPECT_EQ(PairAt(w, y0, ContentColX(&d, 0)), 7);
    EXPECT_EQ(PairAt(w, y0, ContentColX(&d, 1)), 5);
    EXPECT_TRUE(UnderlinedAt(w, y1, ContentColX(&d, 1)));
    EXPECT_EQ(TextAt(w, y1, ContentColX(&d, 1), 15), "###.###.###.###");
    EXPECT_EQ(sg_Screen.iCurPromptIdx, PROMPT_CONTENT_NEW_LEVEL);
}

TEST_F(ShortcutBarTest, F9JoinsEveryFieldBehindAStarAndCloses) {
    PageGuard form(BuildForm(kRuleRows, 4, EN_IPTABLE_INPUT));
    DRAW_PARAMETER r = Rect();
    ASSERT_EQ(EnterShortcutKeyCtrlBar(Argv(RecordSender, form.Get()), &r, CountReturn), 0);
    ScKeyKeyFunction(KEY_F(9));
    ASSERT_EQ(g_sent.size(), 1u);
    EXPECT_EQ(g_sent[0], "*[Highest]*###.###.###.###*####*    *");
    // Placeholders: "-" for address and text, "0" for the port.
    EXPECT_EQ(EncodeForm(g_sent[0].c_str()), "1 - 0 -");
    EXPECT_EQ(g_returns, 1);
    EXPECT_EQ(gs_stSckeyCtrl.pSckeyWin, nullptr);
    EXPECT_EQ(gs_stSckeyCtrl.stDrawInfo.pstContent, nullptr);
    // Keys after closing do nothing.
    ScKeyKeyFunction(KEY_F(9));
    EXPECT_EQ(g_sent.size(), 1u);
}

TEST_F(ShortcutBarTest, LowestUdpEmptyDropJoinAndEncode) {
    const ST_FORM_ROW rows[] = {
        {pcStrPriority, EN_CHOOSE_CONTROL, 0, pcStrLowest, 0, 0, pcStrHighest, pcStrLowest,
         nullptr},
        {pcStrProtocol, EN_CHOOSE_CONTROL, 0, pcStrUdp, 0, 0, pcStrTcp, pcStrUdp, nullptr},
        {pcStrSrcIp, EN_INPUT_CONTROL, 20, pcStrNullInfo, 1, 0, nullptr, nullptr, nullptr},
        {pcStrAction, EN_CHOOSE_CONTROL, 0, pcStrDrop, 0, 0, pcStrAccept, pcStrDrop, nullptr}};
    PageGuard form(BuildForm(rows, 4, EN_IPTABLE_INPUT));
    Field(form.Get(), 2).strSecName = "";
    char buf[SCKEY_SEND_BUF_LEN];
    JoinFormFields(form.Get(), buf, sizeof(buf));
    EXPECT_STREQ(buf, "*[Lowest]*[Udp]**[Drop]*");
    EXPECT_EQ(EncodeForm(buf), "2 2  2");
}

TEST_F(ShortcutBarTest, OnlyChooseAndInputFieldsCount) {
    PageGuard page(MakePage({RowDecl{{Fixed("a"), Choose("[Open]"), OfType("x", EN_LIST_CONTROL),
                                      OfType("y", EN_ENQUIRE_CONTROL), Input("v", 5, false)}}}));
    char buf[64];
    EXPECT_EQ(JoinFormFields(page.Get(), buf, sizeof(buf)), 10u);
    EXPECT_STREQ(buf, "*[Open]*v*");
}

TEST_F(ShortcutBarTest, JoinNeverWritesPastItsBuffer) {
    PageGuard form(BuildForm(kRuleRows, 4, EN_IPTABLE_INPUT));
    Field(form.Get(), 3).strSecName = std::string(20000, 'h');
    std::vector<char> buf(SCKEY_SEND_BUF_LEN + 16, 'Z');
    size_t n = JoinFormFields(form.Get(), buf.data(), SCKEY_SEND_BUF_LEN);
    EXPECT_EQ(n, static_cast<size_t>(SCKEY_SEND_BUF_LEN - 1));
    EXPECT_EQ(buf[SCKEY_SEND_BUF_LEN - 1], '\0');
    EXPECT_EQ(buf[SCKEY_SEND_BUF_LEN], 'Z');
    // The cut text lost its final star, so the encoding drops the cut field.
    EXPECT_EQ(EncodeForm(buf.data()), "1 - 0");
}

TEST_F(ShortcutBarTest, EscKeepsTypedValuesAndTheSameKeyShowsThemAgain) {
    CONTENT_DATA* form = BuildForm(kRuleRows, 4, EN_IPTABLE_INPUT);
    CONTENT_DATA* page = PageWithForm(form);
    ASSERT_EQ(EnterContent(page), 0);
    RegistKeyFunc(ContentKeyFunc, Content());
    ContentKeyFunc(MAP_KEY_F2);
    ASSERT_EQ(sg_Screen.pfnCurKeyFunc, ScKeyKeyFunction);
    EXPECT_EQ(sg_ContentInfo.iCursorInContentWinFlag, 0);
    // Down to the address field, Enter opens the input bar on it.
    ScKeyKeyFunction(KEY_DOWN);
    ScKeyKeyFunction(10);
    ASSERT_EQ(sg_Screen.pfnCurKeyFunc, InputKeyFunction);
    for (char ch : std::string("10.1.2.3"))
        InputKeyFunction(ch);
    InputKeyFunction(10);
    ASSERT_EQ(sg_Screen.pfnCurKeyFunc, ScKeyKeyFunction);
    EXPECT_EQ(Field(form, 1).strSecName, "10.1.2.3");
    ScKeyKeyFunction(27);
    EXPECT_TRUE(g_sent.empty());
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, ContentKeyFunc);
    EXPECT_EQ(sg_ContentInfo.iCursorInContentWinFlag, 1);
    EXPECT_EQ(Field(form, 1).strSecName, "10.1.2.3");
    ContentKeyFunc(MAP_KEY_F2);
    WINDOW* w = gs_stSckeyCtrl.pSckeyWin;
    const CONTENT_DRAW_INFO& d = gs_stSckeyCtrl.stDrawInfo;
    EXPECT_EQ(TextAt(w, ContentRowLine(&d, 1), ContentColX(&d, 1), 8), "10.1.2.3");
    ScKeyKeyFunction(KEY_F(9));
    ASSERT_EQ(g_sent.size(), 1u);
    EXPECT_EQ(g_sent[0], "*[Highest]*10.1.2.3*####*    *");
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, ContentKeyFunc);
}

// F12 in a form is one of the keys the bar ignores: the form keeps the
// keyboard, nothing is drawn over it and no help opens.
TEST_F(ShortcutBarTest, F12InAFormIsIgnored) {
    CONTENT_DATA* page = PageWithForm(BuildForm(kRuleRows, 4, EN_IPTABLE_INPUT));
    ASSERT_EQ(EnterContent(page), 0);
    RegistKeyFunc(ContentKeyFunc, Content());
    ContentKeyFunc(MAP_KEY_F2);
    ASSERT_EQ(sg_Screen.pfnCurKeyFunc, ScKeyKeyFunction);
    std::vector<chtype> before = Snapshot(gs_stSckeyCtrl.pSckeyWin);
    ScKeyKeyFunction(KEY_F(12));
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, ScKeyKeyFunction);
    EXPECT_EQ(Snapshot(gs_stSckeyCtrl.pSckeyWin), before);
    EXPECT_EQ(sg_HelpInfo.pfnReturn, nullptr);
    ScKeyKeyFunction(27);
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, ContentKeyFunc);
}

TEST_F(ShortcutBarTest, ChooseFieldStoresTheChoice) {
    CONTENT_DATA* form = BuildForm(kRuleRows, 4, EN_IPTABLE_INPUT);
    ASSERT_EQ(EnterContent(PageWithForm(form)), 0);
    ContentKeyFunc(MAP_KEY_F2);
    ScKeyKeyFunction(10);
    ASSERT_EQ(sg_Screen.pfnCurKeyFunc, ChooseKeyFunction);
    ChooseKeyFunction(KEY_DOWN);
    ChooseKeyFunction(10);
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, ScKeyKeyFunction);
    EXPECT_EQ(Field(form, 0).strSecName, "[Lowest]");
    ScKeyKeyFunction(27);
}

TEST_F(ShortcutBarTest, KeysWithoutEntryAreIgnored) {
    CONTENT_DATA* page = PageWithForm(BuildForm(kRuleRows, 4, EN_IPTABLE_INPUT));
    ASSERT_EQ(EnterContent(page), 0);
    RegistKeyFunc(ContentKeyFunc, Content());
    std::vector<chtype> before = Snapshot(Content());
    for (int key = MAP_KEY_F3; key <= MAP_KEY_F9; ++key) {
        ContentKeyFunc(key);
        EXPECT_EQ(sg_Screen.pfnCurKeyFunc, ContentKeyFunc) << key;
    }
    EXPECT_EQ(Snapshot(Content()), before);
    EXPECT_EQ(gs_stSckeyCtrl.pSckeyWin, nullptr);
    // An entry whose sender is "0" opens nothing either.
    (*page->mKey2vstrArgv[MAP_KEY_F2])[0] = "0";
    ContentKeyFunc(MAP_KEY_F2);
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, ContentKeyFunc);
    EXPECT_EQ(sg_ContentInfo.iCursorInContentWinFlag, 1);
}

TEST_F(ShortcutBarTest, EmptyPageWithFormsOpensThem) {
    CONTENT_DATA* page = ListPage({}, PROMPT_SCKEY_TOGGLE, EN_DV_MONIT);
    AddFormKey(page, MAP_KEY_F2, RecordSender, BuildForm(kRuleRows, 4, EN_DV_MONIT));
    ASSERT_EQ(EnterContent(page), 0);
    RegistKeyFunc(ContentKeyFunc, Content());
    EXPECT_EQ(sg_ContentInfo.pstContent, page);
    EXPECT_EQ(sg_Screen.iCurPromptIdx, PROMPT_SCKEY_TOGGLE);
    for (int y = 0; y < getmaxy(Content()); ++y)
        EXPECT_EQ(Line(Content(), y), "");
    // Moves, Enter and page keys on no rows do nothing.
    for (int key : {KEY_UP, KEY_DOWN, KEY_LEFT, KEY_RIGHT, KEY_PPAGE, KEY_NPAGE, 10})
        ContentKeyFunc(key);
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, ContentKeyFunc);
    ContentKeyFunc(MAP_KEY_F2);
    ASSERT_EQ(sg_Screen.pfnCurKeyFunc, ScKeyKeyFunction);
    ScKeyKeyFunction(KEY_F(9));
    EXPECT_EQ(g_sent.size(), 1u);
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, ContentKeyFunc);
    EXPECT_EQ(sg_Screen.iCurPromptIdx, PROMPT_SCKEY_TOGGLE);
    // F12 shows the page's help.
    ContentKeyFunc(KEY_F(12));
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, HelpInfoKeyFunc);
    HelpInfoKeyFunc(27);
    EXPECT_EQ(sg_Screen.pfnCurKeyFunc, ContentKeyFunc);
}

TEST_F(ShortcutBarTest, EmptyPageWithoutFormsKeepsTheGenericRule) {
    // The view frees the page it cannot show.
    CONTENT_DATA* page = ListPage({}, PROMPT_CONTENT_NO_MODIFY, EN_TCP_PORT_LISTEN);
    EXPECT_EQ(EnterContent(page), -1);
    EXPECT_EQ(sg_ContentInfo.pstContent, nullptr);
}

TEST_F(ShortcutBarTest, ChineseChoicesTranslateToTheirDigits) {
    for (int lang : {LAN_CHINESE_UTF8, LAN_CHINESE_GB2312}) {
        iLanIdx = lang;
        PageGuard form(BuildForm(kRuleRows, 4, EN_IPTABLE_INPUT));
        Field(form.Get(), 0).strSecName = pcStrLowest[lang];
        char buf[256];
        JoinFormFields(form.Get(), buf, sizeof(buf));
        EXPECT_EQ(std::string(buf),
                  std::string("*") + pcStrLowest[lang] + "*###.###.###.###*####*    *");
        EXPECT_EQ(EncodeForm(buf), "2 - 0 -") << lang;
        // The English word is no word of this language.
        Field(form.Get(), 0).strSecName = "[Lowest]";
        JoinFormFields(form.Get(), buf, sizeof(buf));
        EXPECT_EQ(EncodeForm(buf), "[Lowest] - 0 -") << lang;
    }
    iLanIdx = LAN_ENGLISH;
}

}  // namespace
