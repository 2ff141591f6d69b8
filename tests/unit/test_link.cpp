// The service link and the client library against a scripted agent: request
// shapes, payload copying and cutting, start-up results, result texts, and
// answers that are truncated, oversized, malformed or never come.
#include <dirent.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <set>
#include <sstream>
#include <thread>
#include <vector>

#include "cmdclient/cmd_client.h"
#include "fake_agent.h"
#include "link/ui_interface.h"
#include "state_samples.h"
#include "strings/com_str.h"
#include "wire/wire.h"

using ::testing::HasSubstr;

namespace {

std::string Slurp(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

// Answers a check with the sample state (or the given records) and any set
// command with 7 and a detail.
FakeAgent::Script StateScript(const cConf_Inf& c, const cSvrState& s) {
    std::string body = EncodeState(c, s);
    return [body](const FakeRequest& req) {
        if (req.cmd == nvwire::kCmdCheck)
            return MakeAnswer(req.cmd, em_OK, "", body);
        return MakeAnswer(req.cmd, em_ActSuccAll, "applied");
    };
}

FakeAgent::Script SampleScript() {
    cConf_Inf c;
    cSvrState s;
    FillSampleState(c, s);
    return StateScript(c, s);
}

class LinkTest : public ::testing::Test {
protected:
    void SetUp() override {
        char tmpl[] = "/tmp/nvlink.XXXXXX";
        m_dir = mkdtemp(tmpl);
        m_log = m_dir + "/nvui.log";
        setenv(NVUI_ENV_LOG, m_log.c_str(), 1);
        SetName2Idx(pg_Obj);
        SetErrMap(pg_Obj);
        pg_Obj->c_LOG_Level = 7;
        ApplyLinkEnvironment();
        pg_Obj->sReqRetInfo.clear();
        g_iRequestTimeoutMs = 10000;
        g_iSetRequestTimeoutMs = 120000;
    }
    void TearDown() override {
        unlink(m_log.c_str());
        rmdir(m_dir.c_str());
        unsetenv(NVUI_ENV_SOCKET);
        unsetenv(NVUI_ENV_LOG);
        g_iRequestTimeoutMs = 10000;
        g_iSetRequestTimeoutMs = 120000;
    }
    void UseAgent(const FakeAgent& a) {
        setenv(NVUI_ENV_SOCKET, a.SocketPath().c_str(), 1);
        pg_Obj->sSockName = a.SocketPath();
    }
    void UseNoAgent() {
        std::string none = m_dir + "/nobody-listens";
        setenv(NVUI_ENV_SOCKET, none.c_str(), 1);
        pg_Obj->sSockName = none;
    }
    std::string m_dir;
    std::string m_log;
};

// ---- set requests ----

TEST_F(LinkTest, CommandsOutsideFourToSixtyThreeAreRefusedWithoutConnecting) {
    FakeAgent agent(SampleScript());
    UseAgent(agent);
    char data[] = "1";
    EXPECT_EQ(SetObjInfo(3, 1, data), -1);
    EXPECT_EQ(SetObjInfo(64, 1, data), -1);
    EXPECT_EQ(SetObjInfo(0, 1, data), -1);
    EXPECT_EQ(SetObjInfo(-5, 1, data), -1);
    EXPECT_EQ(agent.Accepted(), 0);
    EXPECT_EQ(SetObjInfo(4, 1, data), em_ActSuccAll);
    EXPECT_EQ(SetObjInfo(63, 1, data), em_ActSuccAll);
    auto reqs = agent.Requests();
    ASSERT_EQ(reqs.size(), 2u);
    EXPECT_EQ(reqs[0].cmd, 4);
    EXPECT_EQ(reqs[1].cmd, 63);
    EXPECT_EQ(reqs[0].payload, "1");
}

TEST_F(LinkTest, EmptyPayloadWithNullDataIsSentWithLengthSix) {
    FakeAgent agent(SampleScript());
    UseAgent(agent);
    strcpy(pg_Obj->szCmdBuff, "stale");
    EXPECT_EQ(SetObjInfo(25, 0, nullptr), em_ActSuccAll);
    EXPECT_EQ(pg_Obj->iLenToSend, 6);
    EXPECT_STREQ(pg_Obj->szCmdBuff, "stale");  // left untouched
    auto reqs = agent.Requests();
    ASSERT_EQ(reqs.size(), 1u);
    EXPECT_EQ(reqs[0].pkglen, 6u);
    EXPECT_EQ(reqs[0].payload, "");
}

TEST_F(LinkTest, PayloadOfExactlyTheBufferLimitIsSentWhole) {
    FakeAgent agent(SampleScript());
    UseAgent(agent);
    std::string data(101023, 'a');
    EXPECT_EQ(SetObjInfo(13, static_cast<int>(data.size()), &data[0]), em_ActSuccAll);
    EXPECT_EQ(pg_Obj->iLenToSend, 101023 + 6);
    EXPECT_EQ(strlen(pg_Obj->szCmdBuff), 101023u);
    auto reqs = agent.Requests();
    ASSERT_EQ(reqs.size(), 1u);
    EXPECT_EQ(reqs[0].payload, data);
}

// The console cuts the copy and keeps the length; the library then sends
// nothing rather than the first part of the payload.
TEST_F(LinkTest, LongerPayloadIsCutButNeverSent) {
    FakeAgent agent(SampleScript());
    UseAgent(agent);
    std::string data(101023, 'a');
    data += "TAIL";
    EXPECT_EQ(SetObjInfo(13, static_cast<int>(data.size()), &data[0]), em_CmdTooLong);
    EXPECT_EQ(pg_Obj->iLenToSend, static_cast<int>(data.size()) + 6);
    EXPECT_EQ(std::string(pg_Obj->szCmdBuff), data.substr(0, 101023));
    EXPECT_EQ(pg_Obj->sReqRetInfo,
              "The payload has 101027 bytes; a command carries at most 101023.");
    EXPECT_TRUE(agent.Requests().empty());
}

TEST_F(LinkTest, PayloadStopsAtANul) {
    FakeAgent agent(SampleScript());
    UseAgent(agent);
    char data[] = {'a', 'b', '\0', 'c', 'd'};
    EXPECT_EQ(SetObjInfo(57, 5, data), em_ActSuccAll);
    EXPECT_EQ(pg_Obj->iLenToSend, 11);
    EXPECT_STREQ(pg_Obj->szCmdBuff, "ab");
    EXPECT_EQ(agent.Requests().at(0).payload, "ab");
}

TEST_F(LinkTest, SetRequestLeavesTheCommandNameAsTheCheckLeftIt) {
    FakeAgent agent(SampleScript());
    UseAgent(agent);
    ASSERT_EQ(GetObjInfo(), em_OK);
    char data[] = "web02";
    SetObjInfo(57, 5, data);
    EXPECT_EQ(pg_Obj->sCmdName, "check");
    EXPECT_EQ(pg_Obj->shCmdNo, 57);
    EXPECT_EQ(pg_Obj->sReqRetInfo, "applied");
}

// ---- check request ----

TEST_F(LinkTest, CheckRequestLoadsTheState) {
    FakeAgent agent(SampleScript());
    UseAgent(agent);
    strcpy(pg_Obj->szCmdBuff, "leftover");
    ASSERT_EQ(GetObjInfo(), em_OK);
    EXPECT_EQ(pg_Obj->sCmdName, "check");
    EXPECT_EQ(pg_Obj->shCmdNo, nvwire::kCmdCheck);
    EXPECT_EQ(pg_Obj->iLenToSend, 6);
    EXPECT_EQ(pg_Obj->szCmdBuff[0], '\0');
    EXPECT_EQ(pg_Obj->fdConn, -1);
    EXPECT_EQ(pg_Obj->objCif.sHostname, "web01");
    EXPECT_EQ(pg_Obj->objSS.vsIfconfigList.size(), 1u);
    auto reqs = agent.Requests();
    ASSERT_EQ(reqs.size(), 1u);
    EXPECT_EQ(reqs[0].cmd, nvwire::kCmdCheck);
    EXPECT_EQ(reqs[0].pkglen, 6u);
}

TEST_F(LinkTest, MissingCheckNameSendsZero) {
    FakeAgent agent(SampleScript());
    UseAgent(agent);
    pg_Obj->mName2Idx.clear();
    GetObjInfo();
    EXPECT_EQ(agent.Requests().at(0).cmd, 0);
    EXPECT_EQ(pg_Obj->mName2Idx.count("check"), 1u);
}

TEST_F(LinkTest, LargeStateBeyondTheReceiveBufferLoads) {
    cConf_Inf c;
    cSvrState s;
    FillSampleState(c, s);
    for (int i = 0; i < 10000; ++i) {
        s.vsIptablesInputList.push_back(std::to_string(i + 1) +
                                        "  ACCEPT  tcp  10.0.0.0/8  any  0.0.0.0/0  8080");
        s.vsTcpListenList.push_back("0.0.0.0          " + std::to_string(10000 + i) +
                                    "  4242  app");
    }
    FakeAgent agent(StateScript(c, s));
    UseAgent(agent);
    ASSERT_EQ(GetObjInfo(), em_OK);
    EXPECT_GT(pg_Obj->iLenRecved, static_cast<int>(sizeof(pg_Obj->szRecvBuff)));
    EXPECT_EQ(pg_Obj->objSS.vsIptablesInputList.size(), 10001u);
    EXPECT_EQ(pg_Obj->objSS.vsTcpListenList.back(), s.vsTcpListenList.back());
}

// ---- bad answers ----

class BadAnswerTest : public LinkTest {
protected:
    // Loads the sample state, then sends one check against `script` and
    // expects `code` with the sample state still in place.
    void ExpectRefused(FakeAgent::Script script, int code) {
        {
            FakeAgent good(SampleScript());
            UseAgent(good);
            ASSERT_EQ(GetObjInfo(), em_OK);
        }
        FakeAgent bad(std::move(script));
        UseAgent(bad);
        EXPECT_EQ(GetObjInfo(), code);
        EXPECT_EQ(pg_Obj->objCif.sHostname, "web01");
        EXPECT_EQ(pg_Obj->fdConn, -1);
    }
};

TEST_F(BadAnswerTest, ConnectionClosedMidAnswer) {
    ExpectRefused(
        [](const FakeRequest& req) {
            cConf_Inf c;
            cSvrState s;
            std::string full = MakeAnswer(req.cmd, em_OK, "", EncodeState(c, s));
            return full.substr(0, full.size() / 2);
        },
        em_ComSendReqPkgRecvFinUnexpect);
    EXPECT_THAT(pg_Obj->sReqRetInfo, HasSubstr("Received"));
}

TEST_F(BadAnswerTest, ConnectionClosedWithoutAnswer) {
    ExpectRefused([](const FakeRequest&) { return std::string(); },
                  em_ComSendReqPkgRecvFinUnexpect);
}

TEST_F(BadAnswerTest, ImpossibleLength) {
    ExpectRefused([](const FakeRequest&) { return std::string("\xff\xff\xff\x7f", 4); },
                  em_ParsePkgPkglenNotMatch);
    ExpectRefused([](const FakeRequest&) { return std::string("\x03\x00\x00\x00", 4); },
                  em_ParsePkgPkglenNotMatch);
}

TEST_F(BadAnswerTest, BodyCutShortInsideTheState) {
    ExpectRefused(
        [](const FakeRequest& req) {
            cConf_Inf c;
            cSvrState s;
            std::string body = EncodeState(c, s);
            return MakeAnswer(req.cmd, em_OK, "", body.substr(0, 30));
        },
        em_GetIntReadBuffNotEnough);
    ExpectRefused(
        [](const FakeRequest& req) {
            cConf_Inf c;
            cSvrState s;
            c.vFileMonitList = {"/etc/passwd"};
            std::string body = EncodeState(c, s);
            return MakeAnswer(req.cmd, em_OK, "", body.substr(0, 50));
        },
        em_GetStrReadBuffNotEnough);
}

TEST_F(BadAnswerTest, BodyWithTrailingBytes) {
    ExpectRefused(
        [](const FakeRequest& req) {
            cConf_Inf c;
            cSvrState s;
            return MakeAnswer(req.cmd, em_OK, "", EncodeState(c, s) + "junk");
        },
        em_ParsePkgPkglenNotMatch);
}

TEST_F(BadAnswerTest, AnswerForAnotherCommand) {
    ExpectRefused([](const FakeRequest&) { return MakeAnswer(42, em_OK, ""); },
                  em_ParsePkgCmdNoOutOfRange);
}

TEST_F(BadAnswerTest, FailedCheckKeepsTheOldState) {
    ExpectRefused([](const FakeRequest& req) { return MakeAnswer(req.cmd, em_ActFail, "busy"); },
                  em_ActFail);
    EXPECT_EQ(pg_Obj->sReqRetInfo, "busy");
}

TEST_F(BadAnswerTest, StalledAgentEndsTheRequest) {
    g_iRequestTimeoutMs = 300;
    FakeAgent stalled([](const FakeRequest&) { return std::string(); });
    stalled.SetHoldMs(5000);
    // The scripted agent answers nothing and holds the connection open.
    stalled.SetHoldMs(3000);
    UseAgent(stalled);
    auto t0 = std::chrono::steady_clock::now();
    EXPECT_EQ(GetObjInfo(), em_Error);
    auto ms =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - t0)
            .count();
    EXPECT_LT(ms, 2500);
    EXPECT_THAT(pg_Obj->sReqRetInfo, HasSubstr("No answer from the agent"));
    EXPECT_THAT(GetOperatingInfoStr(em_Error), HasSubstr("No answer from the agent"));
}

// A change may keep the agent busy longer than a check may take: the answer
// to a set command is waited for up to its own, longer limit, and still
// within a limit.
TEST_F(BadAnswerTest, ASetCommandIsWaitedForLongerThanACheck) {
    g_iRequestTimeoutMs = 300;
    g_iSetRequestTimeoutMs = 5000;
    FakeAgent slow([](const FakeRequest& req) {
        std::this_thread::sleep_for(std::chrono::milliseconds(900));
        return MakeAnswer(req.cmd, em_ActSuccAll, "");
    });
    UseAgent(slow);
    EXPECT_EQ(GetObjInfo(), em_Error);
    EXPECT_EQ(pg_Obj->sReqRetInfo, "No answer from the agent within 300 ms.");
    EXPECT_EQ(SetObjInfo(57, 5, const_cast<char*>("web02")), em_ActSuccAll);
    g_iSetRequestTimeoutMs = 400;
    EXPECT_EQ(SetObjInfo(57, 5, const_cast<char*>("web03")), em_Error);
    EXPECT_EQ(pg_Obj->sReqRetInfo, "No answer from the agent within 400 ms.");
}

// ---- connecting ----

int CountOpenFds() {
    int n = 0;
    DIR* d = opendir("/proc/self/fd");
    while (dirent* e = readdir(d))
        n += e->d_name[0] != '.';
    closedir(d);
    return n;
}

TEST_F(LinkTest, AgentDownGivesConnectFailedAndAnErrorRecord) {
    UseNoAgent();
    EXPECT_EQ(GetObjInfo(), ERR_CONNECT_FAILED);
    char one[] = "1";
    EXPECT_EQ(SetObjInfo(4, 1, one), ERR_CONNECT_FAILED);
    std::string log = Slurp(m_log);
    EXPECT_THAT(log, HasSubstr(" [XERR]  [ui_interface:"));
    EXPECT_THAT(log, HasSubstr(":GetObjInfo]connect error\n"));
    EXPECT_THAT(log, HasSubstr(":SetObjInfo]connect error\n"));
}

TEST_F(LinkTest, FailedConnectsDoNotLeakDescriptors) {
    UseNoAgent();
    GetObjInfo();
    int before = CountOpenFds();
    for (int i = 0; i < 50; ++i)
        GetObjInfo();
    EXPECT_LE(CountOpenFds(), before);
}

TEST_F(LinkTest, SocketCreationFailureGivesMinusOne) {
    FakeAgent agent(SampleScript());
    UseAgent(agent);
    ASSERT_EQ(GetObjInfo(), em_OK);  // no failed socket left to close first
    int lowest = open("/dev/null", O_RDONLY);
    close(lowest);
    rlimit old;
    getrlimit(RLIMIT_NOFILE, &old);
    rlimit low = old;
    low.rlim_cur = static_cast<rlim_t>(lowest);
    setrlimit(RLIMIT_NOFILE, &low);
    int rc = GetObjInfo();
    setrlimit(RLIMIT_NOFILE, &old);
    // The "socket error" record is lost here too: the log needs a descriptor
    // as well, and records that cannot be written are dropped.
    EXPECT_EQ(rc, -1);
    EXPECT_EQ(agent.Accepted(), 1);
}

// ---- result texts ----

TEST_F(LinkTest, ResultTextIsDescriptionFollowedDirectlyByDetail) {
    pg_Obj->sReqRetInfo = "Host name set to web02.";
    EXPECT_STREQ(GetOperatingInfoStr(em_ActSuccAll), "Done. Host name set to web02.");
    pg_Obj->sReqRetInfo.clear();
    EXPECT_STREQ(GetOperatingInfoStr(em_ActSuccAll), "Done. ");
    EXPECT_EQ(std::string(GetOperatingInfoStr(em_ActSuccAll)), pg_Obj->mErrorNo2Des[7]);
}

TEST_F(LinkTest, ResultTextOfUnknownCodeIsTheDetailAlone) {
    pg_Obj->sReqRetInfo = "why";
    EXPECT_STREQ(GetOperatingInfoStr(-50), "why");
    EXPECT_EQ(pg_Obj->mErrorNo2Des.count(-50), 1u);
}

TEST_F(LinkTest, ResultTextIsCutTo1023) {
    pg_Obj->sReqRetInfo = std::string(5000, 'z');
    EXPECT_EQ(strlen(GetOperatingInfoStr(em_ActFail)), 1023u);
}

TEST_F(LinkTest, ConnectFailedTextIsEnglishInEveryLanguage) {
    for (int lan = 0; lan < LAN_MAX; ++lan) {
        iLanIdx = lan;
        EXPECT_STREQ(GetOperatingInfoStr(ERR_CONNECT_FAILED), "Error:connect failed!");
    }
    iLanIdx = LAN_MAX;
}

TEST_F(LinkTest, ConsoleCodesOtherThanConnectShowNothing) {
    for (int code = UI_ERR_CODE_MIN; code <= UI_ERR_CODE_MAX; ++code) {
        if (code == ERR_CONNECT_FAILED)
            continue;
        EXPECT_EQ(GetOperatingInfoStr(code), nullptr) << code;
    }
}

TEST_F(LinkTest, EveryResultCodeHasADescription) {
    pg_Obj->mErrorNo2Des.clear();
    SetErrMap(pg_Obj);
    const int codes[] = {-99, -98, -97, -96, -95, -94, -93, -92, -91, -90, -89, -88, -87,
                         -86, -85, -84, -83, -82, -81, -80, -79, -78, -77, -76, -75, -1,
                         0,   1,   2,   3,   4,   5,   6,   7,   8,   9,   10,  11};
    for (int code : codes) {
        ASSERT_EQ(pg_Obj->mErrorNo2Des.count(code), 1u) << code;
        const std::string& d = pg_Obj->mErrorNo2Des[code];
        EXPECT_GE(d.size(), 4u) << code;
        EXPECT_EQ(d.substr(d.size() - 2), ". ") << code;
    }
    EXPECT_EQ(pg_Obj->mErrorNo2Des.size(), sizeof codes / sizeof codes[0]);
}

TEST_F(LinkTest, EveryCommandHasAName) {
    pg_Obj->mName2Idx.clear();
    SetName2Idx(pg_Obj);
    EXPECT_EQ(pg_Obj->mName2Idx["check"], nvwire::kCmdCheck);
    EXPECT_EQ(pg_Obj->mName2Idx["lang"], nvwire::kCmdSetLang);
    std::set<int> numbers;
    for (const auto& kv : pg_Obj->mName2Idx)
        numbers.insert(kv.second);
    for (int n = 4; n <= 63; ++n)
        EXPECT_EQ(numbers.count(n), 1u) << n;
    EXPECT_EQ(pg_Obj->mName2Idx.size(), 117u);  // 62 names, 55 earlier ones still taken
}

// ---- start-up ----

class InitTest : public LinkTest {
protected:
    int RunInit(const cConf_Inf& c) {
        cSvrState s;
        FakeAgent agent(StateScript(c, s));
        UseAgent(agent);
        m_lang = LAN_MAX;
        m_version.clear();
        return UI_InitInterface(&m_lang, m_version);
    }
    int m_lang = LAN_MAX;
    std::string m_version;
};

TEST_F(InitTest, NullLanguagePlace) {
    std::string v;
    EXPECT_EQ(UI_InitInterface(nullptr, v), ERR_PARAMTER);
}

TEST_F(InitTest, LanguageCodesMapToIndexes) {
    cConf_Inf c;
    c.sVersion = "2.4.1";
    const int expect[] = {LAN_ENGLISH, LAN_CHINESE_GB2312, LAN_CHINESE_UTF8};
    for (int code = 0; code < 3; ++code) {
        c.chLangCode = static_cast<char>(code);
        ASSERT_EQ(RunInit(c), 0);
        EXPECT_EQ(m_lang, expect[code]);
        EXPECT_EQ(m_version, "2.4.1");
    }
    EXPECT_EQ(pg_Obj->c_LOG_Level, 7);
    EXPECT_STREQ(pg_Obj->szLogFileName, m_log.c_str());
}

TEST_F(InitTest, LanguageCodeThreeIsInvalid) {
    cConf_Inf c;
    c.chLangCode = 3;
    EXPECT_EQ(RunInit(c), ERR_LANG_CODE_INVALID);
    EXPECT_EQ(m_lang, LAN_MAX);
}

TEST_F(InitTest, EmptyVersionIsRefused) {
    cConf_Inf c;
    c.sVersion = "";
    EXPECT_EQ(RunInit(c), ERR_VERSION_GET_FAILED);
    EXPECT_EQ(m_version, "");
}

TEST_F(InitTest, AgentDownReadsAsConnectFailed) {
    UseNoAgent();
    int lang = LAN_MAX;
    std::string v;
    EXPECT_EQ(UI_InitInterface(&lang, v), ERR_CONNECT_FAILED);
}

TEST_F(InitTest, FailedCheckReadsAsConnectFailed) {
    FakeAgent agent([](const FakeRequest& req) { return MakeAnswer(req.cmd, em_ActFail, ""); });
    UseAgent(agent);
    int lang = LAN_MAX;
    std::string v;
    EXPECT_EQ(UI_InitInterface(&lang, v), ERR_CONNECT_FAILED);
}

TEST_F(InitTest, UnwritableLogStopsStartUp) {
    std::string bad = m_dir + "/no/such/dir/nvui.log";
    setenv(NVUI_ENV_LOG, bad.c_str(), 1);
    FakeAgent agent(SampleScript());
    UseAgent(agent);
    int lang = LAN_MAX;
    std::string v;
    EXPECT_EQ(UI_InitInterface(&lang, v), ERR_OPEN_LOG_FAILED);
    EXPECT_EQ(agent.Accepted(), 0);
}

TEST_F(InitTest, DefaultPathsWithoutEnvironment) {
    unsetenv(NVUI_ENV_LOG);
    unsetenv(NVUI_ENV_SOCKET);
    pg_Obj->sSockName = "/dev/nvsock";
    ApplyLinkEnvironment();
    EXPECT_STREQ(pg_Obj->szLogFileName, "/var/log/nvui.log");
    EXPECT_EQ(pg_Obj->sSockName, "/dev/nvsock");
}

}  // namespace

// ---- hardening: bounded connect, memory of hostile answers, socket path ----

namespace {

// A check answer whose listener list holds `count` empty records (12 bytes
// each on the wire) followed by the rest of an empty state and one stray
// byte, the shape of the costliest answer per byte.
std::string EmptyListenersAnswer(short cmd, uint32_t count) {
    cConf_Inf c;
    cSvrState empty;
    std::string conf = EncodeState(c, empty);
    std::string svr;
    nvwire::Writer w(svr);
    nvwire::EncodeSvr(w, empty);
    std::string confOnly = conf.substr(0, conf.size() - svr.size());
    std::string body = confOnly;
    nvwire::Writer b(body);
    b.Put32(count);
    for (uint32_t i = 0; i < count; ++i) {
        b.Put32(0);
        b.Put32(1);
        b.Put32(0);
    }
    body.append(svr.substr(4));  // the rest of cSvrState after its first count
    body.push_back('x');
    return MakeAnswer(cmd, em_OK, "", body);
}

// A listening socket with the smallest queue, filled up and never accepted:
// what a stopped agent, or one drowning in clients, looks like.
struct FullQueueSocket {
    std::string path;
    int listenFd = -1;
    std::vector<int> queued;
    explicit FullQueueSocket(const std::string& p) : path(p) {
        listenFd = socket(AF_UNIX, SOCK_STREAM, 0);
        sockaddr_un a{};
        a.sun_family = AF_UNIX;
        snprintf(a.sun_path, sizeof a.sun_path, "%s", path.c_str());
        bind(listenFd, reinterpret_cast<sockaddr*>(&a), sizeof a);
        listen(listenFd, 0);
        for (int i = 0; i < 8; ++i) {
            int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0);
            if (connect(fd, reinterpret_cast<sockaddr*>(&a), sizeof a) != 0) {
                close(fd);
                break;
            }
            queued.push_back(fd);
        }
    }
    ~FullQueueSocket() {
        for (int fd : queued)
            close(fd);
        close(listenFd);
        unlink(path.c_str());
    }
};

size_t HeapInUse() {
    return mallinfo2().uordblks + mallinfo2().hblkhd;
}

}  // namespace

TEST_F(LinkTest, ConnectToAFullListenQueueEndsWithinTheRequestLimit) {
    FullQueueSocket full(m_dir + "/full.sock");
    ASSERT_FALSE(full.queued.empty());
    pg_Obj->sSockName = full.path;
    g_iRequestTimeoutMs = 300;
    auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(GetObjInfo(), ERR_CONNECT_FAILED);
    EXPECT_EQ(SetObjInfo(57, 5, const_cast<char*>("web02")), ERR_CONNECT_FAILED);
    auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(
                  std::chrono::steady_clock::now() - start)
                  .count();
    EXPECT_LT(ms, 3000);
    EXPECT_THAT(Slurp(m_log), HasSubstr("connect error"));
}

TEST_F(LinkTest, SocketPathLongerThanSunPathIsRefusedAndLogged) {
    FakeAgent agent(SampleScript());
    // The agent's real path with a long tail: cut at 107 bytes it could
    // reach some other socket.
    std::string longPath = agent.SocketPath() + "/" + std::string(120, 'x');
    pg_Obj->sSockName = longPath;
    EXPECT_EQ(GetObjInfo(), ERR_CONNECT_FAILED);
    EXPECT_EQ(agent.Accepted(), 0);
    EXPECT_THAT(Slurp(m_log), HasSubstr("does not fit sun_path"));
    pg_Obj->sSockName = std::string(107, 'y');
    EXPECT_TRUE(SocketPathFits(pg_Obj->sSockName));
    EXPECT_FALSE(SocketPathFits(std::string(108, 'y')));
}

TEST_F(BadAnswerTest, MillionEmptyListenersAreRefusedByTheListCap) {
    ExpectRefused([](const FakeRequest& req) { return EmptyListenersAnswer(req.cmd, 1000000); },
                  em_GetStrWriteBuffNotEnough);
}

TEST_F(BadAnswerTest, ListUnderTheCapButOverTheMemoryBudgetIsRefused) {
    // 200,000 records: 2.4 MB on the wire, 64 MB as records.
    ExpectRefused([](const FakeRequest& req) { return EmptyListenersAnswer(req.cmd, 200000); },
                  em_GetStrWriteBuffNotEnough);
}

TEST_F(LinkTest, MemoryOfAFailedDecodeIsGivenBack) {
    {
        FakeAgent good(SampleScript());
        UseAgent(good);
        ASSERT_EQ(GetObjInfo(), em_OK);
    }
    size_t before = HeapInUse();
    {
        // Under the budget but refused at its last byte: everything decoded
        // must be freed again.
        FakeAgent bad([](const FakeRequest& req) { return EmptyListenersAnswer(req.cmd, 50000); });
        UseAgent(bad);
        EXPECT_EQ(GetObjInfo(), em_ParsePkgPkglenNotMatch);
    }
    size_t after = HeapInUse();
    EXPECT_LT(after, before + (1u << 20)) << "before " << before << " after " << after;
    EXPECT_EQ(pg_Obj->objCif.sHostname, "web01");
}

TEST_F(LinkTest, MemoryOfAReplacedStateIsGivenBack) {
    cConf_Inf c;
    cSvrState s;
    FillSampleState(c, s);
    cSvrState big = s;
    // About 10 MB on the wire and 15 MB as strings: above what the receive
    // buffer keeps between requests, so nothing of it may stay.
    for (int i = 0; i < 100000; ++i)
        big.vsIptablesInputList.push_back(std::string(96, 'r') + std::to_string(i));
    {
        FakeAgent small(StateScript(c, s));
        UseAgent(small);
        ASSERT_EQ(GetObjInfo(), em_OK);
    }
    size_t before = HeapInUse();
    {
        FakeAgent large(StateScript(c, big));
        UseAgent(large);
        ASSERT_EQ(GetObjInfo(), em_OK);
    }
    {
        FakeAgent small(StateScript(c, s));
        UseAgent(small);
        ASSERT_EQ(GetObjInfo(), em_OK);
    }
    EXPECT_LT(HeapInUse(), before + (1u << 20));
}
