// The interfaces file as lines: stanzas run from an "iface" line to the
// next line that starts in the first column.
#include "agent/live/ifupdown_config.h"

#include <sstream>
#include <vector>

#include "agent/live/live_files.h"

namespace nvagent {

namespace {

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> out;
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line))
        out.push_back(line);
    return out;
}

bool StartsStanza(const std::string& line) {
    return !line.empty() && line[0] != ' ' && line[0] != '\t' && line[0] != '#';
}

bool IsIfaceOf(const std::string& line, const std::string& name) {
    std::vector<std::string> w = SplitWords(line);
    return w.size() >= 3 && w[0] == "iface" && w[1] == name && w[2] == "inet";
}

bool IsAutoWord(const std::string& w) {
    return w == "auto" || w == "allow-auto" || w == "allow-hotplug";
}

}  // namespace

std::string IfaceStanza(const std::string& text, const std::string& name) {
    std::vector<std::string> lines = Lines(text);
    std::string out;
    bool in = false;
    for (const std::string& l : lines) {
        if (StartsStanza(l))
            in = IsIfaceOf(l, name);
        if (in)
            out += l + "\n";
    }
    return out;
}

bool IsAutoStarted(const std::string& text, const std::string& name) {
    for (const std::string& l : Lines(text)) {
        std::vector<std::string> w = SplitWords(l);
        if (w.empty() || !IsAutoWord(w[0]))
            continue;
        for (size_t i = 1; i < w.size(); ++i) {
            if (w[i] == name)
                return true;
        }
    }
    return false;
}

std::string WithIface(const std::string& text, const std::string& name, const std::string& stanza,
                      bool autoStart) {
    std::string out;
    bool in = false;
    bool placed = false;
    for (const std::string& l : Lines(text)) {
        if (StartsStanza(l)) {
            in = IsIfaceOf(l, name);
            if (in && !placed) {
                if (autoStart)
                    out += "auto " + name + "\n";
                out += stanza;
                placed = true;
            }
        }
        if (in)
            continue;
        std::vector<std::string> w = SplitWords(l);
        if (!w.empty() && IsAutoWord(w[0])) {
            std::string kept = w[0];
            size_t names = 0;
            for (size_t i = 1; i < w.size(); ++i) {
                if (w[i] != name) {
                    kept += " " + w[i];
                    ++names;
                }
            }
            if (names + 1 != w.size()) {
                if (names > 0)
                    out += kept + "\n";
                continue;
            }
        }
        out += l + "\n";
    }
    if (!placed && !stanza.empty()) {
        if (!out.empty() && out.back() == '\n' && out.size() > 1 && out[out.size() - 2] != '\n')
            out += "\n";
        if (autoStart)
            out += "auto " + name + "\n";
        out += stanza;
    }
    return out;
}

}  // namespace nvagent
