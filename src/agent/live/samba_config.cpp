// Sections run from a "[name]" line to the next one.
#include "agent/live/samba_config.h"

#include <cctype>
#include <sstream>

#include "agent/commands/payload_parse.h"

namespace nvagent {

namespace {

std::string Lower(std::string s) {
    for (char& c : s)
        c = static_cast<char>(tolower(static_cast<unsigned char>(c)));
    return s;
}

// The section name of a "[name]" line, or empty.
std::string SectionOf(const std::string& line) {
    std::string t = Trim(line);
    if (t.size() < 2 || t[0] != '[')
        return std::string();
    size_t close = t.find(']');
    return close == std::string::npos ? std::string() : Lower(Trim(t.substr(1, close - 1)));
}

std::string KeyOf(const std::string& line) {
    std::string t = Trim(line);
    if (t.empty() || t[0] == '#' || t[0] == ';')
        return std::string();
    size_t eq = t.find('=');
    return eq == std::string::npos ? std::string() : Lower(Trim(t.substr(0, eq)));
}

}  // namespace

std::string WithShareOption(const std::string& text, const std::string& section,
                            const std::string& key, const std::string& value,
                            const std::vector<std::string>& replaces) {
    std::istringstream in(text);
    std::string line;
    std::string out;
    std::string current;
    bool found = false;
    bool written = false;
    std::string entry = "   " + key + " = " + value + "\n";
    while (std::getline(in, line)) {
        std::string s = SectionOf(line);
        if (!s.empty()) {
            if (current == section && !written) {
                out += entry;
                written = true;
            }
            current = s;
            found = found || s == section;
            out += line + "\n";
            continue;
        }
        if (current == section) {
            std::string k = KeyOf(line);
            bool drop = k == key;
            for (const std::string& r : replaces)
                drop = drop || k == r;
            if (drop) {
                if (!written)
                    out += entry;
                written = true;
                continue;
            }
        }
        out += line + "\n";
    }
    if (current == section && !written) {
        out += entry;
        written = true;
    }
    if (!found)
        out += "\n[" + section + "]\n" + entry;
    return out;
}

}  // namespace nvagent
