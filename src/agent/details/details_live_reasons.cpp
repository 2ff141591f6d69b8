// The reasons a system tool or call gives, which the live backend's
// sentences take as parts: a tool that failed (ToolRun::Why), a directory or
// file that could not be made or written, the system's error messages.
// Registered after every table of whole sentences: "{} failed (exit {}): {}"
// would match any sentence that holds a tool's failure.
#include "agent/details/details_live_reasons.h"

namespace nvagent {

namespace {

const DetailRow kRows[] = {
    // Parts: why a system tool failed (ToolRun::Why), why a directory or
    // file could not be made or written.
    {"{} could not be run", nullptr, "无法运行 {1}"},
    {"{} did not finish in time", nullptr, "{1} 未在时限内完成"},
    {"{} failed (exit {}): {}", nullptr, "{1} 失败（退出码 {2}）：{3}"},
    {"{} failed (exit {})", nullptr, "{1} 失败（退出码 {2}）"},
    {"cannot create {}: {}", nullptr, "无法创建 {1}：{2}"},
    {"could not write {}: {}", nullptr, "无法写入 {1}：{2}"},

    // Parts: the system's error messages (strerror) the texts above carry.
    {"Permission denied", nullptr, "权限不足"},
    {"Operation not permitted", nullptr, "不允许的操作"},
    {"No space left on device", nullptr, "设备上没有剩余空间"},
    {"Read-only file system", nullptr, "只读文件系统"},
    {"No such file or directory", nullptr, "没有该文件或目录"},
    {"Invalid argument", nullptr, "无效参数"},
    {"Device or resource busy", nullptr, "设备或资源忙"},
    {"Input/output error", nullptr, "输入/输出错误"},
    {"Disk quota exceeded", nullptr, "超出磁盘配额"},
    {"Is a directory", nullptr, "是一个目录"},
    {"Not a directory", nullptr, "不是目录"},
    {"File name too long", nullptr, "文件名过长"},
    {"Too many levels of symbolic links", nullptr, "符号链接层数过多"},
    {"Numerical result out of range", nullptr, "数值结果超出范围"},
};

}  // namespace

const DetailTable kDetailsLiveReasons = {kRows, sizeof kRows / sizeof kRows[0]};

}  // namespace nvagent
