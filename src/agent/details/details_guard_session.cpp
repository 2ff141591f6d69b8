// The session guard's refusal texts: the client's address (shortened to fit
// when long) and how to confirm.
#include "agent/details/details_guard_session.h"

namespace nvagent {

namespace {

const DetailRow kRows[] = {
    {"Cuts SSH session from {}; send again in 60 s (F9) to confirm.", nullptr,
     "会切断来自{1}的SSH会话；60秒内重发(F9)确认"},
};

}  // namespace

const DetailTable kDetailsGuardSession = {kRows, sizeof kRows / sizeof *kRows};

}  // namespace nvagent
