// Every set command of the simulator, case by case from the shared table:
// accepted cases change the state and save it (a reload gives the same
// state), refused ones change neither the state nor the file.
#include <gtest/gtest.h>

#include <set>

#include "agent/commands/command_parser.h"
#include "support/command_cases.h"
#include "support/sim_test_util.h"
#include "temp_dir.h"

using nvtest::kCommandCases;
using nvtest::TestEngine;

namespace {

class SimCommandCase : public ::testing::TestWithParam<nvtest::CommandCase> {
protected:
    void SetUp() override {
        nvtest::UseUtc();
        path = dir.File("state.json");
        ASSERT_TRUE(nvtest::WriteFile(path, nvtest::ReadFile(nvtest::DemoStatePath())));
    }
    nvtest::TempDir dir;
    std::string path;
};

TEST_P(SimCommandCase, AnswersAndSavesAsExpected) {
    const nvtest::CommandCase& c = GetParam();
    TestEngine e(path);
    if (c.setupCmd != 0) {
        nvagent::CmdResult s = e.Apply(c.setupCmd, c.setupPayload);
        ASSERT_EQ(s.iCode, em_ActSuccAll) << s.sDetail;
    }
    std::string fileBefore = nvtest::ReadFile(path);
    std::string bodyBefore = e.Body();

    nvagent::CmdResult r = e.Apply(c.cmd, c.payload);
    ASSERT_EQ(r.iCode, c.expect) << c.what << ": " << r.sDetail;

    std::string bodyAfter = e.Body();
    std::string fileAfter = nvtest::ReadFile(path);
    if (c.expect == em_ActSuccAll) {
        EXPECT_NE(fileAfter, fileBefore) << "the change was not saved";
        if (c.bodyChanges) {
            EXPECT_NE(bodyAfter, bodyBefore) << "the state did not change";
        }
        TestEngine reloaded(path);
        EXPECT_EQ(reloaded.Body(), bodyAfter) << "the saved state differs from the served one";
        EXPECT_EQ(nvtest::ReadFile(path), fileAfter);
    } else {
        EXPECT_FALSE(r.sDetail.empty()) << "a refusal must say why";
        EXPECT_EQ(bodyAfter, bodyBefore) << "a refused command changed the state";
        EXPECT_EQ(fileAfter, fileBefore) << "a refused command rewrote the file";
    }
}

std::string CaseName(const ::testing::TestParamInfo<nvtest::CommandCase>& info) {
    return "cmd" + std::to_string(info.param.cmd) + "_case" + std::to_string(info.index);
}

INSTANTIATE_TEST_SUITE_P(AllCommands, SimCommandCase, ::testing::ValuesIn(kCommandCases), CaseName);

TEST(SimCommandTable, EveryCommandHasAnAcceptedCaseAndTheTableIsComplete) {
    std::set<int> accepted;
    std::set<int> reserved;
    for (const nvtest::CommandCase& c : kCommandCases) {
        if (c.expect == em_ActSuccAll)
            accepted.insert(c.cmd);
        if (c.expect == em_ActNotPrepare)
            reserved.insert(c.cmd);
    }
    const std::set<int> kReserved = {12, 22, 27, 61, 62, 63};
    EXPECT_EQ(reserved, kReserved);
    for (int cmd = 4; cmd <= 63; ++cmd) {
        if (kReserved.count(cmd) == 0) {
            EXPECT_EQ(accepted.count(cmd), 1u) << "no accepted case for command " << cmd;
        }
        EXPECT_EQ(nvagent::IsSetCommand(static_cast<short>(cmd)), kReserved.count(cmd) == 0) << cmd;
    }
    EXPECT_EQ(accepted.count(2), 1u);
    EXPECT_TRUE(nvagent::IsSetCommand(2));
}

TEST(SimCommandTable, NumbersOutsideTheCatalogueAreNotKnown) {
    nvtest::UseUtc();
    TestEngine e("", nvtest::DemoStatePath());
    for (short cmd : {0, 1, 3, 64, 1000, -5}) {
        nvagent::CmdResult r = e.Apply(cmd, "");
        EXPECT_EQ(r.iCode, em_ActNotPrepare) << cmd;
        EXPECT_FALSE(r.sDetail.empty());
    }
}

}  // namespace
