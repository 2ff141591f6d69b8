// Small file helpers of the live backend: whole-file reads and the first
// line of a file, as the kernel's /proc and /sys files are read.
#ifndef NV_AGENT_LIVE_LIVE_FILES_H
#define NV_AGENT_LIVE_LIVE_FILES_H

#include <string>

namespace nvagent {

// The whole file; false when it cannot be read.
bool ReadTextFile(const std::string& path, std::string& text);

// The file's text up to its first newline, without it; empty on failure.
std::string ReadFirstLine(const std::string& path);

}  // namespace nvagent

#endif
