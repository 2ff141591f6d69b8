// Date and time on the live backend go through the one clock setter, which
// this test replaces (the clock cannot be isolated); the date keeps the time
// of day and the time keeps the date.
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

#include "agent/live/live_backend.h"
#include "link/result_codes.h"
#include "temp_dir.h"

namespace {

class LiveClock : public ::testing::Test {
protected:
    void SetUp() override {
        setenv("TZ", "UTC", 1);
        tzset();
        nvagent::LiveOptions o;
        o.sDataDir = dir.File("data");
        o.bRestoreFirewall = false;
        o.setClock = [this](time_t when, std::string& err) {
            calls++;
            set = when;
            if (fail)
                err = "Operation not permitted";
            return !fail;
        };
        std::string err;
        backend = nvagent::MakeLiveBackend(o, err);
        ASSERT_TRUE(backend) << err;
    }
    static struct tm Utc(time_t t) {
        struct tm r {};
        gmtime_r(&t, &r);
        return r;
    }
    nvtest::TempDir dir;
    std::unique_ptr<nvagent::Backend> backend;
    int calls = 0;
    time_t set = 0;
    bool fail = false;
};

TEST_F(LiveClock, DateKeepsTheTimeOfDay) {
    time_t before = time(nullptr);
    nvagent::CmdResult r = backend->Apply(58, "2024 2 9");
    ASSERT_EQ(r.iCode, em_ActSuccAll) << r.sDetail;
    ASSERT_EQ(calls, 1);
    struct tm t = Utc(set);
    EXPECT_EQ(t.tm_year, 124);
    EXPECT_EQ(t.tm_mon, 1);
    EXPECT_EQ(t.tm_mday, 9);
    struct tm now = Utc(before);
    EXPECT_NEAR(t.tm_hour * 3600 + t.tm_min * 60 + t.tm_sec,
                now.tm_hour * 3600 + now.tm_min * 60 + now.tm_sec, 2);
}

// The journal's values: the date shown before the change and the one the
// clock was set to, though the replaced setter leaves the clock unmoved.
TEST_F(LiveClock, TheChangeRecordsTheOldAndTheNewDateAndTime) {
    char today[16];
    time_t now = time(nullptr);
    struct tm t = Utc(now);
    strftime(today, sizeof today, "%Y-%m-%d", &t);
    nvagent::CmdResult r = backend->Apply(58, "2024 2 9");
    ASSERT_EQ(r.iCode, em_ActSuccAll) << r.sDetail;
    EXPECT_EQ(r.sOldValues, std::string("{\"sNowDate\":\"") + today + "\"}");
    EXPECT_EQ(r.sNewValues, "{\"sNowDate\":\"2024-02-09\"}");
    r = backend->Apply(59, "13 45 30");
    ASSERT_EQ(r.iCode, em_ActSuccAll) << r.sDetail;
    EXPECT_EQ(r.sNewValues, "{\"sNowTime\":\"13:45:30\"}");
    EXPECT_EQ(r.sOldValues.rfind("{\"sNowTime\":\"", 0), 0u) << r.sOldValues;
    fail = true;
    r = backend->Apply(59, "13 45 31");
    EXPECT_EQ(r.iCode, em_ActFail);
    EXPECT_EQ(r.sOldValues, "");
    EXPECT_EQ(r.sNewValues, "");
}

TEST_F(LiveClock, TimeKeepsTheDate) {
    time_t before = time(nullptr);
    nvagent::CmdResult r = backend->Apply(59, "13 45 30");
    ASSERT_EQ(r.iCode, em_ActSuccAll) << r.sDetail;
    struct tm t = Utc(set);
    struct tm now = Utc(before);
    EXPECT_EQ(t.tm_hour, 13);
    EXPECT_EQ(t.tm_min, 45);
    EXPECT_EQ(t.tm_sec, 30);
    EXPECT_EQ(t.tm_yday, now.tm_yday);
}

TEST_F(LiveClock, RefusedValuesNeverReachTheSetter) {
    EXPECT_EQ(backend->Apply(58, "2023 2 29").iCode, em_ActPostValueNotValid);
    EXPECT_EQ(backend->Apply(59, "24 0 0").iCode, em_ActPostValueNotValid);
    EXPECT_EQ(backend->Apply(58, "- - -").iCode, em_ActPostValueNotValid);
    EXPECT_EQ(calls, 0);
}

TEST_F(LiveClock, SetterFailureIsReported) {
    fail = true;
    nvagent::CmdResult r = backend->Apply(58, "2030 1 1");
    EXPECT_EQ(r.iCode, em_ActFail);
    EXPECT_EQ(r.sDetail, "The clock was not set: Operation not permitted.");
}

}  // namespace
