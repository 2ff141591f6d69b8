// Settings documents without an agent: the YAML subset read and written
// back, the rule and interface lines read back (another tool's lines left
// out), the longest kept run of an exact list, and plans against a state.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "settings_doc.h"
#include "settings_lines.h"
#include "settings_plan.h"
#include "settings_yaml.h"

using nvsettings::Json;
using ::testing::HasSubstr;

namespace {

Json Yaml(const std::string& text) {
    Json j;
    std::string err;
    EXPECT_TRUE(nvsettings::ParseYaml(text, j, err)) << err << "\n" << text;
    return j;
}

std::string YamlError(const std::string& text) {
    Json j;
    std::string err;
    EXPECT_FALSE(nvsettings::ParseYaml(text, j, err)) << text;
    return err;
}

TEST(SettingsYaml, BlockAndFlowFormsReadAsJson) {
    Json j = Yaml(
        "---\n"
        "# comment\n"
        "a: 1\n"
        "b:\n"
        "  c: true   # trailing comment\n"
        "  d: [x, 'y z', \"q\\\"t\"]\n"
        "e:\n"
        "- {k: v, n: -3}\n"
        "- plain text with#hash # a comment\n"
        "-\n"
        "  f: ~\n"
        "g: ''\n"
        "h: 'it''s'\n"
        "i: 10.0.0.0/24\n"
        "\"j k\": null\n");
    Json want = Json::parse(R"({"a": 1, "b": {"c": true, "d": ["x", "y z", "q\"t"]},
        "e": [{"k": "v", "n": -3}, "plain text with#hash", {"f": null}],
        "g": "", "h": "it's", "i": "10.0.0.0/24", "j k": null})");
    EXPECT_EQ(j, want);
    EXPECT_EQ(Yaml("{\"a\": [1, 2]}"), Json::parse("{\"a\": [1, 2]}"));
    EXPECT_EQ(Yaml("yes: no"), Json::parse(R"({"yes": "no"})"));
    EXPECT_TRUE(Yaml("").is_null());
}

TEST(SettingsYaml, WhatIsNotInTheSubsetIsRefusedWithItsLine) {
    EXPECT_THAT(YamlError("a: &x 1\nb: *x"), HasSubstr("line 1: anchors"));
    EXPECT_THAT(YamlError("a: |\n  text"), HasSubstr("line 1: block scalars"));
    EXPECT_THAT(YamlError("a: 1\n\tb: 2"), HasSubstr("line 2: tabs"));
    EXPECT_THAT(YamlError("a: 1\na: 2"), HasSubstr("line 2: the key \"a\" is given twice"));
    EXPECT_THAT(YamlError("a: [1, 2\n"), HasSubstr("line 1: "));
    EXPECT_THAT(YamlError("a:\n  b: 1\n    c: 2"), HasSubstr("line 3: bad indentation"));
    EXPECT_THAT(YamlError("a: \"open"), HasSubstr("not closed"));
    EXPECT_THAT(YamlError("{\"a\": }"), HasSubstr("not valid JSON"));
    // Nesting that would exhaust the stack is refused.
    EXPECT_THAT(YamlError("a: " + std::string(100000, '[')), HasSubstr("nested too deeply"));
    std::string deep;
    for (int i = 0; i < 200; ++i)
        deep += std::string(static_cast<size_t>(i), ' ') + "k:\n";
    EXPECT_THAT(YamlError(deep), HasSubstr("nested too deeply"));
}

TEST(SettingsYaml, WrittenDocumentsReadBackTheSame) {
    Json doc = Json::parse(R"({
        "s": ["true", "null", "12", "-", "a: b", "x #y", "", " lead", "{f}", "#c",
              "é ü", "line\nbreak", "-5", "~", "@at", "ok-plain"],
        "n": {"deep": {"list": [{"proto": "tcp", "src": "a,b", "dport": 22}], "empty": [],
              "obj": {}}},
        "b": false, "z": null})");
    std::string text = nvsettings::WriteYaml(doc);
    EXPECT_EQ(Yaml(text), doc) << text;
    EXPECT_THAT(text, HasSubstr("- {proto: tcp, src: \"a,b\", dport: 22}"));
    EXPECT_THAT(text, HasSubstr("  - ok-plain\n"));
}

TEST(SettingsLines, OnlyTheAgentsRuleLinesCountWithTheirShownIndex) {
    std::vector<std::string> lines = {
        "  1  -p icmp -j ACCEPT",
        "  2  tcp  192.168.1.0/24:any  -> any:22   ACCEPT",
        "-P INPUT DROP",
        "  3  udp  any:any             -> 10.0.0.5/32:53  REJECT",
        "  4  tcp  any:1024            -> any:80   LOG",
    };
    std::vector<nvsettings::ShownRule> r = nvsettings::RulesFromLines(lines);
    ASSERT_EQ(r.size(), 2u);
    EXPECT_EQ(r[0].index, 2u);
    EXPECT_EQ(r[0].rule.src, "192.168.1.0/24");
    EXPECT_EQ(r[0].rule.dport, 22);
    EXPECT_EQ(r[1].index, 3u);
    EXPECT_EQ(r[1].rule.dst, "10.0.0.5");  // "/32" is the host itself
    EXPECT_EQ(r[1].rule.action, nvagent::kActReject);
    nvagent::FwRule net;
    net.src = "10.1.2.3/8";
    EXPECT_EQ(nvsettings::CanonicalRule(net).src, "10.0.0.0/8");

    nvagent::NetInterface n;
    ASSERT_TRUE(nvsettings::InterfaceFromLine(
        "  2  eth1  52:54:00:8c:42:b5  dynamic  down  -                -", n));
    EXPECT_EQ(n.name, "eth1");
    EXPECT_EQ(n.mode, nvagent::kModeDynamic);
    EXPECT_FALSE(n.up);
    EXPECT_EQ(n.ip, "");
    EXPECT_FALSE(nvsettings::InterfaceFromLine("eth0 up", n));
}

std::vector<Json> Strings(std::initializer_list<const char*> v) {
    std::vector<Json> out;
    for (const char* s : v)
        out.push_back(s);
    return out;
}

TEST(SettingsPlan, TheLongestKeptRunKeepsWhatCanStay) {
    auto run = nvsettings::LongestKeptRun(Strings({"a", "b", "c", "d"}),
                                          Strings({"x", "b", "c", "y"}), false);
    EXPECT_EQ(run.a, 1u);
    EXPECT_EQ(run.b, 3u);
    EXPECT_EQ(run.kept, std::vector<bool>({false, true, true, false}));
    // Append-only lists keep a run from the first wanted entry only.
    run = nvsettings::LongestKeptRun(Strings({"a", "b", "c"}), Strings({"x", "b", "c"}), true);
    EXPECT_EQ(run.b, 0u);
    EXPECT_EQ(run.kept, std::vector<bool>({false, false, false}));
    run = nvsettings::LongestKeptRun(Strings({}), Strings({"a"}), false);
    EXPECT_EQ(run.a, run.b);
}

Json DemoishState() {
    return Json::parse(R"({
        "chIptablesInputPolicy": "2", "chIptablesOutputPolicy": "1",
        "vsIptablesInputList": ["  1  tcp  any:any  -> any:22   ACCEPT",
                                "  2  tcp  any:any  -> any:80   ACCEPT"],
        "vsIptablesOutputList": [], "shCpuCeil": 90, "shCpuFloor": 10, "chCpuMonitFlag": "0",
        "chFileMonitFlag": "1", "vFileMonitList": ["/etc/passwd"], "sHostname": "a"})");
}

std::vector<nvsettings::Item> Plan(const std::string& yaml) {
    Json doc = Yaml(yaml);
    std::string path, why;
    nvsettings::CanonLists lists;
    EXPECT_TRUE(nvsettings::CheckDocument(doc, path, why, &lists)) << path << ": " << why;
    // The lists the check worked out give the same plan as working them out again.
    auto plan = nvsettings::MakePlan(doc, DemoishState(), &lists);
    auto again = nvsettings::MakePlan(doc, DemoishState());
    EXPECT_EQ(plan.size(), again.size());
    for (size_t i = 0; i < plan.size() && i < again.size(); ++i) {
        EXPECT_EQ(plan[i].after, again[i].after);
        EXPECT_EQ(plan[i].steps.size(), again[i].steps.size());
    }
    return plan;
}

std::vector<std::string> Paths(const std::vector<nvsettings::Item>& plan) {
    std::vector<std::string> out;
    for (const auto& i : plan)
        out.push_back(nvsettings::PathText(i.path));
    return out;
}

TEST(SettingsPlan, ADropPolicyWaitsForItsRulesAndAnAcceptPolicyGoesFirst) {
    auto plan = Plan(
        "firewall:\n  input:\n    policy: accept\n    rules: []\n"
        "  output:\n    policy: drop\n    rules: [{dport: 53, proto: udp}]\n");
    EXPECT_EQ(Paths(plan),
              std::vector<std::string>({"firewall.input.policy", "firewall.input.rules",
                                        "firewall.output.rules", "firewall.output.policy"}));
    EXPECT_EQ(plan[3].needs, std::vector<size_t>({2}));
    // Two rules emptied: one clear.
    ASSERT_EQ(plan[1].steps.size(), 1u);
    EXPECT_EQ(plan[1].steps[0].cmd, 35);
    ASSERT_EQ(plan[2].steps.size(), 1u);
    EXPECT_EQ(plan[2].steps[0].payload, "2 2 - 0 - 53 1");
}

TEST(SettingsPlan, RulesAreAddedBeforeOldOnesAreDeletedWhileTheChainDrops) {
    auto plan = Plan("firewall:\n  input:\n    rules: [{dport: 443}]\n");
    ASSERT_EQ(plan.size(), 1u);
    ASSERT_EQ(plan[0].steps.size(), 3u);
    EXPECT_EQ(plan[0].steps[0].cmd, 33);
    EXPECT_EQ(plan[0].steps[1].payload, "2");  // deleted from the last
    EXPECT_EQ(plan[0].steps[2].payload, "1");
}

TEST(SettingsPlan, AChainWhoseFamiliesDifferIsNeverClearedWhileOneDrops) {
    Json state = DemoishState();
    state["chIptablesInputPolicy"] = "0";
    state["vsIptablesInputList"] = {
        "Policy: IPv4 accept, IPv6 drop", "  1  tcp  any:any  -> any:22   ACCEPT",
        "  2  tcp  any:any  -> any:80   ACCEPT", "     ufw: -p tcp --dport 25 -j ACCEPT"};
    Json doc = Yaml("firewall:\n  input:\n    rules: [{dport: 443}]\n");
    auto plan = nvsettings::MakePlan(doc, state);
    ASSERT_EQ(plan.size(), 1u);
    ASSERT_EQ(plan[0].steps.size(), 3u);
    EXPECT_EQ(plan[0].steps[0].cmd, 33);
    EXPECT_EQ(plan[0].steps[1].payload, "2");
    EXPECT_EQ(plan[0].steps[2].payload, "1");
    // With both families accepting, clearing is the shorter way.
    state["vsIptablesInputList"][0] = "Policy: accept";
    plan = nvsettings::MakePlan(doc, state);
    ASSERT_EQ(plan.size(), 1u);
    EXPECT_EQ(plan[0].steps[0].cmd, 35);
}

TEST(SettingsPlan, AMonitorIsSwitchedOnAfterItsSettingsAndOffBeforeThem) {
    auto plan = Plan(
        "monitors:\n  cpu: {enabled: true, floor: 95, ceiling: 100}\n"
        "  files: {enabled: false, paths: [/etc/hosts]}\n");
    EXPECT_EQ(Paths(plan),
              std::vector<std::string>({"monitors.files.enabled", "monitors.files.paths",
                                        "monitors.cpu.ceiling", "monitors.cpu.floor",
                                        "monitors.cpu.enabled"}));
    EXPECT_EQ(plan[4].needs, std::vector<size_t>({2, 3}));
    EXPECT_EQ(plan[1].steps[0].payload, "/etc/hosts\n");
}

TEST(SettingsDoc, ExportLeavesOutWhatCannotBeSet) {
    Json state = DemoishState();
    state["ulShmMax"] = 0;
    state["chTcpSyncookies"] = "";
    state["iMemTotal"] = 4000;
    state["vsIfconfigList"] = {
        "  1  lo    00:00:00:00:00:00  static   up    127.0.0.1        255.0.0.0"};
    Json doc = nvsettings::ExportSettings(state);
    // The agent never sets a loopback address: only the switch is exported.
    EXPECT_EQ(doc["interfaces"]["lo"], Json::parse(R"({"enabled":true})"));
    EXPECT_FALSE(doc.contains("kernel"));
    EXPECT_EQ(doc["firewall"]["input"]["policy"], "drop");
    EXPECT_EQ(doc["firewall"]["input"]["rules"][1],
              Json::parse(R"({"proto":"tcp","dport":80,"action":"accept"})"));
    EXPECT_EQ(doc.dump().find("Mem"), std::string::npos);
    std::string path, why;
    EXPECT_TRUE(nvsettings::CheckDocument(doc, path, why)) << path << ": " << why;
}

// Damaged documents: each is read, refused or checked and planned, and
// nothing throws or crashes.
TEST(SettingsDoc, DamagedDocumentsAreRefusedOrPlannedNeverThrown) {
    const std::string good =
        "hostname: web01\nkernel:\n  tcp_syncookies: true\n  file_max: 500000\n"
        "firewall:\n  input:\n    policy: drop\n    rules:\n"
        "      - {proto: tcp, src: 10.0.0.0/8, dport: 22, action: accept}\n"
        "      - {proto: udp, dport: 53}\n"
        "monitors:\n  cpu: {enabled: true, ceiling: 90, floor: 10}\n"
        "  disk_volumes:\n    volumes: {state: present, items: [{partition: /dev/vdb1, "
        "ceiling: 9, floor: 1, interval: 5}]}\n"
        "interfaces:\n  eth0: {enabled: true, mode: static, address: 10.0.0.2, netmask: "
        "255.0.0.0}\nusers:\n  root: {password_hash: \"$6$s$h\"}\n";
    const char kBytes[] = "{}[]:,-#'\" \n\t0123456789abcxyz/.$&*|>~";
    std::mt19937 rng(12345);
    int planned = 0;
    for (int round = 0; round < 3000; ++round) {
        std::string doc = good;
        int edits = 1 + static_cast<int>(rng() % 4);
        for (int e = 0; e < edits; ++e) {
            size_t at = rng() % doc.size();
            char c = kBytes[rng() % (sizeof kBytes - 1)];
            switch (rng() % 3) {
                case 0:
                    doc[at] = c;
                    break;
                case 1:
                    doc.insert(at, 1, c);
                    break;
                default:
                    doc.erase(at, 1 + rng() % 8);
                    break;
            }
        }
        Json j;
        std::string err, path, why;
        nvsettings::CanonLists lists;
        try {
            if (!nvsettings::ParseYaml(doc, j, err) ||
                !nvsettings::CheckDocument(j, path, why, &lists))
                continue;
            nvsettings::MakePlan(j, DemoishState(), &lists);
            ++planned;
        } catch (const std::exception& ex) {
            ADD_FAILURE() << ex.what() << "\n" << doc;
            break;
        }
    }
    EXPECT_GT(planned, 30);
}

}  // namespace
