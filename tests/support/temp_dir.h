// A private temporary directory for one test, removed with everything in it
// when the object goes away.
#ifndef NV_TESTS_SUPPORT_TEMP_DIR_H
#define NV_TESTS_SUPPORT_TEMP_DIR_H

#include <string>

namespace nvtest {

class TempDir {
public:
    // Creates a fresh directory (mode 0700) under $TMPDIR, or under /tmp when
    // $TMPDIR is unset or too long to hold socket paths. Throws
    // std::runtime_error when it cannot.
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& Path() const { return m_path; }
    // Path of name inside the directory.
    std::string File(const std::string& name) const { return m_path + "/" + name; }

private:
    std::string m_path;
};

// Whole content of a file; empty when it cannot be read.
std::string ReadFile(const std::string& path);
// Replaces the content of a file; false when it cannot be written.
bool WriteFile(const std::string& path, const std::string& content);

}  // namespace nvtest

#endif
