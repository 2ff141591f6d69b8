// The Net Interface page in a terminal against a real norvaned: the agent's
// interface lines as they come, the interface-name forms of F2 to F4 with
// their reminder, the six-field manual form of F5, the payloads of commands
// 52 to 55, the page rebuilt after success with the focus on row 0, and an
// empty interface list whose function keys still open their forms.
#include <gtest/gtest.h>

#include "test_screen_form_util.h"

namespace {

using namespace nvform;

const std::vector<FormRow> kNameForm = {{"Interface Name:", "    ", 10, "(eg. eth0)"}};

std::vector<FormRow> ManualForm(const std::vector<std::string>& v) {
    const char* labels[] = {"Interface Name:", "IP:", "Mask:", "Gate way:", "DNS1:", "DNS2:"};
    std::vector<FormRow> rows;
    for (int i = 0; i < 6; ++i)
        rows.push_back({labels[i], v[i], i == 0 ? 10 : 15, ""});
    return rows;
}

TEST(FormNetIf, NameFormsSendTheNameAndThePageIsRebuilt) {
    FormConsole c;
    ASSERT_TRUE(c.Start());
    ScreenSession& s = c.S();
    tVecStr lines = c.LoadState()->objSS.vsIfconfigList;
    ASSERT_GE(lines.size(), 2u);
    ASSERT_TRUE(c.Open(kNetIfLeaf, PROMPT_NET_INTERFACE));
    ASSERT_TRUE(Eventually(s, [&] { return ListPageShows(s, lines, 0, PROMPT_NET_INTERFACE); }));
    s.SendKey(Key::Down);
    ASSERT_TRUE(Eventually(s, [&] { return ListPageShows(s, lines, 1, PROMPT_NET_INTERFACE); }));

    // F2 takes eth1 down: command 52 with the name alone.
    size_t from = c.JournalSize();
    s.SendKey(Key::F2);
    ASSERT_TRUE(Eventually(s, [&] { return FormShows(s, kNameForm, 0); }));
    s.SendKey(Key::Enter);
    s.SendText("eth1");
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] {
        return FormShows(s, {{"Interface Name:", "eth1", 10, "(eg. eth0)"}}, 0);
    }));
    s.SendKey(Key::F9);
    int result = 0;
    ASSERT_TRUE(Eventually(s, [&] { return OneSet(c, from, 52, "eth1", &result); }));
    ASSERT_EQ(result, 7);
    ASSERT_TRUE(Eventually(s, [&] { return InfoStartsWith(s, c.ResultText(7)); }));
    tVecStr after = c.LoadState()->objSS.vsIfconfigList;
    EXPECT_NE(after, lines);
    ASSERT_TRUE(Eventually(s, [&] { return ListPageShows(s, after, 0, PROMPT_NET_INTERFACE); }));

    // F3 and F4 have forms of their own, each sending its command.
    const struct {
        Key key;
        int cmd;
    } keys[] = {{Key::F3, 53}, {Key::F4, 54}};
    for (const auto& k : keys) {
        from = c.JournalSize();
        s.SendKey(k.key);
        ASSERT_TRUE(Eventually(s, [&] { return FormShows(s, kNameForm, 0); }));
        s.SendKey(Key::Enter);
        s.SendText("eth1");
        s.SendKey(Key::Enter);
        s.SendKey(Key::F9);
        int code = 0;
        ASSERT_TRUE(Eventually(s, [&] { return OneSet(c, from, k.cmd, "eth1", &code); }));
        ASSERT_TRUE(Eventually(s, [&] { return InfoStartsWith(s, c.ResultText(code)); }));
    }
}

TEST(FormNetIf, ManualFormWithNameAndIpSendsFourDashes) {
    FormConsole c;
    ASSERT_TRUE(c.Start());
    ScreenSession& s = c.S();
    ASSERT_TRUE(c.Open(kNetIfLeaf, PROMPT_NET_INTERFACE));
    size_t from = c.JournalSize();
    s.SendKey(Key::F5);
    const std::string k4 = "    ";
    ASSERT_TRUE(Eventually(s, [&] {
        return FormShows(s, ManualForm({k4, k4, k4, k4, k4, k4}), 0);
    }));
    s.SendKey(Key::Enter);
    s.SendText("eth0");
    s.SendKey(Key::Enter);
    s.SendKey(Key::Down);
    s.SendKey(Key::Enter);
    s.SendText("10.0.0.9");
    s.SendKey(Key::Enter);
    ASSERT_TRUE(Eventually(s, [&] {
        return FormShows(s, ManualForm({"eth0", "10.0.0.9", k4, k4, k4, k4}), 1);
    }));
    s.SendKey(Key::F9);
    int result = 0;
    ASSERT_TRUE(
        Eventually(s, [&] { return OneSet(c, from, 55, "eth0 10.0.0.9 - - - -", &result); }));
    ASSERT_TRUE(Eventually(s, [&] { return InfoStartsWith(s, c.ResultText(result)); }));
}

TEST(FormNetIf, EmptyInterfaceListStillOpensTheForms) {
    FormConsole c;
    ASSERT_TRUE(c.Start(DemoStateWith({{"simInterfaces", nlohmann::json::array()}})));
    ScreenSession& s = c.S();
    ASSERT_TRUE(c.LoadState()->objSS.vsIfconfigList.empty());
    ASSERT_TRUE(c.Open(kNetIfLeaf, PROMPT_NET_INTERFACE));
    ASSERT_TRUE(Eventually(s, [&] { return ListPageShows(s, {}, 0, PROMPT_NET_INTERFACE); }));
    s.SendKey(Key::Down);
    s.SendKey(Key::F3);
    ASSERT_TRUE(Eventually(s, [&] { return FormShows(s, kNameForm, 0); }));
    s.SendKey(Key::Esc);
    ASSERT_TRUE(Eventually(s, [&] { return ListPageShows(s, {}, 0, PROMPT_NET_INTERFACE); }));
    s.SendKey(Key::F5);
    const std::string k4 = "    ";
    ASSERT_TRUE(Eventually(s, [&] {
        return FormShows(s, ManualForm({k4, k4, k4, k4, k4, k4}), 0);
    }));
    s.SendKey(Key::Esc);
    s.SendKey(Key::Esc);
    ASSERT_TRUE(Eventually(s, [&] { return PromptShows(s, PROMPT_MENU, LAN_ENGLISH); }));
}

}  // namespace
