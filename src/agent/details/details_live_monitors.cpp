// The live agent's refusals of monitored paths: paths in its data
// directory, and the backup paths the trusted-path rule refuses with the
// reasons it gives as parts.
#include "agent/details/details_live_monitors.h"

namespace nvagent {

namespace {

const DetailRow kRows[] = {
    {"The paths could not be checked: their file system does not answer.", nullptr,
     "无法检查这些路径：其文件系统没有响应。"},
    {"The monitored path {} lies in the agent's data directory {} (its settings and reports).",
     "The monitored path {1} is in the agent's data directory {2}.",
     "监控路径 {1} 位于代理的数据目录 {2} 中。"},
    {"The partition {} lies in the agent's data directory {} (its settings and reports).",
     "The partition {1} is in the agent's data directory {2}.",
     "分区 {1} 位于代理的数据目录 {2} 中。"},
    {"The file {} lies in the agent's data directory {} (its settings and reports).",
     "The file {1} is in the agent's data directory {2}.", "文件 {1} 位于代理的数据目录 {2} 中。"},
    {"The backup directory {} lies in the agent's data directory {} (its settings and reports).",
     "The backup directory {1} is in the agent's data directory {2}.",
     "备份目录 {1} 位于代理的数据目录 {2} 中。"},
    // The reason names the path (or the directory on its way) itself.
    {"The backup directory {} is refused: {}.", nullptr, "备份目录 {1} 被拒绝：{2}。"},
    {"The file {} is refused: {}.", nullptr, "文件 {1} 被拒绝：{2}。"},

    // Parts: why a path is not trusted.
    {"{} is under /proc, /sys or /dev", nullptr, "{1} 位于 /proc、/sys 或 /dev 下"},
    {"{} is not an absolute path without \".\" and \"..\"", nullptr,
     "{1} 不是不含“.”和“..”的绝对路径"},
    {"{} belongs to another user (uid {})", nullptr, "{1} 属于其他用户（uid {2}）"},
    {"{} can be written by other users", nullptr, "{1} 可被其他用户写入"},
    {"{} is a symbolic link", nullptr, "{1} 是符号链接"},
    {"{} is not a directory", nullptr, "{1} 不是目录"},
    {"{} is on a kernel file system", nullptr, "{1} 位于内核文件系统上"},
    {"{} is not a regular file", nullptr, "{1} 不是普通文件"},
};

}  // namespace

const DetailTable kDetailsLiveMonitors = {kRows, sizeof kRows / sizeof kRows[0]};

}  // namespace nvagent
