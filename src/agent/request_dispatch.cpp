// Turning one complete request into its answer packet.
#include "agent/request_dispatch.h"

#include "agent/details/detail_lookup.h"
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
    static const std::string kNoDetail;
    bufs.oldValues.clear();
    bufs.newValues.clear();
    bufs.detail.clear();
    if (cmd == nvwire::kCmdCheck) {
        bufs.body.clear();
        backend.CheckBody(bufs.body);
        nvwire::BuildAnswer(bufs.answer, cmd, em_OK, kNoDetail, bufs.body.data(), bufs.body.size());
        return em_OK;
    }
    if (IsSetCommand(cmd)) {
        CmdResult res = backend.Apply(cmd, payload, peer);
        // Read after the change, so that the language command answers in
        // the language it chose.
        nvwire::BuildAnswer(bufs.answer, cmd, res.iCode,
                            LocaliseDetail(res.sDetail, backend.LangCode()), "", 0);
        bufs.oldValues = std::move(res.sOldValues);
        bufs.newValues = std::move(res.sNewValues);
        bufs.detail = std::move(res.sDetail);
        return res.iCode;
    }
    bufs.detail = "unknown command " + std::to_string(cmd);
    nvwire::BuildAnswer(bufs.answer, cmd, em_ParsePkgCmdNoOutOfRange,
                        LocaliseDetail(bufs.detail, backend.LangCode()), "", 0);
    return em_ParsePkgCmdNoOutOfRange;
}

}  // namespace nvagent
