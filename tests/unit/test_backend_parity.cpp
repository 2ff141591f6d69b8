// Both backends judge payloads with the same parser: every refused payload
// of the shared command cases gets the same code and detail from the
// simulator and from the live backend. Only payloads the parser refuses are
// sent to the live backend, so nothing reaches this machine.
#include <gtest/gtest.h>

#include "agent/commands/command_parser.h"
#include "agent/live/live_backend.h"
#include "support/command_cases.h"
#include "support/sim_test_util.h"
#include "temp_dir.h"

namespace {

TEST(BackendParity, RefusedPayloadsGetTheSameAnswerFromBothBackends) {
    nvtest::UseUtc();
    nvtest::TempDir dir;
    nvagent::LiveOptions opts;
    opts.sDataDir = dir.File("data");
    std::string err;
    std::unique_ptr<nvagent::Backend> live = nvagent::MakeLiveBackend(opts, err);
    ASSERT_TRUE(live) << err;
    nvtest::TestEngine sim("", nvtest::DemoStatePath());
    int compared = 0;
    for (const nvtest::CommandCase& c : nvtest::kCommandCases) {
        nvagent::Request req;
        nvagent::CmdResult parsed;
        if (nvagent::ParseCommand(c.cmd, c.payload, req, parsed))
            continue;
        nvagent::CmdResult a = sim.Apply(c.cmd, c.payload);
        nvagent::CmdResult b = live->Apply(c.cmd, c.payload);
        EXPECT_EQ(a.iCode, c.expect) << c.what;
        EXPECT_EQ(b.iCode, a.iCode) << c.cmd << " " << c.what;
        EXPECT_EQ(b.sDetail, a.sDetail) << c.cmd << " " << c.what;
        ++compared;
    }
    EXPECT_GT(compared, 80);
    for (short cmd : {0, 1, 3, 12, 64, -5}) {
        EXPECT_EQ(live->Apply(cmd, "").iCode, em_ActNotPrepare);
        EXPECT_EQ(live->Apply(cmd, "").sDetail, sim.Apply(cmd, "").sDetail);
    }
}

}  // namespace
