// An access ACL in the kernel's binary layout of system.posix_acl_access, so
// that tests can set one with setxattr where the acl tools are missing.
#ifndef NV_TESTS_SUPPORT_ACL_XATTR_H
#define NV_TESTS_SUPPORT_ACL_XATTR_H

#include <cstdint>
#include <string>

namespace nvtest {

// Owner read-write, the named user uid read, group read, mask read, others
// nothing: version 2, then tag, permissions and id per entry.
inline std::string AclGivingReadTo(uint32_t uid) {
    struct Entry {
        uint16_t tag;
        uint16_t perm;
        uint32_t id;
    };
    const uint32_t kVersion = 2;
    const uint32_t kAny = ~0u;
    const Entry entries[] = {
        {0x01, 6, kAny}, {0x02, 4, uid}, {0x04, 4, kAny}, {0x10, 4, kAny}, {0x20, 0, kAny}};
    std::string acl(reinterpret_cast<const char*>(&kVersion), 4);
    acl.append(reinterpret_cast<const char*>(entries), sizeof entries);
    return acl;
}

}  // namespace nvtest

#endif
