// JSON conversion of the simulator's own keys and loading of the state file.
#include "agent/sim/sim_state_json.h"

#include <cerrno>
#include <cstring>

#include "agent/atomic_file.h"
#include "agent/commands/payload_parse.h"
#include "agent/display_lines.h"

namespace nvagent {

namespace {

// About 10,000 years either way: enough for any date the date command sets.
const long long kMaxClockOffset = 320000000000LL;

// An IPv4 address (or network, when allowNet) as a string, "" for unset.
template <class Rec>
FieldCodec<Rec> Address(const char* key, std::string Rec::*m, bool allowNet) {
    FieldCodec<Rec> f = Text(key, m);
    auto read = f.get;
    f.get = [m, allowNet, read](const Json& j, Rec& r, const std::string& path, std::string& err) {
        if (!read(j, r, path, err))
            return false;
        uint32_t a = 0;
        const std::string& s = r.*m;
        if (s.empty() || (allowNet ? IsIPv4OrNet(s) : ParseIPv4(s, a)))
            return true;
        err = KeyError(path, allowNet ? "expected \"\" or an IPv4 address or address/prefix"
                                      : "expected \"\" or an IPv4 address");
        return false;
    };
    return f;
}

const FieldTable<FwRule>& RuleFields() {
    static const FieldTable<FwRule> t = {
        Word("proto", &FwRule::proto, {"tcp", "udp"}, kProtoTcp),
        Address("src", &FwRule::src, true),
        Whole("sport", &FwRule::sport, 0, 65535),
        Address("dst", &FwRule::dst, true),
        Whole("dport", &FwRule::dport, 0, 65535),
        Word("action", &FwRule::action, {"accept", "drop", "reject"}, kActAccept),
    };
    return t;
}

const FieldTable<NetInterface>& InterfaceFields() {
    static const FieldTable<NetInterface> t = {
        Text("name", &NetInterface::name),
        Text("mac", &NetInterface::mac),
        Word("mode", &NetInterface::mode, {"static", "dynamic"}, kModeStatic),
        Bool("up", &NetInterface::up),
        Address("ip", &NetInterface::ip, false),
        Address("mask", &NetInterface::mask, false),
        Address("gateway", &NetInterface::gateway, false),
        Address("dns1", &NetInterface::dns1, false),
        Address("dns2", &NetInterface::dns2, false),
    };
    return t;
}

const FieldTable<SimUser>& UserFields() {
    static const FieldTable<SimUser> t = {
        Text("name", &SimUser::name),
        Whole("pwChanged", &SimUser::pwChanged),
    };
    return t;
}

const FieldTable<SimState>& SimFields() {
    static const FieldTable<SimState> t = {
        RecordList("simInputRules", &SimState::inputRules, RuleFields),
        RecordList("simOutputRules", &SimState::outputRules, RuleFields),
        RecordList("simInterfaces", &SimState::interfaces, InterfaceFields),
        RecordList("simUsers", &SimState::users, UserFields),
        Whole("simClockOffset", &SimState::clockOffset, -kMaxClockOffset, kMaxClockOffset),
    };
    return t;
}

std::vector<std::string> SimKeys() {
    std::vector<std::string> keys;
    for (const FieldCodec<SimState>& f : SimFields())
        keys.push_back(f.key);
    return keys;
}

// Names must be present and unique: commands find interfaces and users by name.
template <class T>
bool UniqueNames(const std::vector<T>& v, const char* key, std::string& err) {
    for (size_t i = 0; i < v.size(); ++i) {
        bool dup = false;
        for (size_t k = 0; k < i; ++k)
            dup = dup || v[k].name == v[i].name;
        if (v[i].name.empty() || dup || v[i].name.find(' ') != std::string::npos) {
            err = KeyError(std::string(key) + "[" + std::to_string(i) + "].name",
                           "expected a non-empty name without blanks, unique in the list");
            return false;
        }
    }
    return true;
}

// Display lists the file leaves out are generated from their structured data.
void FillMissingLines(const Json& j, SimState& st) {
    struct Gen {
        const char* key;
        tVecStr* lines;
        std::function<tVecStr()> make;
    };
    const Gen gens[] = {
        {"vsDV", &st.conf.vsDV, [&st] { return VolumeLines(st.conf.vDV); }},
        {"vsBakForSize", &st.conf.vsBakForSize, [&st] { return BackupLines(st.conf.vBakForSize); }},
        {"vsTcpListenList", &st.svr.vsTcpListenList,
         [&st] { return ListenLines(st.svr.vTcpListen); }},
        {"vsDiskInfoList", &st.svr.vsDiskInfoList,
         [&st] { return DiskInfoLines(st.svr.vDiskInfo); }},
        {"vsIptablesInputList", &st.svr.vsIptablesInputList,
         [&st] { return ChainLines(st.svr.chIptablesInputPolicy, st.inputRules); }},
        {"vsIptablesOutputList", &st.svr.vsIptablesOutputList,
         [&st] { return ChainLines(st.svr.chIptablesOutputPolicy, st.outputRules); }},
        {"vsIfconfigList", &st.svr.vsIfconfigList, [&st] { return InterfaceLines(st.interfaces); }},
    };
    for (const Gen& g : gens) {
        if (!j.contains(g.key))
            *g.lines = g.make();
    }
}

}  // namespace

Json SimStateToJson(const SimState& st) {
    Json j = StateToJson(st.conf, st.svr);
    for (const FieldCodec<SimState>& f : SimFields())
        f.put(st, j[f.key]);
    return j;
}

bool SimStateFromJson(const Json& j, SimState& st, std::string& err) {
    SimState ns;
    if (!StateFromJson(j, ns.conf, ns.svr, err, SimKeys()))
        return false;
    for (const FieldCodec<SimState>& f : SimFields()) {
        if (j.contains(f.key) && !f.get(j.at(f.key), ns, f.key, err))
            return false;
    }
    if (!UniqueNames(ns.interfaces, "simInterfaces", err) ||
        !UniqueNames(ns.users, "simUsers", err)) {
        return false;
    }
    FillMissingLines(j, ns);
    st = std::move(ns);
    return true;
}

bool SimStateFromText(const std::string& text, SimState& st, std::string& err) {
    Json j;
    try {
        j = Json::parse(text);
    } catch (const Json::parse_error& e) {
        std::string what = e.what();
        size_t cut = what.find("] ");
        err = "not valid JSON: " + (cut == std::string::npos ? what : what.substr(cut + 2));
        return false;
    }
    return SimStateFromJson(j, st, err);
}

bool LoadSimStateFile(const std::string& path, SimState& st, std::string& err) {
    std::string text;
    int e = ReadWholeFile(path, text);
    if (e == ENOENT) {
        st = SimState();
        return true;
    }
    if (e != 0) {
        err = "cannot read the state file " + path + ": " + strerror(e);
        return false;
    }
    if (!SimStateFromText(text, st, err)) {
        err = "the state file " + path + " cannot be used: " + err;
        return false;
    }
    return true;
}

}  // namespace nvagent
