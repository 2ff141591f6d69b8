// The rows of the shared parser's and checks' texts: every refusal of a
// malformed or invalid payload, and the answers to the agent's own settings.
#include "agent/details/detail_row.h"

namespace nvagent {

namespace {

const DetailRow kRows[] = {
    {"Command {} is not supported.", nullptr, "不支持命令 {1}。"},
    {"Command {} is not known.", nullptr, "未知命令 {1}。"},
};

}  // namespace

extern const DetailTable kDetailsCommands = {kRows, sizeof kRows / sizeof kRows[0]};

}  // namespace nvagent
