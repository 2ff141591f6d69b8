// Temporary directories and whole-file reads and writes for tests.
#include "temp_dir.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <vector>

namespace nvtest {

namespace {

// A socket path must fit in 108 bytes; leave room for the directory's own
// name and a file name inside it.
constexpr size_t kMaxBaseLen = 60;

std::string BaseDir() {
    const char* env = getenv("TMPDIR");
    if (env != nullptr && env[0] == '/' && std::string(env).size() <= kMaxBaseLen)
        return env;
    return "/tmp";
}

}  // namespace

TempDir::TempDir() {
    std::string pattern = BaseDir() + "/nvtest-XXXXXX";
    std::vector<char> buf(pattern.begin(), pattern.end());
    buf.push_back('\0');
    if (mkdtemp(buf.data()) == nullptr) {
        throw std::runtime_error("cannot create a temporary directory under " + BaseDir());
    }
    m_path = buf.data();
}

TempDir::~TempDir() {
    std::error_code ec;
    std::filesystem::remove_all(m_path, ec);
}

std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

bool WriteFile(const std::string& path, const std::string& content) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << content;
    out.close();
    return static_cast<bool>(out);
}

}  // namespace nvtest
