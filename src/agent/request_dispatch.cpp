// Turning one complete request into its answer packet.
#include "agent/request_dispatch.h"

#include "agent/details/detail_lookup.h"
#include "agent/details/detail_text.h"
#include "link/result_codes.h"
#include "wire/wire.h"

namespace nvagent {

namespace {

bool IsSetCommand(short cmd) {
    return cmd == nvwire::kCmdSetLang || (cmd >= kFirstSetCmd && cmd <= kLastSetCmd);
}

// An answer without a state: the detail in the console's language, and the
// full English sentence as the body when the detail sent is not that
// sentence (the console ignores the body; nvcmd prints it). A notice for the
// console goes first; when both do not fit the line, the notice alone is
// shown (the detail stays in the body and the journal).
void BuildDetailAnswer(std::string& answer, short cmd, int code, const std::string& full,
                       int langCode, const std::string& notice) {
    std::string shown = LocaliseDetail(full, langCode);
    std::string body = shown == full ? std::string() : full;
    if (!notice.empty()) {
        std::string said = LocaliseDetail(notice, langCode);
        body = notice + (full.empty() ? "" : " " + full);
        shown = shown.empty() || said.size() + 1 + shown.size() > kDetailWidth ? said
                                                                               : said + " " + shown;
    }
    nvwire::BuildAnswer(answer, cmd, code, shown, body.data(), body.size());
}

}  // namespace

int AnswerRequest(Backend& backend, short cmd, const std::string& payload, AnswerBuffers& bufs,
                  const Peer& peer) {
    bufs.oldValues.clear();
    bufs.newValues.clear();
    bufs.detail.clear();
    bufs.note.clear();
    if (cmd == nvwire::kCmdCheck) {
        bufs.body.clear();
        backend.CheckBody(bufs.body);
        // A check has no detail of its own; it carries a notice for the
        // console, which shows the check's detail after a change succeeded.
        nvwire::BuildAnswer(bufs.answer, cmd, em_OK,
                            LocaliseDetail(backend.NoticeFor(peer, cmd, em_OK), backend.LangCode()),
                            bufs.body.data(), bufs.body.size());
        return em_OK;
    }
    if (IsSetCommand(cmd)) {
        CmdResult res = backend.Apply(cmd, payload, peer);
        // Read after the change, so that the language command answers in
        // the language it chose.
        BuildDetailAnswer(bufs.answer, cmd, res.iCode, res.sDetail, backend.LangCode(),
                          backend.NoticeFor(peer, cmd, res.iCode));
        bufs.oldValues = std::move(res.sOldValues);
        bufs.newValues = std::move(res.sNewValues);
        bufs.detail = std::move(res.sDetail);
        bufs.note = std::move(res.sNote);
        return res.iCode;
    }
    bufs.detail = "Unknown command " + std::to_string(cmd) + ".";
    BuildDetailAnswer(bufs.answer, cmd, em_ParsePkgCmdNoOutOfRange, bufs.detail, backend.LangCode(),
                      std::string());
    return em_ParsePkgCmdNoOutOfRange;
}

}  // namespace nvagent
