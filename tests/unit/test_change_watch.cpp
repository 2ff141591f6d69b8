// The watcher without a firewall: pending files written and removed, a
// watch that ends well saving its change, an agent stopping mid-watch
// undoing it, one session's changes watched at a time, the changes an
// earlier run left pending undone latest first, and the texts' sizes.
#include <arpa/inet.h>
#include <dirent.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <fstream>
#include <thread>

#include "agent/commands/requests.h"
#include "agent/details/details_guard_watch.h"
#include "agent/live/guard/change_watch.h"
#include "agent/live/guard/tcp_watch.h"
#include "link/result_codes.h"
#include "temp_dir.h"

using namespace nvagent;

namespace {

int CountFiles(const std::string& dir) {
    int n = 0;
    DIR* d = opendir(dir.c_str());
    if (d == nullptr)
        return 0;
    while (dirent* e = readdir(d))
        n += e->d_name[0] != '.' ? 1 : 0;
    closedir(d);
    return n;
}

PendingChange Change(short cmd, std::atomic<int>& commits, std::atomic<int>& undos) {
    PendingChange c;
    c.iCmd = cmd;
    c.sPayload = "2";
    c.tWhen = time(nullptr);
    c.commit = [&commits] {
        ++commits;
        return Done();
    };
    c.undo = [&undos] {
        ++undos;
        return Done();
    };
    c.sRecovery = R"({"domain":"firewall","undo4":"","undo6":""})";
    return c;
}

// A session whose connection this machine does not have.
GuardSession Nowhere() {
    GuardSession s;
    s.bFound = true;
    s.iFamily = AF_INET;
    s.sLocalAddr = "127.0.0.1";
    s.iLocalPort = 1;
    s.sRemoteAddr = "127.0.0.1";
    s.iRemotePort = 2;
    return s;
}

// A real idle loopback connection, the test's own.
struct Loopback {
    int listener = -1, client = -1, server = -1;
    uint16_t port = 0;
    Loopback() {
        listener = socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in a{};
        a.sin_family = AF_INET;
        a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t len = sizeof a;
        bind(listener, reinterpret_cast<sockaddr*>(&a), sizeof a);
        listen(listener, 1);
        getsockname(listener, reinterpret_cast<sockaddr*>(&a), &len);
        port = ntohs(a.sin_port);
        client = socket(AF_INET, SOCK_STREAM, 0);
        connect(client, reinterpret_cast<sockaddr*>(&a), sizeof a);
        server = accept(listener, nullptr, nullptr);
    }
    ~Loopback() {
        close(server);
        close(client);
        close(listener);
    }
};

WatchTiming Short() {
    WatchTiming t;
    t.iWindowMs = 600;
    t.iPollMs = 50;
    t.iGraceMs = 200;
    return t;
}

bool WaitUntil(const std::function<bool()>& cond, int ms = 5000) {
    for (int waited = 0; waited < ms; waited += 20) {
        if (cond())
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return cond();
}

PendingRunner Runner() {
    return [](PendingChange& c, bool undo) { return undo ? c.undo() : c.commit(); };
}

TEST(ChangeWatch, AWorkingSessionsChangeIsSavedWhenTheWindowEnds) {
    nvtest::TempDir dir;
    Loopback conn;
    GuardSession s = SessionOnLocalPort(conn.port, getpid());
    ASSERT_TRUE(s.bFound);
    EXPECT_EQ(s.sRemoteAddr, "127.0.0.1");
    TcpSample sample;
    std::string err;
    ASSERT_TRUE(ReadTcpSample(s, sample, err)) << err;
    EXPECT_TRUE(sample.bFound);
    EXPECT_EQ(sample.state, 1);  // established

    std::atomic<int> commits{0}, undos{0};
    std::vector<BackendEvent> events;
    std::mutex mu;
    ChangeWatcher w(dir.Path(), Short(), Runner(), [&](const BackendEvent& e) {
        std::lock_guard<std::mutex> lock(mu);
        events.push_back(e);
    });
    ASSERT_TRUE(w.Watch(Change(33, commits, undos), s, err)) << err;
    EXPECT_EQ(CountFiles(PendingDir(dir.Path())), 1);
    EXPECT_EQ(w.Watching(), 1u);
    // Another session's change waits for the watch.
    CmdResult refusal;
    EXPECT_FALSE(w.MayChange(Nowhere(), refusal));
    EXPECT_EQ(refusal.iCode, em_ActFail);
    EXPECT_NE(refusal.sDetail.find("try again in 1 s."), std::string::npos) << refusal.sDetail;
    EXPECT_FALSE(w.MayChange(GuardSession(), refusal));
    // The same session's joins it.
    EXPECT_TRUE(w.MayChange(s, refusal));
    ASSERT_TRUE(w.Watch(Change(34, commits, undos), s, err)) << err;
    EXPECT_EQ(w.Watching(), 2u);
    ASSERT_TRUE(WaitUntil([&] { return commits == 2; }));
    EXPECT_EQ(undos, 0);
    ASSERT_TRUE(WaitUntil([&] { return CountFiles(PendingDir(dir.Path())) == 0; }));
    EXPECT_TRUE(w.MayChange(Nowhere(), refusal));
    std::lock_guard<std::mutex> lock(mu);
    ASSERT_EQ(events.size(), 2u);
    EXPECT_EQ(events[0].iCmd, 33);
    EXPECT_EQ(events[1].iCmd, 34);
    EXPECT_EQ(events[0].sNote.rfind("kept: ", 0), 0u) << events[0].sNote;
    EXPECT_EQ(w.NoticeFor(Peer{getpid()}, 1, 0), "");
}

TEST(ChangeWatch, AClosedConnectionEndsTheWatchAsGood) {
    nvtest::TempDir dir;
    std::atomic<int> commits{0}, undos{0};
    WatchTiming t = Short();
    t.iWindowMs = 60000;
    ChangeWatcher w(dir.Path(), t, Runner(), nullptr);
    std::string err;
    ASSERT_TRUE(w.Watch(Change(32, commits, undos), Nowhere(), err)) << err;
    ASSERT_TRUE(WaitUntil([&] { return commits == 1; }, 3000));
    EXPECT_EQ(undos, 0);
}

TEST(ChangeWatch, AnAgentStoppingMidWatchUndoesTheChange) {
    nvtest::TempDir dir;
    Loopback conn;
    GuardSession s = SessionOnLocalPort(conn.port, getpid());
    std::atomic<int> commits{0}, undos{0};
    {
        WatchTiming t = Short();
        t.iWindowMs = 60000;
        ChangeWatcher w(dir.Path(), t, Runner(), nullptr);
        std::string err;
        ASSERT_TRUE(w.Watch(Change(32, commits, undos), s, err)) << err;
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    EXPECT_EQ(undos, 1);
    EXPECT_EQ(commits, 0);
    EXPECT_EQ(CountFiles(PendingDir(dir.Path())), 0);
}

TEST(ChangeWatch, APendingFileThatCannotBeWrittenRefusesTheWatch) {
    std::atomic<int> commits{0}, undos{0};
    ChangeWatcher w("/proc/nv-no-such-dir", Short(), Runner(), nullptr);
    std::string err;
    EXPECT_FALSE(w.Watch(Change(32, commits, undos), Nowhere(), err));
    EXPECT_FALSE(err.empty());
    EXPECT_EQ(w.Watching(), 0u);
}

TEST(ChangeWatch, ChangesLeftPendingAreUndoneLatestFirst) {
    nvtest::TempDir dir;
    std::string pending = PendingDir(dir.Path());
    ASSERT_EQ(mkdir(pending.c_str(), 0700), 0);
    auto write = [&](const std::string& name, const std::string& text) {
        std::ofstream(pending + "/" + name) << text;
    };
    write("000000000100-000001.json",
          R"({"cmd":33,"payload":"a","when":100,"recovery":{"domain":"firewall","n":1}})");
    write("000000000100-000002.json",
          R"({"cmd":34,"payload":"b","when":100,"recovery":{"domain":"firewall","n":2}})");
    write("000000000050-000009.json",
          R"({"cmd":52,"payload":"nv0","when":50,"recovery":{"domain":"interface"}})");
    write("000000000200-000001.json", "not json");
    std::vector<std::string> order;
    std::vector<BackendEvent> events;
    UndoLeftPending(
        dir.Path(),
        [&](const std::string& domain, const std::string& json) {
            if (domain != "firewall")
                return CmdResult{em_ActNotPrepare, "no undo for " + domain};
            order.push_back(json);
            return Done();
        },
        [&](const BackendEvent& e) { events.push_back(e); });
    ASSERT_EQ(order.size(), 2u);
    EXPECT_NE(order[0].find("\"n\":2"), std::string::npos) << order[0];
    EXPECT_NE(order[1].find("\"n\":1"), std::string::npos) << order[1];
    ASSERT_EQ(events.size(), 2u);
    EXPECT_EQ(events[0].iCmd, 34);
    EXPECT_EQ(events[0].sPayload, "b");
    EXPECT_EQ(events[0].iResult, em_ActSuccAll);
    EXPECT_EQ(events[0].sNote.rfind("undone at start: ", 0), 0u);
    // The unreadable file is gone; the one no part of this agent can undo
    // stays for an agent that can.
    EXPECT_EQ(CountFiles(pending), 1);
}

TEST(ChangeWatch, NoticeAndRefusalFitTheInformationLine) {
    EXPECT_EQ(UndoneNotice(0, 1).size(),
              std::string("Undone: the change at 00:00:00 cut your SSH session.").size());
    EXPECT_LE(UndoneNotice(0, 1).size(), 78u);
    EXPECT_LE(UndoneNotice(0, 99).size(), 78u);
    // Every row's forms with the widest parts they take.
    for (size_t i = 0; i < kDetailsGuardWatch.nRows; ++i) {
        const DetailRow& r = kDetailsGuardWatch.pRows[i];
        for (const char* form : {r.szEn ? r.szEn : r.szFull, r.szZh}) {
            std::string s = form;
            for (const char* slot : {"{}", "{1}", "{2}"}) {
                size_t at;
                while ((at = s.find(slot)) != std::string::npos)
                    s.replace(at, strlen(slot), "14:03:05");
            }
            EXPECT_LE(s.size(), 78u) << form;
        }
    }
}

}  // namespace
