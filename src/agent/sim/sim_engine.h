// The simulator backend itself: the state, its file, the parsed requests and
// the cached check body, behind one mutex. MakeSimBackend builds one from a
// state file; tests build one directly to give it a clock of their own.
#ifndef NV_AGENT_SIM_ENGINE_H
#define NV_AGENT_SIM_ENGINE_H

#include <ctime>
#include <functional>
#include <mutex>
#include <string>

#include "agent/backend.h"
#include "agent/sim/sim_state.h"

namespace nvagent {

class SimEngine : public Backend {
public:
    using Clock = std::function<time_t()>;

    // statePath empty: changes stay in memory. A null clock is the system's.
    SimEngine(SimState st, std::string statePath, Clock clock = nullptr);

    void CheckBody(std::string& body) override;
    using Backend::Apply;
    CmdResult Apply(short cmd, const std::string& payload, const Peer& peer) override;
    int LangCode() override;

    // A copy of the state with the date and time of this moment.
    SimState Snapshot();

private:
    void SetShownTime(time_t real);
    void RebuildBody(time_t real);
    bool PatchBodyTime(time_t real);

    std::mutex m_mu;
    SimState m_state;
    std::string m_path;
    Clock m_clock;

    // The encoded body, valid for the real second m_bodySecond unless the
    // state changed since (m_bodyValid false).
    std::string m_body;
    bool m_bodyValid = false;
    time_t m_bodySecond = 0;
    // Where sNowDate's and sNowTime's bytes lie in m_body, when they can be
    // overwritten in place (both of their usual fixed length).
    bool m_patchable = false;
    size_t m_dateAt = 0;
    size_t m_timeAt = 0;
};

}  // namespace nvagent

#endif
