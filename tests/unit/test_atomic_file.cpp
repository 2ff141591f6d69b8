// Atomic replacement keeps what the replaced file had besides its text:
// mode, ACL and extended attributes (owner and group are checked as root
// in the sandbox, tests/integration/test_live_ftp.cpp).
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "acl_xattr.h"
#include "agent/atomic_file.h"
#include "temp_dir.h"

namespace {

std::string Xattr(const std::string& path, const char* name) {
    char buf[256];
    ssize_t n = getxattr(path.c_str(), name, buf, sizeof buf);
    return n < 0 ? std::string() : std::string(buf, static_cast<size_t>(n));
}

TEST(AtomicFile, TheReplacementKeepsModeAclAndAttributes) {
    nvtest::TempDir dir;
    std::string path = dir.File("app.conf");
    ASSERT_TRUE(nvtest::WriteFile(path, "old\n"));
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    if (setxattr(path.c_str(), "user.origin", "site", 4, 0) != 0)
        GTEST_SKIP() << "no user attributes here: " << strerror(errno);
    std::string acl = nvtest::AclGivingReadTo(65534);
    bool withAcl =
        setxattr(path.c_str(), "system.posix_acl_access", acl.data(), acl.size(), 0) == 0;
    struct stat before {};
    ASSERT_EQ(stat(path.c_str(), &before), 0);

    std::string err;
    ASSERT_TRUE(nvagent::WriteFileAtomically(path, "new\n", err)) << err;
    struct stat after {};
    ASSERT_EQ(stat(path.c_str(), &after), 0);
    EXPECT_NE(after.st_ino, before.st_ino);
    EXPECT_EQ(nvtest::ReadFile(path), "new\n");
    EXPECT_EQ(after.st_mode & 07777, before.st_mode & 07777);
    EXPECT_EQ(after.st_uid, before.st_uid);
    EXPECT_EQ(after.st_gid, before.st_gid);
    EXPECT_EQ(Xattr(path, "user.origin"), "site");
    if (withAcl) {
        EXPECT_EQ(Xattr(path, "system.posix_acl_access"), acl);
    }
}

TEST(AtomicFile, ANewFileIsReadableByAllAndWritableByItsOwner) {
    nvtest::TempDir dir;
    std::string path = dir.File("fresh.conf");
    std::string err;
    ASSERT_TRUE(nvagent::WriteFileAtomically(path, "x\n", err)) << err;
    struct stat st {};
    ASSERT_EQ(stat(path.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 07777, 0644u);
    EXPECT_EQ(st.st_uid, geteuid());
}

}  // namespace
