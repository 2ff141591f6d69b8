// Small file and text helpers of the live backend: whole-file reads and the
// first line of a file, as the kernel's /proc and /sys files are read, and
// the blank-separated words of a configuration or command-output line, and
// whether two paths are one file.
#ifndef NV_AGENT_LIVE_LIVE_FILES_H
#define NV_AGENT_LIVE_LIVE_FILES_H

#include <string>
#include <vector>

namespace nvagent {

// The whole file; false when it cannot be read.
bool ReadTextFile(const std::string& path, std::string& text);

// The file's text up to its first newline, without it; empty on failure.
std::string ReadFirstLine(const std::string& path);

// The words of a line, split at runs of blanks and tabs.
std::vector<std::string> SplitWords(const std::string& line);

// The lines of a text, without their newlines.
std::vector<std::string> SplitLines(const std::string& text);

// True when both paths name one file (device and inode, links followed), as
// two processes' /proc/PID/ns/* entries do when they share a namespace.
bool SameFile(const std::string& a, const std::string& b);

}  // namespace nvagent

#endif
