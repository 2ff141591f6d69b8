// The rows of the simulator's own texts: what it answers when it carries
// out a command on its state.
#include "agent/details/detail_row.h"

namespace nvagent {

namespace {

const DetailRow kRows[] = {
    {"Could not save the state: {}.", nullptr, "无法保存状态:{1}。"},
};

}  // namespace

extern const DetailTable kDetailsSim = {kRows, sizeof kRows / sizeof kRows[0]};

}  // namespace nvagent
