// The agent's backend interface: what the server asks of whatever holds the
// system's state. The simulator is one backend; a live-system backend can be
// added beside it without touching the server.
#ifndef NV_AGENT_BACKEND_H
#define NV_AGENT_BACKEND_H

#include <sys/types.h>

#include <functional>
#include <string>
#include <utility>

namespace nvagent {

struct CmdResult {
    CmdResult() = default;
    CmdResult(int code, std::string detail) : iCode(code), sDetail(std::move(detail)) {}

    int iCode = 0;  // an EM_RET value
    // The reason shown behind the result description, as a full English
    // sentence: the journal keeps it, the answer carries its short form in
    // the console's language (agent/details/detail_lookup.h).
    std::string sDetail;
    // For the journal: the changed fields' values before and after the
    // change as JSON objects, empty when the change recorded none.
    std::string sOldValues;
    std::string sNewValues;
    // For the journal: a short note on how the request was decided (the
    // session guard's refusal or a change carried out on confirmation).
    std::string sNote;
};

// Who sent a request: the process at the other end of the agent's socket
// (0 when unknown, as for requests made inside the agent or by tests).
struct Peer {
    pid_t iPid = 0;
};

// Something a backend did by itself, outside any request (a watched change
// undone or saved when its watch ended): journalled as a request would be.
struct BackendEvent {
    short iCmd = 0;
    std::string sPayload;
    int iResult = 0;
    std::string sNote;
    std::string sOldValues, sNewValues;
};
using EventSink = std::function<void(const BackendEvent&)>;

class Backend {
public:
    virtual ~Backend() = default;
    // Appends the encoded check body (cConf_Inf then cSvrState, as the wire
    // codec writes them) for this moment to body. Safe to call concurrently.
    virtual void CheckBody(std::string& body) = 0;
    // Carries out one set command (4..63 or the language command) sent by
    // peer. Answers em_ActSuccAll only when the change is made and saved.
    // Safe to call concurrently; changes are serialised inside.
    virtual CmdResult Apply(short cmd, const std::string& payload, const Peer& peer) = 0;
    // The same, from no particular process.
    CmdResult Apply(short cmd, const std::string& payload) { return Apply(cmd, payload, Peer{}); }
    // The console's language as the agent's settings hold it (chLangCode:
    // 0 English, 1 Chinese in GB2312, 2 Chinese in UTF-8), in which answers
    // carry their details. Safe to call concurrently.
    virtual int LangCode() { return 0; }
    // What the answer to peer must say before its own detail, something
    // that happened since the console's last answer (a change of its undone
    // because it cut the console's session); cmd is the check command or the
    // set command answered with result. Empty: nothing.
    virtual std::string NoticeFor(const Peer&, short /*cmd*/, int /*result*/) { return {}; }
};

}  // namespace nvagent

#endif
