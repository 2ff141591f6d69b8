// The server's own texts: what it answers before any backend sees a request.
#include "agent/details/detail_row.h"

namespace nvagent {

namespace {

const DetailRow kRows[] = {
    {"Unknown command {}.", nullptr, "未知命令 {1}。"},
    {"packet length {} outside {}..{}", "Packet length {1} is outside {2}..{3}.",
     "数据包长度 {1} 超出 {2}..{3}。"},
};

}  // namespace

extern const DetailTable kDetailsServer = {kRows, sizeof kRows / sizeof kRows[0]};

}  // namespace nvagent
