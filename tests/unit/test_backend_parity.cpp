// Both backends judge payloads with the same parser: every refused payload
// of the shared command cases gets the same code and detail from the
// simulator and from the live backend, and both answer in the console's
// language. Only payloads the parser refuses are
// sent to the live backend, so nothing reaches this machine.
#include <gtest/gtest.h>

#include "agent/commands/command_parser.h"
#include "agent/details/detail_lookup.h"
#include "agent/live/live_backend.h"
#include "agent/request_dispatch.h"
#include "support/command_cases.h"
#include "support/sim_test_util.h"
#include "temp_dir.h"
#include "wire/wire.h"

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

namespace {

// The detail an answer of backend carries for cmd and payload.
std::string AnsweredDetail(nvagent::Backend& backend, short cmd, const std::string& payload) {
    nvagent::AnswerBuffers bufs;
    nvagent::AnswerRequest(backend, cmd, payload, bufs);
    nvwire::AnswerView a;
    EXPECT_EQ(nvwire::ParseAnswer(bufs.answer.data(), bufs.answer.size(), a), em_OK);
    return a.detail;
}

// Both backends answer in the language of their settings: the live one
// keeps it in its data directory, the simulator in its state.
TEST(BackendParity, BothBackendsAnswerInTheConsolesLanguage) {
    nvtest::UseUtc();
    nvtest::TempDir dir;
    nvagent::LiveOptions opts;
    opts.sDataDir = dir.File("data");
    std::string err;
    std::unique_ptr<nvagent::Backend> live = nvagent::MakeLiveBackend(opts, err);
    ASSERT_TRUE(live) << err;
    nvtest::TestEngine sim("", nvtest::DemoStatePath());
    for (nvagent::Backend* b : {live.get(), static_cast<nvagent::Backend*>(sim.engine.get())}) {
        EXPECT_EQ(AnsweredDetail(*b, 57, "web 02"), "A host name cannot contain blanks.");
        EXPECT_EQ(b->Apply(nvwire::kCmdSetLang, "2").iCode, em_ActSuccAll);
        EXPECT_EQ(AnsweredDetail(*b, 57, "web 02"), "主机名不能包含空格。");
        EXPECT_EQ(AnsweredDetail(*b, 10, "512"), "最大线程数须大于 512。");
        EXPECT_EQ(b->Apply(nvwire::kCmdSetLang, "1").iCode, em_ActSuccAll);
        std::string gb;
        ASSERT_TRUE(nvagent::Utf8ToGb2312("主机名不能包含空格。", gb, true));
        EXPECT_EQ(AnsweredDetail(*b, 57, "web 02"), gb);
    }
}

}  // namespace
