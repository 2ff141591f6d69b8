// The deferred interface changes' texts: netplan's scratch copy and the
// files it would change elsewhere, and a commit that cannot save the
// manager's configuration. (networkd's runtime directory that cannot be
// made: details_live_system.cpp, before its general "Could not create".)
#include "agent/details/details_guard_ifaces.h"

namespace nvagent {

namespace {

const DetailRow kRows[] = {
    {"{} is configured outside /etc/netplan; change it there.",
     "{1} is set outside /etc/netplan; change it there.",
     "{1} 的配置不在 /etc/netplan 中，请在原处修改。"},
    {"{} could not be configured: {}; nothing was changed.",
     "{1} could not be configured: {2}; nothing changed.", "无法配置 {1}：{2}；未做更改。"},
    {"Could not make a scratch directory for netplan.", nullptr, "无法为 netplan 创建临时目录。"},
    {"NetworkManager did not save the profile: {}.", nullptr,
     "NetworkManager 未保存连接配置：{1}。"},
    {"{}'s stanza was not saved: {}.", "{1} stanza not saved: {2}.", "{1} 的配置段未保存：{2}。"},
    {"No DHCP lease on {} yet; its DHCP client keeps asking.",
     "No DHCP lease on {1} yet; the client keeps asking.", "{1} 尚无 DHCP 租约；客户端仍在请求。"},
};

}  // namespace

const DetailTable kDetailsGuardIfaces = {kRows, sizeof kRows / sizeof kRows[0]};

}  // namespace nvagent
