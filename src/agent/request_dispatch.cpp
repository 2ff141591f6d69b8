// Turning one complete request into its answer packet.
#include "agent/request_dispatch.h"

#include "link/result_codes.h"
#include "wire/wire.h"

namespace nvagent {

namespace {

bool IsSetCommand(short cmd) {
    return cmd == nvwire::kCmdSetLang || (cmd >= kFirstSetCmd && cmd <= kLastSetCmd);
}

}  // namespace

int AnswerRequest(Backend& backend, short cmd, const std::string& payload, AnswerBuffers& bufs,
                  const Peer& peer) {
    bufs.oldValues.clear();
    bufs.newValues.clear();
    bufs.note.clear();
    if (cmd == nvwire::kCmdCheck) {
        bufs.body.clear();
        backend.CheckBody(bufs.body);
        // A check has no detail of its own; it carries a notice for the
        // console, which shows the check's detail after a change succeeded.
        nvwire::BuildAnswer(bufs.answer, cmd, em_OK, backend.NoticeFor(peer, cmd, em_OK),
                            bufs.body.data(), bufs.body.size());
        return em_OK;
    }
    if (IsSetCommand(cmd)) {
        CmdResult res = backend.Apply(cmd, payload, peer);
        std::string notice = backend.NoticeFor(peer, cmd, res.iCode);
        if (!notice.empty())
            res.sDetail = res.sDetail.empty() ? notice : notice + " " + res.sDetail;
        nvwire::BuildAnswer(bufs.answer, cmd, res.iCode, res.sDetail, "", 0);
        bufs.oldValues = std::move(res.sOldValues);
        bufs.newValues = std::move(res.sNewValues);
        bufs.note = std::move(res.sNote);
        return res.iCode;
    }
    nvwire::BuildAnswer(bufs.answer, cmd, em_ParsePkgCmdNoOutOfRange,
                        "unknown command " + std::to_string(cmd), "", 0);
    return em_ParsePkgCmdNoOutOfRange;
}

}  // namespace nvagent
