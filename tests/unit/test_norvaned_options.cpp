// norvaned's backend and data-directory options.
#include <gtest/gtest.h>

#include <vector>

#include "agent/norvaned_options.h"

namespace {

bool Parse(std::vector<std::string> args, nvagent::NorvanedOptions& o, std::string& err) {
    args.insert(args.begin(), "norvaned");
    std::vector<char*> argv;
    for (std::string& a : args)
        argv.push_back(&a[0]);
    argv.push_back(nullptr);
    return nvagent::ParseNorvanedOptions(static_cast<int>(args.size()), argv.data(), o, err);
}

TEST(NorvanedOptions, SystemBackendAndDataDirectory) {
    nvagent::NorvanedOptions o;
    std::string err;
    ASSERT_TRUE(Parse({"--backend", "system"}, o, err)) << err;
    EXPECT_EQ(o.sBackend, "system");
    EXPECT_EQ(o.sDataDir, "/etc/norvane");
    nvagent::NorvanedOptions d;
    ASSERT_TRUE(Parse({"--backend", "system", "--data-dir", "/srv/nv"}, d, err)) << err;
    EXPECT_EQ(d.sDataDir, "/srv/nv");
    nvagent::NorvanedOptions s;
    ASSERT_TRUE(Parse({}, s, err));
    EXPECT_EQ(s.sBackend, "sim");
}

TEST(NorvanedOptions, BadValuesAreUsageErrors) {
    nvagent::NorvanedOptions o;
    std::string err;
    EXPECT_FALSE(Parse({"--backend", "live"}, o, err));
    EXPECT_EQ(err, "unknown backend 'live' (available: sim, system)");
    nvagent::NorvanedOptions e;
    EXPECT_FALSE(Parse({"--data-dir", ""}, e, err));
    EXPECT_EQ(err, "--data-dir needs a non-empty path");
    nvagent::NorvanedOptions m;
    EXPECT_FALSE(Parse({"--data-dir"}, m, err));
    EXPECT_NE(err.find("needs a value"), std::string::npos);
    EXPECT_NE(std::string(nvagent::NorvanedUsage()).find("--data-dir DIR"), std::string::npos);
}

TEST(NorvanedOptions, MonitorInterval) {
    nvagent::NorvanedOptions o;
    std::string err;
    ASSERT_TRUE(Parse({"--backend", "system"}, o, err)) << err;
    EXPECT_EQ(o.iMonitorIntervalMs, 0);
    ASSERT_TRUE(Parse({"--monitor-interval-ms", "200"}, o, err)) << err;
    EXPECT_EQ(o.iMonitorIntervalMs, 200);
    ASSERT_TRUE(Parse({"--monitor-interval-ms", "3600000"}, o, err)) << err;
    EXPECT_EQ(o.iMonitorIntervalMs, 3600000);
    for (const char* bad : {"0", "-5", "", "20ms", "3600001", "99999999999", " 5"}) {
        nvagent::NorvanedOptions b;
        EXPECT_FALSE(Parse({"--monitor-interval-ms", bad}, b, err)) << bad;
        EXPECT_EQ(err, std::string("--monitor-interval-ms needs a number of milliseconds from 1 "
                                   "to 3600000, not '") +
                           bad + "'");
    }
    EXPECT_NE(std::string(nvagent::NorvanedUsage()).find("--monitor-interval-ms N"),
              std::string::npos);
}

}  // namespace

namespace {

TEST(NorvanedOptions, RunDirectoryAndTheTestSessionPort) {
    nvagent::NorvanedOptions o;
    std::string err;
    ASSERT_TRUE(Parse({"--backend", "system"}, o, err)) << err;
    EXPECT_EQ(o.sRunDir, "/run/norvane");
    EXPECT_EQ(o.iGuardSessionPort, 0);
    ASSERT_TRUE(Parse({"--run-dir", "/tmp/nvrun", "--guard-session-port", "2222"}, o, err)) << err;
    EXPECT_EQ(o.sRunDir, "/tmp/nvrun");
    EXPECT_EQ(o.iGuardSessionPort, 2222);
    nvagent::NorvanedOptions e;
    EXPECT_FALSE(Parse({"--run-dir", ""}, e, err));
    EXPECT_EQ(err, "--run-dir needs a non-empty path");
    for (const char* bad : {"0", "65536", "-1", "22x", ""}) {
        nvagent::NorvanedOptions b;
        EXPECT_FALSE(Parse({"--guard-session-port", bad}, b, err)) << bad;
        EXPECT_EQ(err, std::string("--guard-session-port needs a port from 1 to 65535, not '") +
                           bad + "'");
    }
}

}  // namespace
