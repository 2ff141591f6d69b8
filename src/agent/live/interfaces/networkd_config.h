// The agent's own systemd-networkd file of one interface: its name, its text
// built from the settings of commands 52 to 55, and that text read back.
// The file is named 00-norvane-IFACE.network so that it sorts before the
// administrator's files: networkd applies the first .network file (in
// lexical order) whose [Match] fits a link, so ours takes precedence while
// theirs stay untouched.
#ifndef NV_AGENT_LIVE_INTERFACES_NETWORKD_CONFIG_H
#define NV_AGENT_LIVE_INTERFACES_NETWORKD_CONFIG_H

#include <string>
#include <vector>

namespace nvagent {

// Where networkd reads the administrator's .network files.
extern const char* const kNetworkdDir;

struct NetworkdSettings {
    bool dhcp = false;             // DHCP=ipv4
    std::string address;           // "IP/PREFIX" of a static address, or empty
    std::string gateway;           // the default gateway, or empty
    std::vector<std::string> dns;  // DNS servers, in order
    bool up = true;                // ActivationPolicy=up, else down
    bool operator==(const NetworkdSettings& o) const {
        return dhcp == o.dhcp && address == o.address && gateway == o.gateway && dns == o.dns &&
               up == o.up;
    }
};

// The path of the agent's file for iface.
std::string NetworkdFilePath(const std::string& iface);

// The file's text: [Match] Name=, [Network] with DHCP=ipv4 or Address=,
// Gateway= and DNS= lines, [Link] ActivationPolicy=.
std::string NetworkdUnitText(const std::string& iface, const NetworkdSettings& s);

// The settings of such a text (the keys above; others are ignored). False
// when the text has no [Match] section naming iface.
bool ParseNetworkdUnit(const std::string& text, const std::string& iface, NetworkdSettings& s);

}  // namespace nvagent

#endif
