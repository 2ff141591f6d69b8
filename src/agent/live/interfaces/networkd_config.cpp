// Building and reading the agent's .network file: "[Section]" headers,
// "Key=Value" lines, "#" and ";" comments.
#include "agent/live/interfaces/networkd_config.h"

#include <sstream>

#include "agent/commands/payload_parse.h"
#include "agent/live/live_files.h"

namespace nvagent {

const char* const kNetworkdDir = "/etc/systemd/network";

namespace {

bool IsDhcpV4(const std::string& v) {
    return v == "yes" || v == "ipv4" || v == "true" || v == "1" || v == "on";
}

bool IsDownPolicy(const std::string& v) {
    return v == "down" || v == "always-down" || v == "manual";
}

}  // namespace

std::string NetworkdFilePath(const std::string& iface) {
    return std::string(kNetworkdDir) + "/00-norvane-" + iface + ".network";
}

std::string NetworkdUnitText(const std::string& iface, const NetworkdSettings& s) {
    std::string t = "# The norvane agent's settings of " + iface +
                    "; replaced whole by its next change.\n"
                    "[Match]\nName=" +
                    iface + "\n\n[Network]\n";
    if (s.dhcp)
        t += "DHCP=ipv4\n";
    if (!s.dhcp && !s.address.empty())
        t += "Address=" + s.address + "\n";
    if (!s.dhcp && !s.gateway.empty())
        t += "Gateway=" + s.gateway + "\n";
    for (const std::string& d : s.dns)
        t += "DNS=" + d + "\n";
    t += std::string("\n[Link]\nActivationPolicy=") + (s.up ? "up" : "down") + "\n";
    return t;
}

bool ParseNetworkdUnit(const std::string& text, const std::string& iface, NetworkdSettings& s) {
    s = NetworkdSettings();
    std::istringstream in(text);
    std::string line, section;
    bool matched = false;
    while (std::getline(in, line)) {
        std::string t = Trim(line);
        if (t.empty() || t[0] == '#' || t[0] == ';')
            continue;
        if (t[0] == '[') {
            section = t;
            continue;
        }
        size_t eq = t.find('=');
        if (eq == std::string::npos)
            continue;
        std::string key = Trim(t.substr(0, eq));
        std::string value = Trim(t.substr(eq + 1));
        if (section == "[Match]" && key == "Name") {
            for (const std::string& w : SplitWords(value))
                matched = matched || w == iface;
        } else if (section == "[Network]" && key == "DHCP") {
            s.dhcp = IsDhcpV4(value);
        } else if (section == "[Network]" && key == "Address") {
            s.address = value;
        } else if (section == "[Network]" && key == "Gateway") {
            s.gateway = value;
        } else if (section == "[Network]" && key == "DNS") {
            for (const std::string& w : SplitWords(value))
                s.dns.push_back(w);
        } else if (section == "[Link]" && key == "ActivationPolicy") {
            s.up = !IsDownPolicy(value);
        }
    }
    return matched;
}

}  // namespace nvagent
