// Editing the agent's own share section of the Samba configuration in
// place: one option set (its equivalent spellings dropped), the section
// added at the end when missing, every other line as it was.
#ifndef NV_AGENT_LIVE_SAMBA_CONFIG_H
#define NV_AGENT_LIVE_SAMBA_CONFIG_H

#include <string>
#include <vector>

namespace nvagent {

// text with "key = value" in section; lines of the section whose key is
// one of replaces (compared without case) are removed.
std::string WithShareOption(const std::string& text, const std::string& section,
                            const std::string& key, const std::string& value,
                            const std::vector<std::string>& replaces);

}  // namespace nvagent

#endif
