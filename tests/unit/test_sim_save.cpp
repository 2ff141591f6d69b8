// Saving the state: atomic replacement of the file, and a failed save that
// answers em_ActFail and leaves the served state as it was.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <atomic>
#include <filesystem>
#include <thread>

#include "agent/atomic_file.h"
#include "support/sim_test_util.h"
#include "temp_dir.h"

using nvtest::TestEngine;

namespace {

class SimSave : public ::testing::Test {
protected:
    void SetUp() override { nvtest::UseUtc(); }
    nvtest::TempDir dir;
};

TEST_F(SimSave, FailedSaveAnswersFailAndKeepsTheState) {
    // A state path under a regular file cannot be written, even by root.
    std::string blocker = dir.File("not-a-dir");
    ASSERT_TRUE(nvtest::WriteFile(blocker, "x"));
    TestEngine e(nvtest::LoadState(nvtest::DemoStatePath()), blocker + "/state.json");
    std::string before = e.Body();
    nvagent::CmdResult r = e.Apply(57, "new-name");
    EXPECT_EQ(r.iCode, em_ActFail);
    EXPECT_EQ(r.sDetail, "Could not save the state: Not a directory.");
    EXPECT_EQ(e.Body(), before);
    EXPECT_EQ(e.engine->Snapshot().conf.sHostname, "srv-web01");
    r = e.Apply(33, "1 1 - 0 - 22 1");
    EXPECT_EQ(r.iCode, em_ActFail);
    EXPECT_EQ(e.engine->Snapshot().inputRules.size(), 5u);
    EXPECT_EQ(e.Body(), before);
}

TEST_F(SimSave, SaveReplacesTheFileAndLeavesNoTemporaryFile) {
    std::string path = dir.File("state.json");
    ASSERT_TRUE(nvtest::WriteFile(path, nvtest::ReadFile(nvtest::DemoStatePath())));
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    TestEngine e(path);
    ASSERT_EQ(e.Apply(4, "1").iCode, em_ActSuccAll);
    ASSERT_EQ(e.Apply(4, "0").iCode, em_ActSuccAll);
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(dir.Path())) {
        (void)entry;
        ++files;
    }
    EXPECT_EQ(files, 1);
    struct stat sb;
    ASSERT_EQ(stat(path.c_str(), &sb), 0);
    EXPECT_EQ(sb.st_mode & 0777, 0640u);
    EXPECT_EQ(nvtest::LoadState(path).conf.chIcmpEchoIgnoreAll, '0');
}

TEST_F(SimSave, AtomicWriteReportsTheSystemReason) {
    std::string err;
    EXPECT_FALSE(nvagent::WriteFileAtomically(dir.File("missing/state.json"), "{}", err));
    EXPECT_EQ(err, "No such file or directory");
    EXPECT_TRUE(nvagent::WriteFileAtomically(dir.File("ok.json"), "{}", err)) << err;
    EXPECT_EQ(nvtest::ReadFile(dir.File("ok.json")), "{}");
}

TEST_F(SimSave, ConcurrentChecksAndCommandsStayConsistent) {
    std::string path = dir.File("state.json");
    ASSERT_TRUE(nvtest::WriteFile(path, nvtest::ReadFile(nvtest::DemoStatePath())));
    TestEngine e(path);
    std::atomic<bool> stop{false};
    std::atomic<int> bad{0};
    std::thread reader([&] {
        while (!stop) {
            std::string b = e.Body();
            cConf_Inf c;
            cSvrState s;
            if (nvwire::DecodeStateBody(b.data(), b.size(), c, s) != em_OK)
                ++bad;
        }
    });
    for (int i = 0; i < 40; ++i) {
        EXPECT_EQ(e.Apply(33, "2 1 - 0 - " + std::to_string(1000 + i) + " 1").iCode, em_ActSuccAll);
    }
    stop = true;
    reader.join();
    EXPECT_EQ(bad, 0);
    EXPECT_EQ(nvtest::LoadState(path).inputRules.size(), 45u);
}

}  // namespace
