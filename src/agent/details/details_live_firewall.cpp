// The live backend's firewall texts: reading and changing the agent's
// chains, another manager's firewall, and the notes a change's answer gets
// about what else filters the same traffic. A note follows the answer's own
// sentence (or stands alone after a bare success), so each has a row with
// the answer as its first part and a row of its own; the last note is
// matched first, the answer before it then being a part with a row.
#include "agent/details/details_live_firewall.h"

namespace nvagent {

namespace {

const DetailRow kRows[] = {
    // The notes, last one first.
    {"{} Legacy iptables tables are loaded beside nf_tables; their rules apply as well (see "
     "iptables-legacy -S).",
     "{1} Legacy iptables rules apply too.", "{1}旧版 iptables 规则也生效。"},
    {"Legacy iptables tables are loaded beside nf_tables; their rules apply as well (see "
     "iptables-legacy -S).",
     "Legacy iptables tables are loaded too; their rules apply (iptables-legacy -S).",
     "旧版 iptables 表的规则同样生效（iptables-legacy -S）。"},
    {"{} It may not take effect: every base chain on the {} hook must accept the traffic, and {} "
     "drops what it does not accept; accept it there too.",
     "{1} May not work: {3} drops it on {2}; accept it there.",
     "{1}可能不生效：{2} 上的 {3} 会丢弃，请放行。"},
    {"It may not take effect: every base chain on the {} hook must accept the traffic, and {} "
     "drops what it does not accept; accept it there too.",
     "May not take effect: {2} drops it on {1}; accept it there.",
     "可能不生效：{1} 上的 {2} 会丢弃它，请也放行。"},
    {"{} It does not take effect: {}'s rule \"{}\" in {} comes before the agent's chain.",
     "{1} No effect: {2}'s rule \"{3}\" in {4} comes first.",
     "{1}不生效：{4} 中 {2} 的“{3}”在前。"},
    {"It does not take effect: {}'s rule \"{}\" in {} comes before the agent's chain.",
     "No effect: {1}'s rule \"{2}\" in {3} comes first.",
     "不生效：{3} 中 {1} 的“{2}”在代理的链前。"},
    // Part of a note: one other base chain that drops.
    {"{}'s table {}, chain {} ({})", nullptr, "{1} 的表 {2} 链 {3}（{4}）"},

    // Reading and changing the agent's chains.
    {"Cannot read the firewall: {}.", nullptr, "无法读取防火墙：{1}。"},
    {"The firewall refused the change ({}): {}.", nullptr, "防火墙拒绝了更改（{1}）：{2}。"},
    {"Could not save the agent's rules to {}: {}; the change was undone.",
     "Could not save the rules to {1}: {2}; change undone.",
     "无法将规则保存到 {1}：{2}；已撤销更改。"},
    {"Entry {} is {}'s rule \"{}\" in {}, not the agent's; the agent has no rules in this chain.",
     "Entry {1}: {2}'s \"{3}\" in {4}; the agent has none.",
     "第{1}条是 {2} 在 {4} 的“{3}”，非代理的"},
    {"Entry {} is {}'s rule \"{}\" in {}, not the agent's; the agent's rules are numbered 1 to {}.",
     "Entry {1}: {2}'s \"{3}\" in {4}; agent's: 1-{5}.", "{4} 第{1}条属 {2}“{3}”；代理为1-{5}"},

    // Another manager's firewall: the command to run instead. The sentences
    // with a fixed ending first, the one ending in any command last.
    {"{} manages this server's firewall, so the agent leaves the change to it: ufw status "
     "numbered, then ufw delete NUMBER.",
     "{1} manages the firewall: ufw status numbered, ufw delete NUMBER.",
     "防火墙由 {1} 管理：用 ufw status numbered、ufw delete。"},
    {"{} manages this server's firewall, so the agent leaves the change to it: firewall-cmd "
     "--list-all (or --direct --get-all-rules), then the matching --remove option with "
     "--permanent, then firewall-cmd --reload.",
     "{1} manages the firewall: remove with firewall-cmd --permanent.",
     "防火墙由 {1} 管理：请用 firewall-cmd --permanent 删除。"},
    {"{} manages this server's firewall, so the agent leaves the change to it: firewalld filters "
     "outgoing traffic with policies or direct rules, such as firewall-cmd --permanent --direct "
     "--add-rule ipv4 filter OUTPUT 99 -j {}, then firewall-cmd --reload.",
     "{1} manages the firewall: use a direct rule (OUTPUT -j {2}).",
     "防火墙由 {1} 管理：请用直接规则 OUTPUT -j {2}。"},
    {"{} manages this server's firewall, so the agent leaves the change to it: {}, then "
     "firewall-cmd --reload.",
     "{1} manages the firewall; run {2}, then --reload.",
     "防火墙由 {1} 管理；请运行 {2}，再 --reload。"},
    {"{} manages this server's firewall, so the agent leaves the change to it: {}.",
     "{1} manages the firewall; run: {2}.", "防火墙由 {1} 管理；请运行：{2}。"},
};

}  // namespace

const DetailTable kDetailsLiveFirewall = {kRows, sizeof kRows / sizeof kRows[0]};

}  // namespace nvagent
