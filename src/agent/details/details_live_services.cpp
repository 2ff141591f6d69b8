// The live backend's texts of the FTP server and Samba: installation,
// starting and stopping, their configuration files and Samba's checker.
#include "agent/details/details_live_services.h"

namespace nvagent {

namespace {

const DetailRow kRows[] = {
    // Starting and stopping (the subjects the services pass).
    {"The FTP server could not be started: {}.", nullptr, "无法启动 FTP 服务器：{1}。"},
    {"The FTP server could not be stopped: {}.", nullptr, "无法停止 FTP 服务器：{1}。"},
    {"Samba could not be started: {}.", nullptr, "无法启动 Samba：{1}。"},
    {"Samba could not be stopped: {}.", nullptr, "无法停止 Samba：{1}。"},

    // The FTP server.
    {"The FTP server is not installed ({} is missing).", nullptr,
     "未安装 FTP 服务器（缺少 {1}）。"},
    {"The server would not read the change from {} as asked; nothing was changed.",
     "The server would not read {1} as asked; nothing changed.",
     "服务器读到的 {1} 与所设不符；未做更改。"},
    {"Could not keep a copy of the FTP configuration: {}.",
     "Could not keep a copy of the FTP config: {1}.", "无法保留 FTP 配置的副本：{1}。"},
    {"The FTP server did not restart with the change ({}); the old configuration was put back.",
     "The FTP server did not restart ({1}); old config put back.",
     "FTP 服务器未能按新配置重启（{1}）；已恢复原配置。"},
    {"Command {} is not an FTP option.", nullptr, "命令 {1} 不是 FTP 选项。"},

    // Samba.
    {"Samba is not installed ({} or testparm is missing).", nullptr,
     "未安装 Samba（缺少 {1} 或 testparm）。"},
    {"Could not keep a copy of the Samba configuration: {}.",
     "Could not keep a copy of the Samba config: {1}.", "无法保留 Samba 配置的副本：{1}。"},
    {"Samba's checker refused the change: {}.", nullptr, "Samba 的检查程序拒绝了更改：{1}。"},
    {"Samba would read the share as {}, not {}; nothing was changed.",
     "Samba would read the share as {1}, not {2}; not changed.",
     "Samba 会把共享读作 {1}，而非 {2}；未做更改。"},
    {"Samba did not reload the change ({}); the old configuration was put back.",
     "Samba did not reload the change ({1}); old config put back.",
     "Samba 未能重新加载更改（{1}）；已恢复原配置。"},
    // Parts: the share as Samba reads it.
    {"path \"{}\", writable", "{1} (writable)", "{1}（可写）"},
    {"path \"{}\", read-only", "{1} (read-only)", "{1}（只读）"},
};

}  // namespace

const DetailTable kDetailsLiveServices = {kRows, sizeof kRows / sizeof kRows[0]};

}  // namespace nvagent
