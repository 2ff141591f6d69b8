// The state as JSON: round trip of every field, defaults for missing keys,
// and the errors for unknown keys, wrong types, over-long strings and files
// that cannot be used (which are left untouched).
#include <gtest/gtest.h>

#include "agent/sim/sim_backend.h"
#include "agent/state_json.h"
#include "state_samples.h"
#include "support/sim_test_util.h"
#include "temp_dir.h"

using nvagent::Json;

namespace {

std::string Encoded(const cConf_Inf& c, const cSvrState& s) {
    std::string out;
    nvwire::Writer w(out);
    nvwire::EncodeConf(w, c);
    nvwire::EncodeSvr(w, s);
    return out;
}

std::string ParseError(const std::string& text) {
    nvagent::SimState st;
    std::string err;
    EXPECT_FALSE(nvagent::SimStateFromText(text, st, err)) << text;
    return err;
}

TEST(StateJson, EveryFieldSurvivesARoundTrip) {
    cConf_Inf c = nvagent::DefaultConf();
    cSvrState s;
    FillSampleState(c, s);
    Json j = nvagent::StateToJson(c, s);
    cConf_Inf c2;
    cSvrState s2;
    std::string err;
    ASSERT_TRUE(nvagent::StateFromJson(Json::parse(j.dump()), c2, s2, err)) << err;
    EXPECT_EQ(Encoded(c2, s2), Encoded(c, s));
}

TEST(StateJson, KeysAreFieldNamesWithTheirConventions) {
    cConf_Inf c = nvagent::DefaultConf();
    cSvrState s;
    FillSampleState(c, s);
    c.chLangCode = 2;
    Json j = nvagent::StateToJson(c, s);
    EXPECT_EQ(j["chTcpSyncookies"], "0");
    EXPECT_EQ(j["ulShmMax"], 33554432);
    EXPECT_EQ(j["chLangCode"], 2);
    EXPECT_EQ(j["vFileMonitList"], Json::array({"/etc/passwd", "/etc/shadow"}));
    EXPECT_EQ(j["vDV"][0]["szPart"], "/dev/vdb1");
    EXPECT_EQ(j["vDV"][0]["iItv"], 50);
    EXPECT_EQ(j.begin().key(), "chIcmpEchoIgnoreAll");
    EXPECT_EQ(j.size(), 52u);
}

TEST(StateJson, MissingKeysTakeTheDefaults) {
    cConf_Inf c;
    cSvrState s;
    std::string err;
    ASSERT_TRUE(nvagent::StateFromJson(Json::parse(R"({"ulShmMax": 5})"), c, s, err)) << err;
    cConf_Inf expect = nvagent::DefaultConf();
    expect.ulShmMax = 5;
    EXPECT_EQ(Encoded(c, s), Encoded(expect, cSvrState()));
    EXPECT_EQ(c.sVersion, "1.0");
    EXPECT_EQ(c.shCpuCeil, 100);
    EXPECT_EQ(c.chFileMonitFlag, '0');
    EXPECT_EQ(c.chTcpSyncookies, '\0');
}

TEST(StateJson, ElementRecordsDefaultMissingFieldsToZero) {
    nvagent::SimState st;
    std::string err;
    ASSERT_TRUE(nvagent::SimStateFromText(R"({"vDV": [{"szPart": "/dev/sda1"}]})", st, err));
    ASSERT_EQ(st.conf.vDV.size(), 1u);
    EXPECT_EQ(st.conf.vDV[0].iCeil, 0);
    EXPECT_EQ(st.conf.vDV[0].iItv, 0);
}

TEST(StateJson, ErrorsNameTheKey) {
    EXPECT_EQ(ParseError(R"({"bogus": 1})"), "unknown key \"bogus\"");
    EXPECT_EQ(ParseError(R"({"simBogus": 1})"), "unknown key \"simBogus\"");
    EXPECT_EQ(ParseError(R"({"ulShmMax": "5"})"),
              "key \"ulShmMax\": expected a whole number from 0 to 4294967295");
    EXPECT_NE(ParseError(R"({"ulShmMax": -1})").find("\"ulShmMax\""), std::string::npos);
    EXPECT_NE(ParseError(R"({"ulShmMax": 4294967296})").find("\"ulShmMax\""), std::string::npos);
    EXPECT_NE(ParseError(R"({"ulShmMax": 1.5})").find("\"ulShmMax\""), std::string::npos);
    EXPECT_NE(ParseError(R"({"shCpuCeil": 40000})").find("\"shCpuCeil\""), std::string::npos);
    EXPECT_EQ(ParseError(R"({"chTcpSyncookies": "10"})"),
              "key \"chTcpSyncookies\": expected a string of one character (or \"\")");
    EXPECT_NE(ParseError(R"({"chTcpSyncookies": 1})").find("\"chTcpSyncookies\""),
              std::string::npos);
    EXPECT_NE(ParseError(R"({"chLangCode": "0"})").find("\"chLangCode\""), std::string::npos);
    EXPECT_NE(ParseError(R"({"vFileMonitList": ["/a", 2]})").find("\"vFileMonitList\""),
              std::string::npos);
    EXPECT_NE(ParseError(R"({"sHostname": null})").find("\"sHostname\""), std::string::npos);
    EXPECT_EQ(ParseError(R"({"vDV": [{"szPart": "/a"}, {"iCeil": 1, "extra": 2}]})"),
              "unknown key \"vDV[1].extra\"");
    EXPECT_NE(ParseError(R"({"vDV": {}})").find("\"vDV\""), std::string::npos);
    EXPECT_EQ(ParseError("[1, 2]"), "the state must be a JSON object");
}

TEST(StateJson, OverLongCharArrayStringsAreRefused) {
    std::string addr(60, '1');
    std::string err = ParseError(R"({"vTcpListen": [{"szListenAddr": ")" + addr + R"("}]})");
    EXPECT_EQ(err,
              "key \"vTcpListen[0].szListenAddr\": expected a string of at most 59 bytes without "
              "NUL bytes");
    std::string ok(59, '1');
    nvagent::SimState st;
    EXPECT_TRUE(nvagent::SimStateFromText(R"({"vTcpListen": [{"szListenAddr": ")" + ok + R"("}]})",
                                          st, err));
    std::string path(256, 'p');
    EXPECT_NE(ParseError(R"({"vBakForSize": [{"szBakDir": ")" + path + R"("}]})")
                  .find("vBakForSize[0].szBakDir"),
              std::string::npos);
}

TEST(StateJson, SimulatorKeysAreChecked) {
    EXPECT_EQ(ParseError(R"({"simInputRules": [{"proto": "icmp"}]})"),
              "key \"simInputRules[0].proto\": expected one of \"tcp\", \"udp\"");
    EXPECT_NE(
        ParseError(R"({"simOutputRules": [{"dst": "1.2.3.300"}]})").find("simOutputRules[0].dst"),
        std::string::npos);
    EXPECT_NE(ParseError(R"({"simInputRules": [{"dport": 65536}]})").find("dport"),
              std::string::npos);
    EXPECT_NE(ParseError(R"({"simInterfaces": [{"name": "eth0"}, {"name": "eth0"}]})")
                  .find("simInterfaces[1].name"),
              std::string::npos);
    EXPECT_NE(ParseError(R"({"simInterfaces": [{"name": "eth0", "mask": "x"}]})")
                  .find("simInterfaces[0].mask"),
              std::string::npos);
    EXPECT_NE(ParseError(R"({"simUsers": [{"name": ""}]})").find("simUsers[0].name"),
              std::string::npos);
    EXPECT_NE(ParseError(R"({"simClockOffset": "5"})").find("simClockOffset"), std::string::npos);
}

TEST(StateJson, SyntaxErrorsAreDescribed) {
    std::string err = ParseError("{\"ulShmMax\": }");
    EXPECT_EQ(err.rfind("not valid JSON: ", 0), 0u) << err;
    EXPECT_NE(err.find("line 1"), std::string::npos) << err;
}

TEST(StateJson, DemoStateLoadsAndSurvivesARoundTrip) {
    nvagent::SimState st = nvtest::LoadState(nvtest::DemoStatePath());
    EXPECT_EQ(st.conf.sVersion, "2.4.1");
    EXPECT_EQ(st.conf.chLangCode, 0);
    EXPECT_EQ(st.svr.vTcpListen.size(), 6u);
    EXPECT_EQ(st.interfaces.size(), 3u);
    nvagent::SimState again;
    std::string err;
    ASSERT_TRUE(nvagent::SimStateFromText(nvagent::SimStateToJson(st).dump(), again, err)) << err;
    EXPECT_EQ(nvagent::SimStateToJson(again), nvagent::SimStateToJson(st));
}

class SimStateFile : public ::testing::Test {
protected:
    nvtest::TempDir dir;
};

TEST_F(SimStateFile, UnparsableFileIsNamedAndLeftUntouched) {
    std::string path = dir.File("state.json");
    const std::string text = "{\"ulShmMax\": 12,,}";
    ASSERT_TRUE(nvtest::WriteFile(path, text));
    std::string err;
    EXPECT_EQ(nvagent::MakeSimBackend(path, err), nullptr);
    EXPECT_NE(err.find(path), std::string::npos) << err;
    EXPECT_NE(err.find("not valid JSON"), std::string::npos) << err;
    EXPECT_EQ(nvtest::ReadFile(path), text);
}

TEST_F(SimStateFile, UnknownKeyInFileIsNamedAndLeftUntouched) {
    std::string path = dir.File("state.json");
    const std::string text = "{\"chLangCode\": 0, \"colour\": \"blue\"}\n";
    ASSERT_TRUE(nvtest::WriteFile(path, text));
    std::string err;
    EXPECT_EQ(nvagent::MakeSimBackend(path, err), nullptr);
    EXPECT_NE(err.find(path), std::string::npos) << err;
    EXPECT_NE(err.find("unknown key \"colour\""), std::string::npos) << err;
    EXPECT_EQ(nvtest::ReadFile(path), text);
}

TEST_F(SimStateFile, EmptyFileAndDirectoryAreRefused) {
    std::string path = dir.File("empty.json");
    ASSERT_TRUE(nvtest::WriteFile(path, ""));
    std::string err;
    EXPECT_EQ(nvagent::MakeSimBackend(path, err), nullptr);
    EXPECT_NE(err.find("not valid JSON"), std::string::npos) << err;
    EXPECT_EQ(nvagent::MakeSimBackend(dir.Path(), err), nullptr);
    EXPECT_NE(err.find("Is a directory"), std::string::npos) << err;
}

TEST_F(SimStateFile, MissingFileGivesDefaultsAndIsCreatedAtTheFirstChange) {
    std::string path = dir.File("new-state.json");
    std::string err;
    std::unique_ptr<nvagent::Backend> b = nvagent::MakeSimBackend(path, err);
    ASSERT_NE(b, nullptr) << err;
    std::string body;
    b->CheckBody(body);
    nvtest::DecodedState d = nvtest::Decode(body);
    EXPECT_EQ(d.conf.sVersion, "1.0");
    EXPECT_EQ(d.conf.shCpuCeil, 100);
    EXPECT_EQ(nvtest::ReadFile(path), "");
    ASSERT_EQ(b->Apply(5, "1").iCode, em_ActSuccAll);
    nvagent::SimState st = nvtest::LoadState(path);
    EXPECT_EQ(st.conf.chTcpSyncookies, '1');
}

TEST_F(SimStateFile, NoPathKeepsChangesInMemory) {
    std::string err;
    std::unique_ptr<nvagent::Backend> b = nvagent::MakeSimBackend("", err);
    ASSERT_NE(b, nullptr);
    EXPECT_EQ(b->Apply(57, "memonly").iCode, em_ActSuccAll);
    std::string body;
    b->CheckBody(body);
    EXPECT_EQ(nvtest::Decode(body).conf.sHostname, "memonly");
}

}  // namespace
