// Whole-file reading and crash-safe replacement of a file.
#ifndef NV_AGENT_ATOMIC_FILE_H
#define NV_AGENT_ATOMIC_FILE_H

#include <string>

namespace nvagent {

// Reads the whole regular file at path. On failure returns the errno value
// (EISDIR for a directory), otherwise 0.
int ReadWholeFile(const std::string& path, std::string& text);

// Replaces path with data so that a crash leaves either the old or the new
// file: a temporary file in the same directory is written, synced and renamed
// over path, then the directory is synced. The temporary file is hidden
// (".NAME.tmp.XXXXXX" beside NAME), so a crash meanwhile leaves nothing in the
// way of a directory listing, and RemoveStrayTemps finds it later. The new
// file keeps the old one's owner, group, mode, ACLs and extended attributes
// (a new file: 0644, the writer's). On failure the temporary file is
// removed, path is untouched and err holds the system's reason.
bool WriteFileAtomically(const std::string& path, const std::string& data, std::string& err);

// Removes the temporary files that writes of path left behind when the
// process died before renaming them. Call at start-up, before any write.
// Returns how many were removed.
int RemoveStrayTemps(const std::string& path);

}  // namespace nvagent

#endif
