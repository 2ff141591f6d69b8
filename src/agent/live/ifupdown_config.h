// Editing ifupdown's /etc/network/interfaces in place: one interface's
// stanza replaced and its "auto" line kept or removed, every other line
// (comments, other interfaces, source lines) as it was.
#ifndef NV_AGENT_LIVE_IFUPDOWN_CONFIG_H
#define NV_AGENT_LIVE_IFUPDOWN_CONFIG_H

#include <string>

namespace nvagent {

// The "iface NAME inet ..." stanza of name (its lines, options included),
// empty when there is none.
std::string IfaceStanza(const std::string& text, const std::string& name);

// text with name's stanza replaced by stanza (added at the end when there
// was none; removed when stanza is empty) and name listed on an "auto" line
// or on none, as autoStart says.
std::string WithIface(const std::string& text, const std::string& name, const std::string& stanza,
                      bool autoStart);

// Whether name is on an "auto" or "allow-hotplug" line.
bool IsAutoStarted(const std::string& text, const std::string& name);

}  // namespace nvagent

#endif
