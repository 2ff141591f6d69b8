// The live backend's system texts: commands it does not carry out, its own
// settings file, kernel settings, host name, clock and passwords, and the
// generic "could not write" of any domain's files.
#include "agent/details/details_live_system.h"

namespace nvagent {

namespace {

const DetailRow kRows[] = {
    {"Command {} is not carried out by this agent on a live system yet.",
     "Command {1} is not supported on a live system yet.", "本代理在实际系统上暂不执行命令 {1}。"},
    {"Could not save the agent's settings: {}.", nullptr, "无法保存代理的设置：{1}。"},

    // Kernel settings: the subject is the setting's name, a part with a
    // row of its own.
    {"{}: the kernel refused {} ({}).", nullptr, "{1}：内核拒绝了 {2}（{3}）。"},
    {"{}: the kernel holds {} instead of {}; the setting was left at {}.",
     "{1}: kernel kept {2}, not {3}; left at {4}.", "{1}：内核值为 {2} 而非 {3}，保持 {4}。"},
    {"Could not save {}: {}; the setting was left at {}.", "Could not save {1}: {2}; left at {3}.",
     "无法保存 {1}：{2}；设置保持为 {3}。"},
    {"The kernel has no setting {}.", nullptr, "内核没有参数 {1}。"},
    {"{} is {}, the kernel's no-limit default; it was left so.",
     "{1} is {2}, the kernel's no-limit default; left so.",
     "{1}为 {2}，即内核的“无限制”默认值，未更改。"},
    {"Done: {} was {} (no limit) and is now {}.", nullptr,
     "已完成：{1}原为 {2}（无限制），现为 {3}。"},

    {"Ignoring ICMP echo requests", nullptr, "忽略 ICMP 回显请求"},
    {"TCP SYN cookie protection", nullptr, "TCP SYN cookie 保护"},
    {"Reuse of TIME_WAIT sockets", nullptr, "TIME_WAIT 套接字重用"},
    {"The largest shared-memory segment", nullptr, "最大共享内存段"},
    {"The shared-memory total", nullptr, "共享内存总量"},
    {"The number of shared-memory segments", nullptr, "共享内存段数"},
    {"The thread maximum", nullptr, "最大线程数"},
    {"The file-handle maximum", nullptr, "最大文件句柄数"},

    // Host name.
    {"Could not set the host name: {}.", nullptr, "无法设置主机名：{1}。"},

    // Date and time.
    {"{} cannot be represented on this system.", nullptr, "本系统无法表示 {1}。"},
    {"The clock was not set: {}.", nullptr, "未能设置时钟：{1}。"},
    {"The clock was set; the time-synchronisation service {} is running and may correct it again.",
     "Clock set; the time sync service {1} runs and may correct it.",
     "时钟已设置；时间同步服务 {1} 可能再次校正它。"},

    // Passwords.
    {"The password of {} is already this one.", nullptr, "{1} 的密码已是此密码。"},
    {"The password was not changed: {}.", nullptr, "密码未更改：{1}。"},

    // Files of any domain; the longer sentences first.
    {"Could not write {}: {}; nothing was changed.", nullptr, "无法写入 {1}：{2}；未做任何更改。"},
    {"Could not write {}: {}.", nullptr, "无法写入 {1}：{2}。"},
    {"Could not write {}.", nullptr, "无法写入 {1}。"},
    {"Could not read {}.", nullptr, "无法读取 {1}。"},
    // networkd's runtime directory, which its sentence names as it is:
    // before the general row, which would take it.
    {"Could not create /run/systemd/network.", nullptr, "无法创建 /run/systemd/network。"},
    {"Could not create {}.", nullptr, "无法创建 {1}。"},

};

}  // namespace

const DetailTable kDetailsLiveSystem = {kRows, sizeof kRows / sizeof kRows[0]};

}  // namespace nvagent
