// The diagnostic log: record format, level bits, the cut at the buffer size,
// recreation of a removed file with mode 0600, and lost records on failure.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cctype>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>

#include "link/global_val.h"
#include "shell/nv_log.h"

namespace {

class LogTest : public ::testing::Test {
protected:
    void SetUp() override {
        char tmpl[] = "/tmp/nvlog.XXXXXX";
        m_dir = mkdtemp(tmpl);
        m_path = m_dir + "/nvui.log";
        snprintf(pg_Obj->szLogFileName, sizeof pg_Obj->szLogFileName, "%s", m_path.c_str());
        pg_Obj->c_LOG_Level = 7;
    }
    void TearDown() override {
        unlink(m_path.c_str());
        rmdir(m_dir.c_str());
        pg_Obj->c_LOG_Level = 0;
    }
    std::string Read() const {
        std::ifstream in(m_path, std::ios::binary);
        std::stringstream ss;
        ss << in.rdbuf();
        return ss.str();
    }
    std::string m_dir;
    std::string m_path;
};

// "YYYY-MM-DD HH:MM:SS"
bool IsStamp(const std::string& s) {
    const char* shape = "dddd-dd-dd dd:dd:dd";
    if (s.size() != strlen(shape)) return false;
    for (size_t i = 0; i < s.size(); ++i) {
        if (shape[i] == 'd' ? !isdigit(static_cast<unsigned char>(s[i])) : s[i] != shape[i]) {
            return false;
        }
    }
    return true;
}

// A record is the time stamp followed by the expected rest.
void ExpectRecord(const std::string& rec, const std::string& rest) {
    ASSERT_GT(rec.size(), 19u) << rec;
    EXPECT_TRUE(IsStamp(rec.substr(0, 19))) << rec;
    EXPECT_EQ(rec.substr(19), rest);
}

TEST_F(LogTest, DebugRecordFormat) {
    int line = __LINE__ + 1;
    NV_DBG("norvane ui start ok!\n");
    char expect[256];
    snprintf(expect, sizeof expect, " [DBG]  [test_log:%4d:TestBody]norvane ui start ok!\n\n", line);
    ExpectRecord(Read(), expect);
}

TEST_F(LogTest, ErrorRecordFormat) {
    int line = __LINE__ + 1;
    NV_XERR("connect error");
    char expect[256];
    snprintf(expect, sizeof expect, " [XERR]  [test_log:%4d:TestBody]connect error\n", line);
    ExpectRecord(Read(), expect);
}

TEST_F(LogTest, MessageFormatTakesArguments) {
    NV_DBG("enter refresh thread:ID is %d(0x%x)!\n", 42, 42);
    EXPECT_THAT(Read(), ::testing::HasSubstr("]enter refresh thread:ID is 42(0x2a)!\n\n"));
}

TEST_F(LogTest, LevelBitsSelectRecords) {
    pg_Obj->c_LOG_Level = 0;
    NV_DBG("a");
    NV_XERR("b");
    EXPECT_EQ(Read(), "");
    pg_Obj->c_LOG_Level = 1;
    NV_DBG("debug-hidden");
    NV_XERR("error-shown");
    EXPECT_THAT(Read(), ::testing::Not(::testing::HasSubstr("debug-hidden")));
    EXPECT_THAT(Read(), ::testing::HasSubstr("error-shown"));
    pg_Obj->c_LOG_Level = 4;
    NV_XERR("error-hidden");
    NV_DBG("debug-shown");
    EXPECT_THAT(Read(), ::testing::Not(::testing::HasSubstr("error-hidden")));
    EXPECT_THAT(Read(), ::testing::HasSubstr("debug-shown"));
    pg_Obj->c_LOG_Level = 2;
    NV_DBG("x");
    NV_XERR("y");
    EXPECT_THAT(Read(), ::testing::Not(::testing::HasSubstr("]x")));
    EXPECT_THAT(Read(), ::testing::Not(::testing::HasSubstr("]y")));
}

TEST_F(LogTest, LongRecordIsCutWithoutFinalNewline) {
    std::string big(20000, 'x');
    NV_DBG("%s", big.c_str());
    std::string rec = Read();
    EXPECT_EQ(rec.size(), 11023u);
    EXPECT_EQ(rec.back(), 'x');
    EXPECT_EQ(rec.find('\n'), std::string::npos);
}

TEST_F(LogTest, RecordJustFittingKeepsItsNewline) {
    NV_DBG("probe");
    size_t prefix = Read().size() - strlen("probe\n");
    unlink(m_path.c_str());
    std::string msg(11023 - prefix - 1, 'y');
    NV_DBG("%s", msg.c_str());
    std::string rec = Read();
    EXPECT_EQ(rec.size(), 11023u);
    EXPECT_EQ(rec.back(), '\n');
}

TEST_F(LogTest, RemovedFileIsRecreatedWithMode0600) {
    mode_t old = umask(0);
    NV_DBG("first");
    unlink(m_path.c_str());
    NV_DBG("second");
    umask(old);
    struct stat st;
    ASSERT_EQ(stat(m_path.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0600u);
    EXPECT_THAT(Read(), ::testing::HasSubstr("second"));
    EXPECT_THAT(Read(), ::testing::Not(::testing::HasSubstr("first")));
}

TEST_F(LogTest, UnopenableLogLosesTheRecordAndGoesOn) {
    snprintf(pg_Obj->szLogFileName, sizeof pg_Obj->szLogFileName, "%s/missing/dir/nvui.log",
             m_dir.c_str());
    NV_DBG("lost");
    NV_XERR("lost too");
    snprintf(pg_Obj->szLogFileName, sizeof pg_Obj->szLogFileName, "%s", m_path.c_str());
    NV_DBG("kept");
    EXPECT_THAT(Read(), ::testing::HasSubstr("kept"));
    EXPECT_THAT(Read(), ::testing::Not(::testing::HasSubstr("lost")));
}

TEST_F(LogTest, TimeStampIsKeptInTheRecord) {
    NV_DBG("stamp");
    EXPECT_EQ(Read().substr(0, 19), std::string(pg_Obj->szCurTimeStr));
    EXPECT_GT(pg_Obj->CurTimeSec, 0);
}

}  // namespace
