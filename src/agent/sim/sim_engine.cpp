// The simulator engine: command application with save-or-roll-back, and the
// cached check body whose date and time bytes are patched in place as the
// clock moves, so a check costs one copy of the cached bytes.
#include "agent/sim/sim_engine.h"

#include "agent/atomic_file.h"
#include "agent/change_values.h"
#include "agent/commands/command_parser.h"
#include "agent/display_lines.h"
#include "agent/sim/sim_apply.h"
#include "agent/sim/sim_state_json.h"
#include "link/result_codes.h"
#include "wire/wire.h"

namespace nvagent {

namespace {

time_t SystemClock() {
    return time(nullptr);
}

// The state file's text; false with err when a string cannot be written.
bool StateText(const SimState& st, std::string& text, std::string& err) {
    try {
        text = SimStateToJson(st).dump(2) + "\n";
        return true;
    } catch (const Json::exception& e) {
        err = e.what();
        return false;
    }
}

}  // namespace

SimEngine::SimEngine(SimState st, std::string statePath, Clock clock)
    : m_state(std::move(st)),
      m_path(std::move(statePath)),
      m_clock(clock ? std::move(clock) : Clock(SystemClock)) {}

void SimEngine::SetShownTime(time_t real) {
    FormatDateTime(real + static_cast<time_t>(m_state.clockOffset), m_state.conf.sNowDate,
                   m_state.conf.sNowTime);
}

void SimEngine::RebuildBody(time_t real) {
    SetShownTime(real);
    m_body.clear();
    nvwire::Writer w(m_body);
    nvwire::EncodeConf(w, m_state.conf);
    size_t confLen = m_body.size();
    nvwire::EncodeSvr(w, m_state.svr);
    // The record ends with sNowDate, sNowTime and sVersion, each a u32 length
    // and its bytes; the check below guards the arithmetic.
    const std::string& d = m_state.conf.sNowDate;
    const std::string& t = m_state.conf.sNowTime;
    size_t tail = 4 + m_state.conf.sVersion.size() + t.size();
    m_patchable = d.size() == 10 && t.size() == 8 && confLen >= tail + 4 + d.size();
    if (m_patchable) {
        m_timeAt = confLen - tail;
        m_dateAt = m_timeAt - 4 - d.size();
        m_patchable = m_body.compare(m_dateAt, d.size(), d) == 0 &&
                      m_body.compare(m_timeAt, t.size(), t) == 0;
    }
    m_bodyValid = true;
    m_bodySecond = real;
}

bool SimEngine::PatchBodyTime(time_t real) {
    if (!m_patchable)
        return false;
    std::string d;
    std::string t;
    FormatDateTime(real + static_cast<time_t>(m_state.clockOffset), d, t);
    if (d.size() != 10 || t.size() != 8)
        return false;
    m_body.replace(m_dateAt, d.size(), d);
    m_body.replace(m_timeAt, t.size(), t);
    m_state.conf.sNowDate = d;
    m_state.conf.sNowTime = t;
    m_bodySecond = real;
    return true;
}

void SimEngine::CheckBody(std::string& body) {
    std::lock_guard<std::mutex> lock(m_mu);
    time_t real = m_clock();
    if (!m_bodyValid || (real != m_bodySecond && !PatchBodyTime(real)))
        RebuildBody(real);
    body.append(m_body);
}

CmdResult SimEngine::Apply(short cmd, const std::string& payload, const Peer&) {
    Request req;
    CmdResult r;
    if (!ParseCommand(cmd, payload, req, r))
        return r;
    std::lock_guard<std::mutex> lock(m_mu);
    time_t real = m_clock();
    SimState next = m_state;
    SimContext ctx{next, real};
    r = SimApply(ctx, req);
    if (r.iCode != em_ActSuccAll)
        return r;
    FormatDateTime(real + static_cast<time_t>(next.clockOffset), next.conf.sNowDate,
                   next.conf.sNowTime);
    if (!m_path.empty()) {
        std::string text;
        std::string err;
        if (!StateText(next, text, err) || !WriteFileAtomically(m_path, text, err)) {
            return {em_ActFail, "Could not save the state: " + err + "."};
        }
    }
    SetShownTime(real);
    RecordChange(cmd, m_state.conf, m_state.svr, next.conf, next.svr, r);
    m_state = std::move(next);
    m_bodyValid = false;
    return r;
}

int SimEngine::LangCode() {
    std::lock_guard<std::mutex> lock(m_mu);
    return m_state.conf.chLangCode;
}

SimState SimEngine::Snapshot() {
    std::lock_guard<std::mutex> lock(m_mu);
    SetShownTime(m_clock());
    return m_state;
}

}  // namespace nvagent
