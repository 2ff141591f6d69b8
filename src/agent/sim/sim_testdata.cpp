// The large generated state: deterministic rules and listeners over a fixed
// base, so repeated runs measure the same thing.
#include "agent/sim/sim_testdata.h"

#include <string>

namespace nvagent {

namespace {

std::string Quad(int a, int b, int c, int d) {
    return std::to_string(a) + "." + std::to_string(b) + "." + std::to_string(c) + "." +
           std::to_string(d);
}

Json Rule(int i) {
    static const char* const kActions[] = {"accept", "drop", "reject"};
    Json r = Json::object();
    r["proto"] = (i % 2 == 0) ? "tcp" : "udp";
    r["src"] = Quad(10, (i >> 16) & 0xff, (i >> 8) & 0xff, i & 0xff) + "/32";
    r["sport"] = 0;
    r["dst"] = (i % 5 == 0) ? "" : "192.168.1.10";
    r["dport"] = 1024 + i % 60000;
    r["action"] = kActions[i % 3];
    return r;
}

Json Listener(int i) {
    Json l = Json::object();
    l["szListenAddr"] = ((i % 3 == 0) ? std::string("127.0.0.1") : std::string("0.0.0.0")) + ":" +
                        std::to_string(1024 + i % 64000);
    l["iPid"] = 2000 + i;
    l["szProgramName"] = "worker-" + std::to_string(i);
    return l;
}

Json Interface(const char* name, const char* mac, const char* mode, const char* ip,
               const char* mask, const char* gw) {
    return Json{{"name", name}, {"mac", mac},    {"mode", mode},          {"up", true}, {"ip", ip},
                {"mask", mask}, {"gateway", gw}, {"dns1", "192.168.1.1"}, {"dns2", ""}};
}

}  // namespace

Json MakeLargeState(int rules, int listeners) {
    Json j = Json::object();
    j["chIcmpEchoIgnoreAll"] = "0";
    j["chTcpSyncookies"] = "1";
    j["chTcpTwReuse"] = "0";
    j["ulShmMax"] = 33554432;
    j["ulShmAll"] = 2097152;
    j["ulShmMni"] = 4096;
    j["ulThreadMax"] = 63477;
    j["ulFileMax"] = 398410;
    j["chLangCode"] = 0;
    j["sHostname"] = "loadtest01";
    j["sVersion"] = "2.4.1";
    j["iMemTotal"] = 15872;
    j["iMemUse"] = 6120;
    j["iMemFree"] = 9752;
    j["chIptablesInputPolicy"] = "2";
    j["chIptablesOutputPolicy"] = "1";
    j["vTcpListen"] = Json::array();
    for (int i = 0; i < listeners; ++i)
        j["vTcpListen"].push_back(Listener(i));
    j["simInputRules"] = Json::array();
    j["simOutputRules"] = Json::array();
    for (int i = 0; i < rules; ++i) {
        j[i < (rules + 1) / 2 ? "simInputRules" : "simOutputRules"].push_back(Rule(i));
    }
    j["simInterfaces"] =
        Json::array({Interface("eth0", "52:54:00:3a:1f:07", "static", "192.168.1.20",
                               "255.255.255.0", "192.168.1.1"),
                     Interface("lo", "00:00:00:00:00:00", "static", "127.0.0.1", "255.0.0.0", "")});
    j["simUsers"] = Json::array({Json{{"name", "root"}, {"pwChanged", 0}}});
    return j;
}

}  // namespace nvagent
