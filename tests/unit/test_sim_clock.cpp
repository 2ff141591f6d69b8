// The reported date and time: the local clock plus the offset that the date
// and time commands set, kept in the state file; and the cached check body,
// whose date and time must always equal a freshly encoded state.
#include <gtest/gtest.h>

#include "support/sim_test_util.h"
#include "temp_dir.h"

using nvtest::TestEngine;

namespace {

class SimClock : public ::testing::Test {
protected:
    void SetUp() override { nvtest::UseUtc(); }
    static std::string Date(TestEngine& e) { return nvtest::Decode(e.Body()).conf.sNowDate; }
    static std::string Time(TestEngine& e) { return nvtest::Decode(e.Body()).conf.sNowTime; }
};

TEST_F(SimClock, DateAndTimeFollowTheClock) {
    TestEngine e("", nvtest::DemoStatePath());
    EXPECT_EQ(Date(e), "2024-06-10");
    EXPECT_EQ(Time(e), "12:00:00");
    e.now += 1;
    EXPECT_EQ(Time(e), "12:00:01");
    e.now += 12 * 3600 - 2;
    EXPECT_EQ(Date(e), "2024-06-10");
    EXPECT_EQ(Time(e), "23:59:59");
    e.now += 1;
    EXPECT_EQ(Date(e), "2024-06-11");
    EXPECT_EQ(Time(e), "00:00:00");
}

TEST_F(SimClock, DateAndTimeFollowTheLocalZone) {
    setenv("TZ", "UTC-8", 1);
    tzset();
    TestEngine e("", nvtest::DemoStatePath());
    EXPECT_EQ(Time(e), "20:00:00");
    nvtest::UseUtc();
}

TEST_F(SimClock, DateCommandMovesTheOffsetAndTheClockKeepsRunning) {
    TestEngine e("", nvtest::DemoStatePath());
    ASSERT_EQ(e.Apply(58, "2024 2 9").iCode, em_ActSuccAll);
    EXPECT_EQ(Date(e), "2024-02-09");
    EXPECT_EQ(Time(e), "12:00:00");
    e.now += 65;
    EXPECT_EQ(Date(e), "2024-02-09");
    EXPECT_EQ(Time(e), "12:01:05");
    nvagent::SimState s = e.engine->Snapshot();
    EXPECT_EQ(s.clockOffset, -122 * 86400LL);
}

TEST_F(SimClock, TimeCommandKeepsTheDate) {
    TestEngine e("", nvtest::DemoStatePath());
    ASSERT_EQ(e.Apply(59, "7 5 3").iCode, em_ActSuccAll);
    EXPECT_EQ(Date(e), "2024-06-10");
    EXPECT_EQ(Time(e), "07:05:03");
    EXPECT_EQ(e.engine->Snapshot().clockOffset, -(4 * 3600 + 54 * 60 + 57));
    nvagent::CmdResult r = e.Apply(59, "7 5 3");
    EXPECT_EQ(r.iCode, em_ActNeedNoSet);
    EXPECT_EQ(r.sDetail, "The time is already 07:05:03.");
}

TEST_F(SimClock, LeapDayIsAccepted) {
    TestEngine e("", nvtest::DemoStatePath());
    EXPECT_EQ(e.Apply(58, "2000 2 29").iCode, em_ActSuccAll);
    EXPECT_EQ(Date(e), "2000-02-29");
    nvagent::CmdResult r = e.Apply(58, "1900 2 29");
    EXPECT_EQ(r.iCode, em_ActPostValueNotValid);
    r = e.Apply(58, "2100 2 29");
    EXPECT_EQ(r.iCode, em_ActPostValueNotValid);
    EXPECT_EQ(r.sDetail, "2100-02-29 is not a calendar date.");
}

TEST_F(SimClock, OffsetIsSavedAndReloaded) {
    nvtest::TempDir dir;
    std::string path = dir.File("state.json");
    ASSERT_TRUE(nvtest::WriteFile(path, nvtest::ReadFile(nvtest::DemoStatePath())));
    TestEngine e(path);
    ASSERT_EQ(e.Apply(58, "2030 12 31").iCode, em_ActSuccAll);
    ASSERT_EQ(e.Apply(59, "23 59 58").iCode, em_ActSuccAll);
    TestEngine again(path);
    again.now = e.now + 3;
    EXPECT_EQ(Date(again), "2031-01-01");
    EXPECT_EQ(Time(again), "00:00:01");
}

TEST_F(SimClock, CachedBodyEqualsAFreshEncodingAtEverySecond) {
    TestEngine e("", nvtest::DemoStatePath());
    for (int i = 0; i < 5; ++i) {
        e.now += 3600 * 7 + 13;
        std::string cached = e.Body();
        TestEngine fresh(e.engine->Snapshot(), "");
        fresh.now = e.now;
        EXPECT_EQ(cached, fresh.Body()) << i;
    }
}

TEST_F(SimClock, FarFutureDatesStillEncodeCorrectly) {
    TestEngine e("", nvtest::DemoStatePath());
    ASSERT_EQ(e.Apply(58, "9999 12 31").iCode, em_ActSuccAll);
    ASSERT_EQ(e.Apply(59, "23 59 59").iCode, em_ActSuccAll);
    EXPECT_EQ(Date(e), "9999-12-31");
    e.now += 1;
    EXPECT_EQ(Date(e), "10000-01-01");
    EXPECT_EQ(Time(e), "00:00:00");
    e.now += 1;
    EXPECT_EQ(Time(e), "00:00:01");
}

}  // namespace
