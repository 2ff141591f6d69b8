// The live agent's refusals in the console's language, inside the namespace
// sandbox: after each language command the answers carry the catalogue's
// short form in English, in GB2312 or in UTF-8 Chinese, within the
// information line, while the journal keeps the full English sentence.
#include <gtest/gtest.h>

#include "agent/details/detail_lookup.h"
#include "agent/details/detail_text.h"
#include "link/result_codes.h"
#include "live_sandbox.h"
#include "raw_client.h"

namespace {

struct Case {
    short cmd;
    std::string payload;
    std::string full;  // the sentence the live backend builds
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
        {52, "nosuch0", "There is no interface named nosuch0."},
        {54, "lo", "The loopback interface cannot use DHCP."},
        {56, "nosuchuser Zq9-x Zq9-x", "There is no user named nosuchuser."},
        {57, host, "The host name is already " + host + "."},
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
            // The catalogue's short form, in the language and encoding set.
            std::string want = nvagent::LocaliseDetail(c.full, lang);
            EXPECT_EQ(a.sDetail, want) << c.full;
            if (lang != 0) {
                std::string utf8 = nvagent::LocaliseDetail(c.full, 2);
                EXPECT_NE(utf8, c.full);
                bool chinese = false;
                for (char ch : utf8)
                    chinese = chinese || static_cast<unsigned char>(ch) >= 0x80;
                EXPECT_TRUE(chinese) << utf8;
                std::string gb;
                ASSERT_TRUE(nvagent::Utf8ToGb2312(utf8, gb, true));
                EXPECT_EQ(lang == 1 ? gb : utf8, a.sDetail);
            }
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
