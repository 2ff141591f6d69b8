// Helpers of the simulator's unit tests: a fixed clock in UTC, the demo
// state, engines on a state file, and decoding of check bodies.
#ifndef NV_TESTS_SUPPORT_SIM_TEST_UTIL_H
#define NV_TESTS_SUPPORT_SIM_TEST_UTIL_H

#include <cstdlib>
#include <ctime>
#include <memory>
#include <stdexcept>
#include <string>

#include "agent/sim/sim_engine.h"
#include "agent/sim/sim_state_json.h"
#include "link/result_codes.h"
#include "wire/wire.h"

namespace nvtest {

// 2024-06-10 12:00:00 UTC, a Monday.
constexpr time_t kFixedNow = 1718020800;

inline void UseUtc() {
    setenv("TZ", "UTC", 1);
    tzset();
}

inline std::string DemoStatePath() {
    return std::string(NV_SOURCE_DIR) + "/data/demo-state.json";
}

inline nvagent::SimState LoadState(const std::string& path) {
    nvagent::SimState st;
    std::string err;
    if (!nvagent::LoadSimStateFile(path, st, err))
        throw std::runtime_error(err);
    return st;
}

// An engine on statePath (loaded first) with a clock the test can move.
struct TestEngine {
    time_t now = kFixedNow;
    std::unique_ptr<nvagent::SimEngine> engine;

    explicit TestEngine(const std::string& statePath, const std::string& loadFrom = "") {
        nvagent::SimState st = LoadState(loadFrom.empty() ? statePath : loadFrom);
        engine =
            std::make_unique<nvagent::SimEngine>(std::move(st), statePath, [this] { return now; });
    }
    TestEngine(nvagent::SimState st, const std::string& statePath) {
        engine =
            std::make_unique<nvagent::SimEngine>(std::move(st), statePath, [this] { return now; });
    }

    std::string Body() {
        std::string b;
        engine->CheckBody(b);
        return b;
    }
    nvagent::CmdResult Apply(short cmd, const std::string& payload) {
        return engine->Apply(cmd, payload);
    }
};

struct DecodedState {
    cConf_Inf conf;
    cSvrState svr;
};

inline DecodedState Decode(const std::string& body) {
    DecodedState d;
    if (nvwire::DecodeStateBody(body.data(), body.size(), d.conf, d.svr) != em_OK) {
        throw std::runtime_error("check body does not decode");
    }
    return d;
}

}  // namespace nvtest

#endif
