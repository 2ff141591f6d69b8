// The request journal: a change's old and new values in their place in the
// line and never for the password command; rotation, where a full journal
// file is renamed to PATH.1 and a new one started, but a journal that is not
// a regular file (a device such as the null device, a pipe) is written to
// and never renamed.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <string>

#include "agent/journal.h"
#include "temp_dir.h"

namespace {

TEST(Journal, OldAndNewValuesFollowTheResult) {
    nvtest::TempDir dir;
    nvagent::Journal journal;
    std::string err;
    ASSERT_TRUE(journal.Open(dir.File("journal"), err)) << err;
    journal.Record(57, "web02", 5, 7, nullptr, R"({"sHostname":"web01"})",
                   R"({"sHostname":"web02"})");
    journal.Record(4, "1", 1, 6, "already on");
    EXPECT_EQ(nvtest::ReadFile(dir.File("journal")),
              "{\"cmd\": 57, \"len\": 5, \"payload_hex\": \"7765623032\", \"result\": 7, "
              "\"old\": {\"sHostname\":\"web01\"}, \"new\": {\"sHostname\":\"web02\"}}\n"
              "{\"cmd\": 4, \"len\": 1, \"payload_hex\": \"31\", \"result\": 6, "
              "\"note\": \"already on\"}\n");
}

// Whatever a caller hands it, the password command's line holds the user
// and whether the password changed, never values.
TEST(Journal, ThePasswordCommandNeverGetsValues) {
    nvtest::TempDir dir;
    nvagent::Journal journal;
    std::string err;
    ASSERT_TRUE(journal.Open(dir.File("journal"), err)) << err;
    journal.Record(56, "root pw1 pw1", 12, 7, nullptr, R"({"x":"pw1"})", R"({"x":"pw1"})");
    EXPECT_EQ(nvtest::ReadFile(dir.File("journal")),
              "{\"cmd\": 56, \"len\": 12, \"payload_hex\": \"\", \"result\": 7, "
              "\"user\": \"root\", \"note\": \"password changed\"}\n");
}

// The password-hash command's line is the same: the user, never the hash;
// a hash typed with a blank in it gives no user rather than a piece of it.
TEST(Journal, ThePasswordHashCommandNeverGetsTheHash) {
    nvtest::TempDir dir;
    nvagent::Journal journal;
    std::string err;
    ASSERT_TRUE(journal.Open(dir.File("journal"), err)) << err;
    journal.Record(60, "root $6$salt$hash", 17, 7, nullptr, "", "");
    journal.Record(60, "root $6$sa lt", 13, 2, nullptr, "", "");
    EXPECT_EQ(nvtest::ReadFile(dir.File("journal")),
              "{\"cmd\": 60, \"len\": 17, \"payload_hex\": \"\", \"result\": 7, "
              "\"user\": \"root\", \"note\": \"password changed\"}\n"
              "{\"cmd\": 60, \"len\": 13, \"payload_hex\": \"\", \"result\": 2, "
              "\"user\": \"\", \"note\": \"password not changed\"}\n");
}

TEST(Journal, AFullRegularFileIsRotated) {
    nvtest::TempDir dir;
    nvagent::Journal journal;
    std::string err;
    ASSERT_TRUE(journal.Open(dir.File("journal"), err, 512)) << err;
    for (int i = 0; i < 40; ++i)
        journal.Record(57, "web01", 5, 7);
    struct stat sb;
    ASSERT_EQ(stat(dir.File("journal").c_str(), &sb), 0);
    EXPECT_LE(sb.st_size, 512);
    EXPECT_EQ(stat(dir.File("journal.1").c_str(), &sb), 0);
}

// The journal opened on a character device (a null device made in the test's
// own directory) stays that device however much is written.
TEST(Journal, ADeviceIsNeverRenamed) {
    nvtest::TempDir dir;
    std::string path = dir.File("null");
    if (mknod(path.c_str(), S_IFCHR | 0600, makedev(1, 3)) != 0)
        GTEST_SKIP() << "cannot make a device node here (needs root)";
    nvagent::Journal journal;
    std::string err;
    ASSERT_TRUE(journal.Open(path, err, 512)) << err;
    for (int i = 0; i < 40; ++i)
        journal.Record(57, "web01", 5, 7);
    struct stat sb;
    ASSERT_EQ(stat(path.c_str(), &sb), 0);
    EXPECT_TRUE(S_ISCHR(sb.st_mode));
    EXPECT_NE(stat((path + ".1").c_str(), &sb), 0);
}

}  // namespace

namespace {

// The answer's detail is kept whole in English, whatever the console was
// sent; bytes that are not UTF-8 are replaced so that the line stays JSON.
TEST(Journal, TheFullDetailFollowsTheValues) {
    nvtest::TempDir dir;
    nvagent::Journal journal;
    std::string err;
    ASSERT_TRUE(journal.Open(dir.File("journal"), err)) << err;
    std::string longDetail = "The file " + std::string(120, 'f') + " is already backed up.";
    journal.Record(53, "x", 1, 4, nullptr, "", "", longDetail);
    journal.Record(57, "a\"b", 3, 2, nullptr, "", "", std::string("bad \"\xff\" \x01 汉", 13));
    EXPECT_EQ(nvtest::ReadFile(dir.File("journal")),
              "{\"cmd\": 53, \"len\": 1, \"payload_hex\": \"78\", \"result\": 4, \"detail\": \"" +
                  longDetail +
                  "\"}\n"
                  "{\"cmd\": 57, \"len\": 3, \"payload_hex\": \"612262\", \"result\": 2, "
                  "\"detail\": \"bad \\\"?\\\" \\u0001 汉\"}\n");
}

// A password command's detail that would repeat a password is left out.
TEST(Journal, APasswordCommandsDetailNeverHoldsThePassword) {
    nvtest::TempDir dir;
    nvagent::Journal journal;
    std::string err;
    ASSERT_TRUE(journal.Open(dir.File("journal"), err)) << err;
    journal.Record(56, "root s3cret s3cret", 18, 2, nullptr, "", "", "Bad s3cret here.");
    journal.Record(56, "root pw pw", 10, 2, nullptr, "", "", "A password cannot contain blanks.");
    std::string text = nvtest::ReadFile(dir.File("journal"));
    EXPECT_EQ(text.find("s3cret"), std::string::npos) << text;
    EXPECT_NE(text.find("\"detail\": \"A password cannot contain blanks.\""), std::string::npos)
        << text;
}

}  // namespace
