// The generated large state (10,000 firewall rules and 10,000 listeners):
// it loads, its check body carries every entry, and the cached body stays
// right as the clock moves.
#include <gtest/gtest.h>

#include "agent/sim/sim_testdata.h"
#include "support/sim_test_util.h"

using nvtest::TestEngine;

namespace {

TEST(SimLargeState, LoadsAndServesEveryEntry) {
    nvtest::UseUtc();
    nvagent::SimState st;
    std::string err;
    ASSERT_TRUE(nvagent::SimStateFromJson(nvagent::MakeLargeState(10000, 10000), st, err)) << err;
    EXPECT_EQ(st.inputRules.size(), 5000u);
    EXPECT_EQ(st.outputRules.size(), 5000u);
    TestEngine e(std::move(st), "");
    nvtest::DecodedState d = nvtest::Decode(e.Body());
    EXPECT_EQ(d.svr.vTcpListen.size(), 10000u);
    EXPECT_EQ(d.svr.vsTcpListenList.size(), 10000u);
    // The policy line, then the rules.
    EXPECT_EQ(d.svr.vsIptablesInputList.size(), 5001u);
    EXPECT_EQ(d.svr.vsIptablesOutputList.size(), 5001u);
    EXPECT_EQ(d.svr.vsIptablesInputList[1].substr(0, 6), "   1  ");
    EXPECT_EQ(d.svr.vsIptablesInputList[5000].substr(0, 6), "5000  ");
    ASSERT_EQ(e.Apply(34, "5000").iCode, em_ActSuccAll);
    EXPECT_EQ(nvtest::Decode(e.Body()).svr.vsIptablesInputList.size(), 5000u);
}

// The cached body, its date and time patched in place as the clock moves,
// is byte for byte the body a fresh engine builds at that moment. How cheap
// such a check is, is measured by bench_check_roundtrip, not here.
TEST(SimLargeState, CachedBodyAcrossClockTicksMatchesAFreshOne) {
    nvtest::UseUtc();
    nvagent::Json large = nvagent::MakeLargeState(10000, 10000);
    nvagent::SimState st;
    std::string err;
    ASSERT_TRUE(nvagent::SimStateFromJson(large, st, err));
    TestEngine e(st, "");
    e.Body();
    for (int tick : {1, 59, 3600, 86400}) {
        e.now += tick;
        std::string cached = e.Body();
        TestEngine fresh(st, "");
        fresh.now = e.now;
        ASSERT_EQ(cached, fresh.Body()) << "after a tick of " << tick << " s";
    }
    EXPECT_EQ(nvtest::Decode(e.Body()).conf.sNowTime, "13:01:00");
}

}  // namespace
