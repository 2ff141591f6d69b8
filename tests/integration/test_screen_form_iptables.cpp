// The Input and Output chain pages in a terminal against a real norvaned:
// the agent's rule lines, the seven-field add-rule form (defaults sending
// 1 1 - 0 - 0 1, a destination port of 22 sending 1 1 - 0 - 22 1), the
// policy form with a flag that is neither "1" nor "2" sending "-", an empty
// chain whose F2 to F5 still open their forms, and choices shown in Chinese
// (UTF-8 and GB2312) still sent as their digits.
#include <gtest/gtest.h>

#include "test_screen_form_util.h"

namespace {

using namespace nvform;

std::vector<FormRow> RuleForm(int lang, const std::string& dport = "####",
                              const char* const* proto = pcStrTcp) {
    const std::string ip = "###.###.###.###", port = "####";
    return {{Raw(pcStrPriority, lang), Raw(pcStrHighest, lang), 0, ""},
            {Raw(pcStrProtocol, lang), Raw(proto, lang), 0, ""},
            {Raw(pcStrSrcIp, lang), ip, 20, ""},
            {Raw(pcStrSrcPort, lang), port, 5, ""},
            {Raw(pcStrDesIp, lang), ip, 18, ""},
            {Raw(pcStrDesPort, lang), dport, 5, ""},
            {Raw(pcStrAction, lang), Raw(pcStrAccept, lang), 0, ""}};
}

TEST(FormIptables, DefaultRuleThenPort22AndThePageRebuilt) {
    FormConsole c;
    ASSERT_TRUE(c.Start("", LAN_ENGLISH, 24, 100));
    ScreenSession& s = c.S();
    tVecStr lines = c.LoadState()->objSS.vsIptablesInputList;
    ASSERT_FALSE(lines.empty());
    ASSERT_TRUE(c.Open(kInputLeaf, PROMPT_SCKEY_POLICY));
    ASSERT_TRUE(Eventually(s, [&] { return ListPageShows(s, lines, 0, PROMPT_SCKEY_POLICY); }));
    s.SendKey(Key::Down);
    size_t from = c.JournalSize();
    s.SendKey(Key::F2);
    ASSERT_TRUE(Eventually(s, [&] { return FormShows(s, RuleForm(LAN_ENGLISH), 0); }));
    s.SendKey(Key::F9);
    int first = 0, result = 0;
    ASSERT_TRUE(Eventually(s, [&] { return OneSet(c, from, 33, "1 1 - 0 - 0 1", &first); }));
    ASSERT_TRUE(Eventually(s, [&] { return InfoStartsWith(s, c.ResultText(first)); }));

    from = c.JournalSize();
    s.SendKey(Key::F2);
    ASSERT_TRUE(Eventually(s, [&] { return FormShows(s, RuleForm(LAN_ENGLISH), 0); }));
    s.SendKey(Key::Down, 5);
    s.SendKey(Key::Enter);
    s.SendText("22");
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] { return FormShows(s, RuleForm(LAN_ENGLISH, "22"), 5); }));
    s.SendKey(Key::F9);
    ASSERT_TRUE(Eventually(s, [&] { return OneSet(c, from, 33, "1 1 - 0 - 22 1", &result); }));
    ASSERT_EQ(result, 7);
    tVecStr after = c.LoadState()->objSS.vsIptablesInputList;
    EXPECT_EQ(after.size(), lines.size() + 1 + (first == 7 ? 1 : 0));
    ASSERT_TRUE(Eventually(s, [&] {
        return And(ListPageShows(s, after, 0, PROMPT_SCKEY_POLICY),
                   InfoStartsWith(s, c.ResultText(7)));
    }));
}

TEST(FormIptables, PolicyNeitherAcceptNorDropSendsADash) {
    const struct {
        FormLeaf leaf;
        int cmd;
    } chains[] = {{kInputLeaf, 32}, {kOutputLeaf, 36}};
    for (const auto& ch : chains) {
        FormConsole c;
        ASSERT_TRUE(c.Start(
            DemoStateWith({{"chIptablesInputPolicy", "0"}, {"chIptablesOutputPolicy", "0"}}), 0, 24,
            100));
        ScreenSession& s = c.S();
        ASSERT_TRUE(c.Open(ch.leaf, PROMPT_SCKEY_POLICY));
        size_t from = c.JournalSize();
        s.SendKey(Key::F5);
        const std::string q = "Please choose the modify policy:";
        ASSERT_TRUE(Eventually(s, [&] { return FormShows(s, {{q, "    ", 0, ""}}, 0); }));
        s.SendKey(Key::F9);
        int result = 0;
        ASSERT_TRUE(Eventually(s, [&] { return OneSet(c, from, ch.cmd, "-", &result); }));
        ASSERT_TRUE(Eventually(s, [&] { return InfoStartsWith(s, c.ResultText(result)); }));
    }
}

TEST(FormIptables, EmptyChainStillOpensItsFourForms) {
    FormConsole c;
    ASSERT_TRUE(c.Start(DemoStateWith({{"simOutputRules", nlohmann::json::array()}})));
    ScreenSession& s = c.S();
    // Only the policy line is left.
    tVecStr lines = c.LoadState()->objSS.vsIptablesOutputList;
    ASSERT_EQ(lines, tVecStr({"Policy: accept"}));
    ASSERT_TRUE(c.Open(kOutputLeaf, PROMPT_SCKEY_POLICY));
    ASSERT_TRUE(Eventually(s, [&] { return ListPageShows(s, lines, 0, PROMPT_SCKEY_POLICY); }));
    const std::string k4 = "    ";
    const std::vector<std::vector<FormRow>> forms = {
        RuleForm(LAN_ENGLISH),
        {{"Please input the index you want to delete:", k4, 5, ""}},
        {{"Are you sure to clear the output iptable?", "[No]", 0, ""}},
        {{"Please choose the modify policy:", "[Accept]", 0, ""}}};
    const Key keys[] = {Key::F2, Key::F3, Key::F4, Key::F5};
    size_t from = c.JournalSize();
    for (size_t i = 0; i < forms.size(); ++i) {
        s.SendKey(keys[i]);
        ASSERT_TRUE(Eventually(s, [&] { return FormShows(s, forms[i], 0); })) << i;
        s.SendKey(Key::Esc);
        ASSERT_TRUE(Eventually(s, [&] { return ListPageShows(s, lines, 0, PROMPT_SCKEY_POLICY); }));
    }
    EXPECT_TRUE(c.SetsFrom(from).empty());
    // F12 shows the page's help.
    s.SendKey(Key::F12);
    ASSERT_TRUE(Eventually(s, [&] { return PromptShows(s, PROMPT_HELP, LAN_ENGLISH); }));
    s.SendKey(Key::Esc);
    ASSERT_TRUE(Eventually(s, [&] { return ListPageShows(s, lines, 0, PROMPT_SCKEY_POLICY); }));
}

TEST(FormIptables, ChineseChoicesAreSentAsDigits) {
    for (int lang : {LAN_CHINESE_UTF8, LAN_CHINESE_GB2312}) {
        FormConsole c;
        ASSERT_TRUE(c.Start("", lang, 24, 100));
        ScreenSession& s = c.S();
        ASSERT_TRUE(c.Open(kInputLeaf, PROMPT_SCKEY_POLICY));
        size_t from = c.JournalSize();
        s.SendKey(Key::F2);
        ASSERT_TRUE(Eventually(s, [&] { return FormShows(s, RuleForm(lang), 0, lang); }));
        s.SendKey(Key::Down);
        s.SendKey(Key::Enter);
        ASSERT_TRUE(s.WaitForTextAnywhere(OnScreen(pcStrUdp, lang)));
        s.SendKey(Key::Down);
        s.SendKey(Key::Enter);
        ASSERT_TRUE(
            Eventually(s, [&] { return FormShows(s, RuleForm(lang, "####", pcStrUdp), 1, lang); }));
        s.SendKey(Key::F9);
        ASSERT_TRUE(Eventually(s, [&] { return OneSet(c, from, 33, "1 2 - 0 - 0 1"); })) << lang;
    }
}

}  // namespace

namespace {

using namespace nvform;

TEST(FormIptablesChoices, LowestUdpDropAreSentAsTwos) {
    FormConsole c;
    ASSERT_TRUE(c.Start("", LAN_ENGLISH, 24, 100));
    ScreenSession& s = c.S();
    ASSERT_TRUE(c.Open(kOutputLeaf, PROMPT_SCKEY_POLICY));
    size_t from = c.JournalSize();
    s.SendKey(Key::F2);
    ASSERT_TRUE(Eventually(s, [&] { return FormShows(s, RuleForm(LAN_ENGLISH), 0); }));
    // The second choice of rows 0, 1 and 6: Down moves between them.
    for (int downs : {0, 1, 5}) {
        s.SendKey(Key::Down, downs);
        s.SendKey(Key::Enter);
        ASSERT_TRUE(Eventually(s, [&] { return PromptShows(s, PROMPT_CHOOSE, LAN_ENGLISH); }));
        s.SendKey(Key::Down);
        s.SendKey(Key::Enter);
        ASSERT_TRUE(
            Eventually(s, [&] { return PromptShows(s, PROMPT_CONTENT_NEW_LEVEL, LAN_ENGLISH); }));
    }
    std::vector<FormRow> chosen = RuleForm(LAN_ENGLISH, "####", pcStrUdp);
    chosen[0].sValue = "[Lowest]";
    chosen[6].sValue = "[Drop]";
    ASSERT_TRUE(Eventually(s, [&] { return FormShows(s, chosen, 6); }));
    s.SendKey(Key::F9);
    ASSERT_TRUE(Eventually(s, [&] { return OneSet(c, from, 37, "2 2 - 0 - 0 2"); }));
}

}  // namespace
