// The live agent's refusals in the console's language, inside the namespace
// sandbox: after each language command the answers carry the short form in
// English, in GB2312 or in UTF-8 Chinese, within the information line,
// while the journal keeps the full English sentence.
#include <gtest/gtest.h>

#include "agent/details/detail_text.h"
#include "link/result_codes.h"
#include "live_sandbox.h"
#include "raw_client.h"

namespace {

struct Case {
    short cmd;
    std::string payload;
    std::string full;     // the sentence the live backend builds
    std::string chinese;  // its short form in Chinese, UTF-8
};

TEST(LiveDetails, RefusalsComeInTheConsolesLanguage) {
    if (!nvtest::InSandbox())
        GTEST_SKIP() << "runs only inside tests/support/nv-sandbox.sh";
    nvtest::LiveAgent agent;
    std::string err;
    ASSERT_TRUE(agent.Start(&err)) << err;
    std::string host = nvtest::Tool({"hostname"});
    ASSERT_FALSE(host.empty());
    host.pop_back();
    // The name written to /etc/hostname and /etc/hosts too, so that
    // setting it again changes nothing.
    ASSERT_GE(agent.Send(57, host), 0);
    const std::vector<Case> cases = {
        {52, "nosuch0", "There is no interface named nosuch0.", "没有名为 nosuch0 的接口。"},
        {54, "lo", "The loopback interface cannot use DHCP.", "回环接口不能使用 DHCP。"},
        {56, "nosuchuser Zq9-x Zq9-x", "There is no user named nosuchuser.",
         "没有名为 nosuchuser 的用户。"},
        {57, host, "The host name is already " + host + ".", "主机名已是 " + host + "。"},
    };
    for (int lang : {1, 2, 0}) {
        SCOPED_TRACE("language " + std::to_string(lang));
        nvtest::Answer set = nvtest::Request(agent.SocketPath(), 2, std::to_string(lang));
        ASSERT_TRUE(set.bOk) << set.sError;
        ASSERT_EQ(set.result, em_ActSuccAll) << set.sDetail;
        for (const Case& c : cases) {
            nvtest::Answer a = nvtest::Request(agent.SocketPath(), c.cmd, c.payload, 30000);
            ASSERT_TRUE(a.bOk) << a.sError;
            EXPECT_NE(a.result, em_ActSuccAll);
            std::string want = c.full;
            if (lang == 2)
                want = c.chinese;
            if (lang == 1) {
                ASSERT_TRUE(nvagent::Utf8ToGb2312(c.chinese, want, true));
            }
            EXPECT_EQ(a.sDetail, want) << c.full;
            EXPECT_LE(a.sDetail.size(), nvagent::kDetailWidth);
            // The journal keeps the sentence whole, in English.
            std::string full;
            agent.Send(c.cmd, c.payload, &full);
            EXPECT_EQ(full, c.full);
        }
    }
    EXPECT_EQ(agent.Stop(), 0) << agent.Process().ReadStderr();
}

}  // namespace
