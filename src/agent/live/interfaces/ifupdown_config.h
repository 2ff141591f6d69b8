// Editing ifupdown's configuration in place: /etc/network/interfaces and the
// files it includes (source, source-directory), one interface's stanza
// replaced where it is and its "auto" line kept, added or removed, every
// other line (comments, other interfaces, source lines) as it was.
#ifndef NV_AGENT_LIVE_INTERFACES_IFUPDOWN_CONFIG_H
#define NV_AGENT_LIVE_INTERFACES_IFUPDOWN_CONFIG_H

#include <string>
#include <vector>

namespace nvagent {

extern const char* const kIfupdownMainFile;

// One file of the configuration and its text.
struct IfupdownFile {
    std::string path;
    std::string text;
};

// The main file and every file it includes, depth first in the order
// ifupdown reads them (a source line's glob sorted, a source-directory's
// files whose names are letters, digits, '-' and '_' only, sorted). Empty
// when the main file cannot be read.
std::vector<IfupdownFile> ReadIfupdownFiles(const std::string& mainPath);

// The index of the first file holding an "iface NAME inet" stanza, or -1.
int StanzaFileIndex(const std::vector<IfupdownFile>& files, const std::string& name);

// The "iface NAME inet ..." stanza of name (its lines, options included,
// indented or not), empty when there is none.
std::string IfaceStanza(const std::string& text, const std::string& name);

// The files with name's stanza replaced where it is (added to the first
// file when there is none). With autoStart, an existing auto or
// allow-hotplug line is kept, or an "auto NAME" line is put before the
// stanza; without, name leaves every such line.
std::vector<IfupdownFile> WithIfaceIn(const std::vector<IfupdownFile>& files,
                                      const std::string& name, const std::string& stanza,
                                      bool autoStart);

// The same on one file's text.
std::string WithIface(const std::string& text, const std::string& name, const std::string& stanza,
                      bool autoStart);

// Whether name is on an "auto" or "allow-" line.
bool IsAutoStarted(const std::string& text, const std::string& name);

}  // namespace nvagent

#endif
