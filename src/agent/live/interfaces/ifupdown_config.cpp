// The interfaces files as lines. A stanza runs from its "iface" line to the
// next line that starts another stanza (iface, mapping, auto, allow-*,
// source...); option lines belong to it whether indented or not, as
// ifupdown reads them.
#include "agent/live/interfaces/ifupdown_config.h"

#include <dirent.h>
#include <glob.h>
#include <sys/stat.h>

#include <algorithm>
#include <set>
#include <sstream>

#include "agent/live/live_files.h"

namespace nvagent {

const char* const kIfupdownMainFile = "/etc/network/interfaces";

namespace {

const int kMaxIncludeDepth = 8;

bool IsAutoWord(const std::string& w) {
    return w == "auto" || w.compare(0, 6, "allow-") == 0;
}

bool StartsStanza(const std::string& line) {
    std::vector<std::string> w = SplitWords(line);
    if (w.empty())
        return false;
    static const std::set<std::string> kWords = {
        "iface",      "mapping", "source",       "source-directory",
        "source-dir", "rename",  "no-auto-down", "no-scripts"};
    return kWords.count(w[0]) > 0 || IsAutoWord(w[0]);
}

bool IsIfaceOf(const std::string& line, const std::string& name) {
    std::vector<std::string> w = SplitWords(line);
    return w.size() >= 3 && w[0] == "iface" && w[1] == name && w[2] == "inet";
}

bool IsBlank(const std::string& line) {
    return line.find_first_not_of(" \t\r") == std::string::npos;
}

std::string DirOf(const std::string& path) {
    size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash);
}

std::string Absolute(const std::string& p, const std::string& base) {
    return !p.empty() && p[0] == '/' ? p : base + "/" + p;
}

bool IsRegular(const std::string& path) {
    struct stat st {};
    return stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

bool RunPartsName(const std::string& n) {
    return !n.empty() && std::all_of(n.begin(), n.end(), [](char c) {
        return isalnum(static_cast<unsigned char>(c)) || c == '-' || c == '_';
    });
}

void Collect(const std::string& path, int depth, std::vector<IfupdownFile>& out) {
    if (depth > kMaxIncludeDepth)
        return;
    for (const IfupdownFile& f : out) {
        if (f.path == path)
            return;
    }
    IfupdownFile file{path, std::string()};
    if (!ReadTextFile(path, file.text))
        return;
    out.push_back(file);
    std::string base = DirOf(path);
    for (const std::string& l : SplitLines(file.text)) {
        std::vector<std::string> w = SplitWords(l);
        if (w.size() < 2)
            continue;
        std::vector<std::string> included;
        if (w[0] == "source") {
            glob_t g{};
            if (glob(Absolute(w[1], base).c_str(), 0, nullptr, &g) == 0) {
                for (size_t i = 0; i < g.gl_pathc; ++i)
                    included.push_back(g.gl_pathv[i]);
            }
            globfree(&g);
        } else if (w[0] == "source-directory" || w[0] == "source-dir") {
            std::string dir = Absolute(w[1], base);
            if (DIR* d = opendir(dir.c_str())) {
                while (dirent* e = readdir(d)) {
                    if (RunPartsName(e->d_name))
                        included.push_back(dir + "/" + e->d_name);
                }
                closedir(d);
            }
            std::sort(included.begin(), included.end());
        }
        for (const std::string& p : included) {
            if (IsRegular(p))
                Collect(p, depth + 1, out);
        }
    }
}

// text with name's stanza replaced by *stanza (kept when null; appended
// when missing and append is set), name dropped from the auto lines when
// dropAuto, and an "auto NAME" line put before the stanza when addAuto.
std::string Edit(const std::string& text, const std::string& name, const std::string* stanza,
                 bool dropAuto, bool addAuto, bool append) {
    std::string out;
    bool in = false;
    bool placed = false;
    for (const std::string& l : SplitLines(text)) {
        if (StartsStanza(l)) {
            in = IsIfaceOf(l, name);
            if (in && !placed) {
                if (addAuto)
                    out += "auto " + name + "\n";
                if (stanza != nullptr)
                    out += *stanza;
                placed = true;
            }
        }
        // The old stanza's lines go; blank lines between stanzas stay.
        if (in && stanza != nullptr && !IsBlank(l))
            continue;
        std::vector<std::string> w = SplitWords(l);
        if (dropAuto && !w.empty() && IsAutoWord(w[0])) {
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
    if (!placed && append && stanza != nullptr && !stanza->empty()) {
        if (!out.empty() && out.back() == '\n' && out.size() > 1 && out[out.size() - 2] != '\n')
            out += "\n";
        if (addAuto)
            out += "auto " + name + "\n";
        out += *stanza;
    }
    return out;
}

}  // namespace

std::vector<IfupdownFile> ReadIfupdownFiles(const std::string& mainPath) {
    std::vector<IfupdownFile> out;
    Collect(mainPath, 0, out);
    return out;
}

int StanzaFileIndex(const std::vector<IfupdownFile>& files, const std::string& name) {
    for (size_t i = 0; i < files.size(); ++i) {
        for (const std::string& l : SplitLines(files[i].text)) {
            if (IsIfaceOf(l, name))
                return static_cast<int>(i);
        }
    }
    return -1;
}

std::string IfaceStanza(const std::string& text, const std::string& name) {
    std::string out;
    bool in = false;
    for (const std::string& l : SplitLines(text)) {
        if (StartsStanza(l))
            in = IsIfaceOf(l, name);
        if (in && !IsBlank(l))
            out += l + "\n";
    }
    return out;
}

bool IsAutoStarted(const std::string& text, const std::string& name) {
    for (const std::string& l : SplitLines(text)) {
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

std::vector<IfupdownFile> WithIfaceIn(const std::vector<IfupdownFile>& files,
                                      const std::string& name, const std::string& stanza,
                                      bool autoStart) {
    int at = StanzaFileIndex(files, name);
    size_t target = at >= 0 ? static_cast<size_t>(at) : 0;
    bool started = std::any_of(files.begin(), files.end(), [&name](const IfupdownFile& f) {
        return IsAutoStarted(f.text, name);
    });
    std::vector<IfupdownFile> out = files;
    for (size_t i = 0; i < out.size(); ++i) {
        bool here = i == target;
        out[i].text = Edit(files[i].text, name, here ? &stanza : nullptr, !autoStart,
                           here && autoStart && !started, here);
    }
    return out;
}

std::string WithIface(const std::string& text, const std::string& name, const std::string& stanza,
                      bool autoStart) {
    return WithIfaceIn({{std::string(), text}}, name, stanza, autoStart)[0].text;
}

}  // namespace nvagent
