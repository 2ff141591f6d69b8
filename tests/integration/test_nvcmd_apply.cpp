// nvcmd export and apply against real norvaned simulators: the round trip
// onto a fresh server, what each documented key changes, check mode,
// idempotence, declarative lists with the fewest commands, refused
// documents, failures and what depends on them, and the schema.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

#include "agent_process.h"
#include "child_process.h"

using ::testing::HasSubstr;
using Json = nlohmann::json;

namespace {

const std::string kNvcmd = std::string(NV_BIN_DIR) + "/nvcmd";
const std::string kSchema = NV_SOURCE_DIR "/docs/settings-schema.json";

std::string Slurp(const std::string& path) {
    std::ifstream in(path);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

// The demo state's hardware (interfaces and users) without any setting:
// what a freshly installed server looks like to apply.
std::string FreshState() {
    Json demo = Json::parse(Slurp(NV_SOURCE_DIR "/data/demo-state.json"));
    Json fresh = Json::object();
    fresh["simInterfaces"] = demo["simInterfaces"];
    for (Json& i : fresh["simInterfaces"]) {
        if (i["name"] != "lo") {
            i["up"] = false;
            i["mode"] = "dynamic";
        }
    }
    fresh["simUsers"] = demo["simUsers"];
    return fresh.dump();
}

class Agent {
public:
    explicit Agent(const std::string& stateJson) {
        EXPECT_TRUE(m_proc.SetStateJson(stateJson));
        std::string err;
        EXPECT_TRUE(m_proc.Start(&err)) << err;
    }
    nvtest::RunResult Nvcmd(std::vector<std::string> args) {
        setenv("NVUI_SOCKET", m_proc.SocketPath().c_str(), 1);
        setenv("NVUI_LOG", (m_proc.Dir() + "/nvui.log").c_str(), 1);
        args.insert(args.begin(), kNvcmd);
        nvtest::RunResult r = nvtest::RunProgram(args, 60000);
        unsetenv("NVUI_SOCKET");
        unsetenv("NVUI_LOG");
        return r;
    }
    std::string Export(const std::string& format = "yaml") {
        nvtest::RunResult r = Nvcmd({"export", "--format", format});
        EXPECT_EQ(r.iExitCode, 0) << r.sStderr;
        return r.sStdout;
    }
    Json Check() {
        nvtest::RunResult r = Nvcmd({"check"});
        EXPECT_EQ(r.iExitCode, 0) << r.sStderr;
        return Json::parse(r.sStdout);
    }
    std::string Write(const std::string& name, const std::string& text) {
        std::string path = m_proc.Dir() + "/" + name;
        std::ofstream(path) << text;
        return path;
    }
    nvtest::RunResult Apply(const std::string& doc, std::vector<std::string> flags = {}) {
        std::vector<std::string> args = {"apply", Write("doc.yaml", doc)};
        args.insert(args.end(), flags.begin(), flags.end());
        return Nvcmd(args);
    }
    // Set requests (anything but check) the journal holds so far.
    std::vector<Json> Sets() {
        std::vector<Json> out;
        for (const auto& j : m_proc.ReadJournal()) {
            if (j["cmd"] != 1)
                out.push_back(j);
        }
        return out;
    }
    nvtest::AgentProcess m_proc;
};

std::string DemoState() {
    return Slurp(NV_SOURCE_DIR "/data/demo-state.json");
}

// The fields of two check answers that differ, leaving out the clock.
std::set<std::string> Changed(const Json& a, const Json& b) {
    std::set<std::string> out;
    for (auto it = a.begin(); it != a.end(); ++it) {
        if (it.key() == "sNowDate" || it.key() == "sNowTime")
            continue;
        if (!b.contains(it.key()) || b[it.key()] != it.value())
            out.insert(it.key());
    }
    return out;
}

TEST(NvcmdApply, ExportThenApplyOnAFreshServerGivesTheSameExport) {
    Agent demo(DemoState());
    std::string yaml = demo.Export();
    Agent fresh(FreshState());
    nvtest::RunResult r = fresh.Apply(yaml);
    EXPECT_EQ(r.iExitCode, 2) << r.sStdout << r.sStderr;
    EXPECT_EQ(fresh.Export(), yaml);
    EXPECT_EQ(fresh.Export("json"), demo.Export("json"));

    // Nothing left to do: no set command at all, exit 0.
    size_t before = fresh.Sets().size();
    r = fresh.Apply(yaml);
    EXPECT_EQ(r.iExitCode, 0) << r.sStdout << r.sStderr;
    EXPECT_THAT(r.sStdout, HasSubstr("0 changed"));
    EXPECT_EQ(fresh.Sets().size(), before);
}

TEST(NvcmdApply, TheJsonExportAppliesAsWell) {
    Agent demo(DemoState());
    Agent fresh(FreshState());
    nvtest::RunResult r = fresh.Apply(demo.Export("json"));
    EXPECT_EQ(r.iExitCode, 2) << r.sStdout << r.sStderr;
    EXPECT_EQ(fresh.Export(), demo.Export());
}

TEST(NvcmdApply, CheckSendsNothingAndTellsWhatWouldChange) {
    Agent demo(DemoState());
    Agent fresh(FreshState());
    std::string exportBefore = fresh.Export();
    nvtest::RunResult r = fresh.Apply(demo.Export(), {"--check", "--diff"});
    EXPECT_EQ(r.iExitCode, 2);
    EXPECT_THAT(r.sStdout, HasSubstr("changed   hostname: (none) -> srv-web01"));
    EXPECT_THAT(r.sStdout,
                HasSubstr("    + {proto: tcp, src: 192.168.1.0/24, dport: 22, action: accept}"));
    EXPECT_THAT(r.sStdout, HasSubstr("check (nothing sent)"));
    EXPECT_TRUE(fresh.Sets().empty());
    EXPECT_EQ(fresh.Export(), exportBefore);

    // What check announced is what apply then does.
    nvtest::RunResult done = fresh.Apply(demo.Export(), {"--diff"});
    std::string announced = r.sStdout.substr(0, r.sStdout.rfind("check"));
    EXPECT_EQ(done.sStdout.substr(0, done.sStdout.rfind("\n", done.sStdout.size() - 2) + 1),
              announced);
}

// One documented key per row: the document, and the check-answer fields it
// must change (and no other).
struct KeyCase {
    const char* doc;
    std::set<std::string> fields;
};

const KeyCase kKeyCases[] = {
    {"hostname: web07", {"sHostname"}},
    {"language: chutf8", {"chLangCode"}},
    {"kernel: {icmp_echo_ignore_all: true}", {"chIcmpEchoIgnoreAll"}},
    {"kernel: {tcp_syncookies: false}", {"chTcpSyncookies"}},
    {"kernel: {tcp_tw_reuse: true}", {"chTcpTwReuse"}},
    {"kernel: {shmmax: 67108864}", {"ulShmMax"}},
    {"kernel: {shmall: 4194304}", {"ulShmAll"}},
    {"kernel: {shmmni: 8192}", {"ulShmMni"}},
    {"kernel: {threads_max: 70000}", {"ulThreadMax"}},
    {"kernel: {file_max: 500000}", {"ulFileMax"}},
    // A chain's list shows its policy on its first line.
    {"firewall:\n  input:\n    policy: accept", {"chIptablesInputPolicy", "vsIptablesInputList"}},
    {"firewall:\n  output:\n    policy: drop", {"chIptablesOutputPolicy", "vsIptablesOutputList"}},
    {"firewall:\n  input:\n    rules: {state: present, items: [{proto: udp, dport: 53}]}",
     {"vsIptablesInputList"}},
    {"firewall:\n  output:\n    rules: []", {"vsIptablesOutputList"}},
    {"ftp: {anonymous: true}", {"chVsftpdAnonEnable"}},
    {"ftp: {anonymous_upload: true}", {"chVsftpdAnonUpload"}},
    {"ftp: {anonymous_mkdir: true}", {"chVsftpdAnonMkdir"}},
    {"ftp: {anonymous_root: /srv/pub}", {"sVsftpdAnonRoot"}},
    {"ftp: {anonymous_root: \"\"}", {"sVsftpdAnonRoot"}},
    {"ftp: {local_users: false}", {"chVsftpdLocalEnable"}},
    {"ftp: {write: false}", {"chVsftpdWrite"}},
    {"ftp: {running: false}", {"chVsftpdRunFlag"}},
    {"samba: {share_path: /srv/other}", {"sSambaSharePath"}},
    {"samba: {share_path: \"\"}", {"sSambaSharePath"}},
    {"samba: {share_write: true}", {"chSambaShareWrite"}},
    {"samba: {running: true}", {"chSambaRunFlag"}},
    {"monitors:\n  files: {enabled: false}", {"chFileMonitFlag"}},
    {"monitors:\n  files:\n    paths: {state: absent, items: [/etc/shadow]}", {"vFileMonitList"}},
    {"monitors:\n  processes: {enabled: false}", {"chProcessMonitFlag"}},
    {"monitors:\n  processes:\n    commands: [sshd]", {"vProcessMonitList"}},
    {"monitors:\n  cpu: {enabled: false}", {"chCpuMonitFlag"}},
    {"monitors:\n  cpu: {ceiling: 80}", {"shCpuCeil"}},
    {"monitors:\n  cpu: {floor: 20}", {"shCpuFloor"}},
    {"monitors:\n  memory: {enabled: true}", {"chMemMonitFlag"}},
    {"monitors:\n  memory: {ceiling: 4096}", {"iMemCeil"}},
    {"monitors:\n  disk_volumes: {enabled: false}", {"chDVMonitFlag"}},
    {"monitors:\n  disk_volumes:\n    volumes: {state: absent, items: [{partition: /dev/vdb1}]}",
     {"vDV", "vsDV"}},
    {"monitors:\n  backups: {enabled: true}", {"chBakForSizeFlag"}},
    {"monitors:\n  backups:\n    files:\n      - {file: /etc/hosts, dir: /var/backups, limit_kb: "
     "64}",
     {"vBakForSize", "vsBakForSize"}},
    {"interfaces:\n  eth0: {enabled: false}", {"vsIfconfigList"}},
    {"interfaces:\n  eth1: {mode: static, address: 10.0.2.20, netmask: 255.255.255.0}",
     {"vsIfconfigList"}},
};

TEST(NvcmdApply, EachKeyChangesExactlyWhatItSays) {
    for (const KeyCase& c : kKeyCases) {
        Agent a(DemoState());
        Json before = a.Check();
        nvtest::RunResult r = a.Apply(c.doc);
        EXPECT_EQ(r.iExitCode, 2) << c.doc << "\n" << r.sStdout << r.sStderr;
        Json after = a.Check();
        EXPECT_EQ(Changed(before, after), c.fields) << c.doc;
        // Applied again: nothing is sent.
        size_t sets = a.Sets().size();
        r = a.Apply(c.doc);
        EXPECT_EQ(r.iExitCode, 0) << c.doc << "\n" << r.sStdout;
        EXPECT_EQ(a.Sets().size(), sets) << c.doc;
    }
}

TEST(NvcmdApply, EmptyingTheFtpRootKeepsTheOtherOptions) {
    Agent a(DemoState());
    nvtest::RunResult r = a.Apply("ftp: {anonymous_root: \"\"}");
    EXPECT_EQ(r.iExitCode, 2);
    Json s = a.Check();
    EXPECT_EQ(s["sVsftpdAnonRoot"], "");
    EXPECT_EQ(s["chVsftpdLocalEnable"], "1");
    EXPECT_EQ(s["chVsftpdWrite"], "1");
}

// The gateway and DNS servers are not in the check answer: they go with a
// manual address, and the simulator's state file shows them.
TEST(NvcmdApply, AManualAddressCarriesItsGatewayAndDnsServers) {
    Agent a(DemoState());
    nvtest::RunResult r = a.Apply(
        "interfaces:\n  eth1: {mode: static, address: 10.0.2.20, netmask: 255.255.255.0, "
        "gateway: 10.0.2.2, dns: [10.0.2.3, 1.1.1.1]}\n");
    EXPECT_EQ(r.iExitCode, 2) << r.sStdout << r.sStderr;
    Json state = Json::parse(Slurp(a.m_proc.StatePath()));
    Json eth1;
    for (const Json& i : state["simInterfaces"]) {
        if (i["name"] == "eth1")
            eth1 = i;
    }
    EXPECT_EQ(eth1["mode"], "static");
    EXPECT_EQ(eth1["ip"], "10.0.2.20");
    EXPECT_EQ(eth1["gateway"], "10.0.2.2");
    EXPECT_EQ(eth1["dns1"], "10.0.2.3");
    EXPECT_EQ(eth1["dns2"], "1.1.1.1");
    r = a.Apply("interfaces:\n  eth1: {mode: dhcp}\n");
    EXPECT_EQ(r.iExitCode, 2);
    EXPECT_EQ(a.Apply("interfaces:\n  eth1: {mode: dhcp}\n").iExitCode, 0);
}

TEST(NvcmdApply, CpuThresholdsAreSetInAnOrderTheAgentAccepts) {
    Agent a(DemoState());  // ceiling 90, floor 10
    nvtest::RunResult r = a.Apply("monitors:\n  cpu: {ceiling: 100, floor: 95}");
    EXPECT_EQ(r.iExitCode, 2) << r.sStdout;
    r = a.Apply("monitors:\n  cpu: {ceiling: 5, floor: 2}");
    EXPECT_EQ(r.iExitCode, 2) << r.sStdout;
    EXPECT_EQ(a.Check()["shCpuCeil"], 5);
    EXPECT_EQ(a.Check()["shCpuFloor"], 2);
}

const char kRules[] = R"(firewall:
  input:
    rules:
      - {proto: tcp, src: 192.168.1.0/24, dport: 22, action: accept}
      - {proto: tcp, dport: 80, action: accept}
      - {proto: tcp, dport: 443, action: accept}
      - {proto: tcp, src: 192.168.1.0/24, dport: 21, action: accept}
      - {proto: udp, dport: 161, action: drop}
)";

std::string RulesWith(const std::string& extraFirst, const std::string& extraLast,
                      bool dropFirstRule = false) {
    std::string doc = kRules;
    size_t at = doc.find("      - ");
    if (dropFirstRule)
        doc.erase(at, doc.find('\n', at) + 1 - at);
    if (!extraFirst.empty())
        doc.insert(at, "      - " + extraFirst + "\n");
    return doc + (extraLast.empty() ? "" : "      - " + extraLast + "\n");
}

TEST(NvcmdApply, ExactRuleListsChangeWithTheFewestCommands) {
    Agent a(DemoState());
    EXPECT_EQ(a.Apply(kRules).iExitCode, 0);
    EXPECT_TRUE(a.Sets().empty());

    // A new first rule: one insertion at the top.
    std::string doc = RulesWith("{proto: udp, dport: 123}", "");
    EXPECT_EQ(a.Apply(doc).iExitCode, 2);
    ASSERT_EQ(a.Sets().size(), 1u);
    EXPECT_EQ(a.Sets()[0]["cmd"], 33);
    EXPECT_EQ(a.Sets()[0]["len"], 15);  // "1 2 - 0 - 123 1"
    // The first rule gone and one more at the end: one append, one delete.
    doc = RulesWith("", "{proto: tcp, dport: 8080}", true);
    EXPECT_EQ(a.Apply(doc).iExitCode, 2);
    std::vector<Json> sets = a.Sets();
    ASSERT_EQ(sets.size(), 4u);
    EXPECT_EQ(sets[1]["cmd"], 33);
    EXPECT_EQ(sets[2]["cmd"], 34);
    EXPECT_EQ(sets[3]["cmd"], 34);
    EXPECT_EQ(a.Export(), [&] {
        Agent b(DemoState());
        b.Apply(doc);
        return b.Export();
    }());
    EXPECT_EQ(a.Apply(doc).iExitCode, 0);
    EXPECT_EQ(a.Sets().size(), 4u);
}

TEST(NvcmdApply, PresentAndAbsentNeverDuplicate) {
    Agent a(DemoState());
    const char* present =
        "firewall:\n  input:\n    rules: {state: present, items: [{proto: tcp, dport: 80}, "
        "{proto: tcp, dport: 8443}]}\n";
    // The policy line, then the rules.
    EXPECT_EQ(a.Apply(present).iExitCode, 2);
    EXPECT_EQ(a.Check()["vsIptablesInputList"].size(), 7u);
    EXPECT_EQ(a.Apply(present).iExitCode, 0);
    EXPECT_EQ(a.Check()["vsIptablesInputList"].size(), 7u);
    const char* absent =
        "firewall:\n  input:\n    rules: {state: absent, items: [{proto: tcp, dport: 8443}, "
        "{proto: tcp, dport: 9}]}\n";
    EXPECT_EQ(a.Apply(absent).iExitCode, 2);
    EXPECT_EQ(a.Check()["vsIptablesInputList"].size(), 6u);
    EXPECT_EQ(a.Apply(absent).iExitCode, 0);

    // A volume known by its partition with other values is replaced.
    const char* vol =
        "monitors:\n  disk_volumes:\n    volumes:\n      state: present\n      items:\n"
        "        - {partition: /dev/vdb1, ceiling: 95000, floor: 5000, interval: 1000}\n";
    EXPECT_EQ(a.Apply(vol).iExitCode, 2);
    Json dv = a.Check()["vDV"];
    ASSERT_EQ(dv.size(), 3u);
    EXPECT_EQ(dv[2]["szPart"], "/dev/vdb1");
    EXPECT_EQ(dv[2]["iCeil"], 95000);
    EXPECT_EQ(a.Apply(vol).iExitCode, 0);
}

TEST(NvcmdApply, BadDocumentsAreRefusedWithThePathBeforeAnythingIsSent) {
    const std::pair<const char*, const char*> cases[] = {
        {"hostnme: web", "doc.yaml: hostnme: unknown key"},
        {"kernel: {tcp_syncookies: yes}", "kernel.tcp_syncookies: expected true or false"},
        {"kernel: {threads_max: 100}", "kernel.threads_max: The thread maximum must be above 512."},
        {"kernel: {shmmax: -1}", "kernel.shmmax: expected a whole number from 0"},
        {"hostname: -bad-", "hostname: "},
        {"language: fr", "language: expected en, chgb2312 or chutf8"},
        {"firewall:\n  input:\n    policy: reject",
         "firewall.input.policy: expected accept or drop"},
        {"firewall:\n  input:\n    rules:\n      - {proto: tcp, dport: 22}\n      - {proto: tcp, "
         "dport: 99999}",
         "firewall.input.rules[1]: The destination port must be a number from 0 to 65535"},
        {"firewall:\n  input:\n    rules:\n      - {proto: icmp}",
         "firewall.input.rules[0].proto: expected tcp or udp"},
        {"firewall:\n  input:\n    rules:\n      - {proto: tcp, dport: 22}\n      - {dport: 22}",
         "firewall.input.rules[1]: this entry is given twice"},
        {"firewall:\n  input:\n    rules: {state: some, items: []}",
         "firewall.input.rules.state: expected exact, present or absent"},
        {"monitors:\n  files:\n    paths: [etc/hosts]", "monitors.files.paths[0]: "},
        {"monitors:\n  cpu: {ceiling: 10, floor: 50}", "monitors.cpu.floor: "},
        {"monitors:\n  disk_volumes:\n    volumes: [{partition: /dev/x, ceiling: 1}]",
         "monitors.disk_volumes.volumes[0].floor: is required"},
        {"interfaces:\n  eth0: {mode: static}", "interfaces.eth0.address: is required"},
        {"interfaces:\n  eth0: {address: 10.0.0.1, netmask: 255.0.255.0}", "interfaces.eth0: "},
        {"users:\n  root: {password: x}", "users.root.password: unknown key"},
        {"kernel: [1, 2]", "kernel: expected a mapping"},
        {"kernel:\n  tcp_syncookies: true\n   bad: 1", "line 4: bad indentation"},
        {"- a\n- b", "a settings document is a mapping"},
    };
    Agent a(DemoState());
    for (const auto& c : cases) {
        // A valid change comes first: it must not be sent either.
        std::string doc =
            c.first[0] == '-' ? c.first : std::string("samba: {running: true}\n") + c.first;
        nvtest::RunResult r = a.Apply(doc);
        EXPECT_EQ(r.iExitCode, 1) << c.first;
        EXPECT_THAT(r.sStderr, HasSubstr(c.second)) << c.first;
    }
    EXPECT_TRUE(a.Sets().empty());
    nvtest::RunResult r = a.Apply("kernel: {shmmax: true}", {"--json"});
    Json j = Json::parse(r.sStdout);
    EXPECT_EQ(j["failed"], true);
    EXPECT_EQ(j["path"], "kernel.shmmax");
}

TEST(NvcmdApply, AFailedItemStopsWhatNeedsIt) {
    Agent a(DemoState());
    nvtest::RunResult r = a.Apply(
        "hostname: web09\ninterfaces:\n  eth9: {enabled: true, mode: static, address: 10.1.1.1, "
        "netmask: 255.0.0.0}\n",
        {"--json"});
    EXPECT_EQ(r.iExitCode, 1);
    Json j = Json::parse(r.sStdout);
    EXPECT_EQ(j["failed"], true);
    std::map<std::string, Json> items;
    for (const Json& i : j["items"])
        items[i["path"]] = i;
    EXPECT_EQ(items["hostname"]["status"], "changed");
    EXPECT_EQ(items["interfaces.eth9.mode"]["status"], "failed");
    EXPECT_EQ(items["interfaces.eth9.mode"]["detail"], "There is no interface named eth9.");
    EXPECT_EQ(items["interfaces.eth9.enabled"]["status"], "skipped");
    std::vector<Json> sets = a.Sets();
    ASSERT_EQ(sets.size(), 2u);  // host name, then the refused address; never the switch
    EXPECT_EQ(sets[1]["cmd"], 55);
}

// A password hash goes to the agent, which records the user only; neither
// the report, the journal nor the state file ever holds the hash, and the
// export has no password at all.
TEST(NvcmdApply, PasswordHashesAreSentAndNeverShown) {
    const std::string hash = "$6$pepper$Zq0wTNlF1r7uYx2bM3cV";
    Agent a(DemoState());
    nvtest::RunResult r =
        a.Apply("users:\n  admin: {password_hash: \"" + hash + "\"}\n", {"--json"});
    EXPECT_EQ(r.iExitCode, 2) << r.sStdout << r.sStderr;
    EXPECT_EQ(r.sStdout.find("pepper"), std::string::npos);
    std::vector<Json> sets = a.Sets();
    ASSERT_EQ(sets.size(), 1u);
    EXPECT_EQ(sets[0]["cmd"], 60);
    EXPECT_EQ(sets[0]["user"], "admin");
    EXPECT_EQ(sets[0]["payload_hex"], "");
    EXPECT_EQ(Slurp(a.m_proc.JournalPath()).find("pepper"), std::string::npos);
    EXPECT_EQ(Slurp(a.m_proc.StatePath()).find("pepper"), std::string::npos);
    Json saved = Json::parse(Slurp(a.m_proc.StatePath()));
    for (const Json& u : saved["simUsers"])
        EXPECT_EQ(u["pwChanged"] != 0, u["name"] == "admin") << u;
    EXPECT_EQ(a.Export().find("password"), std::string::npos);
    r = a.Apply("users:\n  nobody: {password_hash: \"" + hash + "\"}\n");
    EXPECT_EQ(r.iExitCode, 1);
    EXPECT_THAT(r.sStdout, HasSubstr("users.nobody.password_hash: There is no user named nobody."));
    r = a.Apply("users:\n  admin: {password_hash: secret}\n");
    EXPECT_EQ(r.iExitCode, 1);
    EXPECT_THAT(r.sStderr, HasSubstr("users.admin.password_hash: The password hash must be"));
}

TEST(NvcmdApply, JsonReportHasItemsAndADiff) {
    Agent a(DemoState());
    nvtest::RunResult r = a.Apply("hostname: web10\nkernel: {tcp_syncookies: true}", {"--json"});
    EXPECT_EQ(r.iExitCode, 2);
    Json j = Json::parse(r.sStdout);
    EXPECT_EQ(j["changed"], true);
    EXPECT_EQ(j["failed"], false);
    EXPECT_EQ(j["diff"]["before"], Json({{"hostname", "srv-web01"}}));
    EXPECT_EQ(j["diff"]["after"], Json({{"hostname", "web10"}}));
    ASSERT_EQ(j["items"].size(), 2u);
    EXPECT_EQ(j["items"][1]["status"], "unchanged");
}

TEST(NvcmdApply, ExportsMatchTheSchema) {
    Agent demo(DemoState());
    Agent fresh(FreshState());
    for (Agent* a : {&demo, &fresh}) {
        std::string doc = a->Write("export.json", a->Export("json"));
        nvtest::RunResult r = nvtest::RunProgram(
            {"/usr/bin/python3", "-c",
             "import json,sys,jsonschema\n"
             "jsonschema.validate(json.load(open(sys.argv[2])), json.load(open(sys.argv[1])))\n",
             kSchema, doc});
        EXPECT_EQ(r.iExitCode, 0) << r.sStderr;
    }
    // The schema is no blank check: a wrong value fails it.
    std::string bad = demo.Write("bad.json", R"({"kernel": {"tcp_syncookies": "yes"}})");
    nvtest::RunResult r = nvtest::RunProgram(
        {"/usr/bin/python3", "-c",
         "import json,sys,jsonschema\n"
         "jsonschema.validate(json.load(open(sys.argv[2])), json.load(open(sys.argv[1])))\n",
         kSchema, bad});
    EXPECT_NE(r.iExitCode, 0);
}

}  // namespace
