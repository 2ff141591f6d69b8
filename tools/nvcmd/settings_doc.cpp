// The settings document's keys: each setting's record field, set command
// and payload, and each declarative list's elements in canonical form.
#include "settings_doc.h"

#include <climits>

#include "agent/commands/command_parser.h"
#include "settings_lines.h"

namespace nvsettings {

std::string PathText(const Path& p) {
    std::string s;
    for (const std::string& k : p) {
        if (!s.empty() && (k.empty() || k[0] != '['))
            s += '.';
        s += k;
    }
    return s;
}

const std::vector<ScalarKey>& ScalarKeys() {
    // clang-format off
    static const std::vector<ScalarKey> keys = {
        {"hostname", "sHostname", Kind::kHostName, 57, 0},
        {"language", "chLangCode", Kind::kLanguage, 2, 0},
        {"kernel.icmp_echo_ignore_all", "chIcmpEchoIgnoreAll", Kind::kFlag, 4, 0},
        {"kernel.tcp_syncookies", "chTcpSyncookies", Kind::kFlag, 5, 0},
        {"kernel.tcp_tw_reuse", "chTcpTwReuse", Kind::kFlag, 6, 0},
        {"kernel.shmmax", "ulShmMax", Kind::kLimit, 7, 0},
        {"kernel.shmall", "ulShmAll", Kind::kLimit, 8, 0},
        {"kernel.shmmni", "ulShmMni", Kind::kLimit, 9, 0},
        {"kernel.threads_max", "ulThreadMax", Kind::kLimit, 10, 0},
        {"kernel.file_max", "ulFileMax", Kind::kLimit, 11, 0},
        {"firewall.input.policy", "chIptablesInputPolicy", Kind::kPolicy, 32, 0},
        {"firewall.output.policy", "chIptablesOutputPolicy", Kind::kPolicy, 36, 0},
        {"ftp.anonymous_root", "sVsftpdAnonRoot", Kind::kPath, 43, 0},
        {"ftp.anonymous", "chVsftpdAnonEnable", Kind::kFlag, 40, 0},
        {"ftp.anonymous_upload", "chVsftpdAnonUpload", Kind::kFlag, 41, 0},
        {"ftp.anonymous_mkdir", "chVsftpdAnonMkdir", Kind::kFlag, 42, 0},
        {"ftp.local_users", "chVsftpdLocalEnable", Kind::kFlag, 44, 0},
        {"ftp.write", "chVsftpdWrite", Kind::kFlag, 45, 0},
        {"ftp.running", "chVsftpdRunFlag", Kind::kFlag, 46, 0},
        {"samba.share_path", "sSambaSharePath", Kind::kPath, 48, 0},
        {"samba.share_write", "chSambaShareWrite", Kind::kFlag, 49, 0},
        {"samba.running", "chSambaRunFlag", Kind::kFlag, 50, 0},
        {"monitors.files.enabled", "chFileMonitFlag", Kind::kFlag, 14, 0},
        {"monitors.processes.enabled", "chProcessMonitFlag", Kind::kFlag, 16, 0},
        {"monitors.cpu.enabled", "chCpuMonitFlag", Kind::kFlag, 19, 0},
        {"monitors.cpu.ceiling", "shCpuCeil", Kind::kPercent, 17, 0},
        {"monitors.cpu.floor", "shCpuFloor", Kind::kPercent, 18, 0},
        {"monitors.memory.enabled", "chMemMonitFlag", Kind::kFlag, 21, 0},
        {"monitors.memory.ceiling", "iMemCeil", Kind::kMemCeil, 20, 0},
        {"monitors.disk_volumes.enabled", "chDVMonitFlag", Kind::kFlag, 26, 0},
        {"monitors.backups.enabled", "chBakForSizeFlag", Kind::kFlag, 31, 0},
    };
    // clang-format on
    return keys;
}

const ScalarKey* FindScalar(const std::string& dotted) {
    for (const ScalarKey& k : ScalarKeys()) {
        if (dotted == k.path)
            return &k;
    }
    return nullptr;
}

int LanguageCode(const std::string& word) {
    for (int c = 0; c < 3; ++c) {
        if (word == LanguageWord(c))
            return c;
    }
    return -1;
}

const char* LanguageWord(int code) {
    static const char* const words[] = {"en", "chgb2312", "chutf8"};
    return code >= 0 && code < 3 ? words[code] : "";
}

Json ScalarFromState(const ScalarKey& k, const Json& state) {
    if (!state.contains(k.field))
        return Json();
    const Json& v = state[k.field];
    switch (k.kind) {
        case Kind::kFlag: {
            std::string s = v.get<std::string>();
            return s == "1" ? Json(true) : s == "0" ? Json(false) : Json();
        }
        case Kind::kPolicy: {
            std::string s = v.get<std::string>();
            return s == "1" ? Json("accept") : s == "2" ? Json("drop") : Json();
        }
        case Kind::kLimit:
        case Kind::kMemCeil:
            return v.get<long long>() > 0 ? v : Json();
        case Kind::kPercent:
            return v;
        case Kind::kPath:
            return v;
        case Kind::kHostName:
            return v.get<std::string>().empty() ? Json() : v;
        case Kind::kLanguage:
            return *LanguageWord(v.get<int>()) ? Json(LanguageWord(v.get<int>())) : Json();
    }
    return Json();
}

namespace {

// The agent's verdict on a payload: its detail when it refuses.
bool AgentAccepts(short cmd, const std::string& payload, std::string& why) {
    nvagent::Request req;
    nvagent::CmdResult r;
    if (nvagent::ParseCommand(cmd, payload, req, r))
        return true;
    why = r.sDetail;
    return false;
}

bool Whole(const Json& v, long long lo, long long hi, long long& out, std::string& why) {
    if (!v.is_number_integer()) {
        why = "expected a whole number, not " + v.dump();
        return false;
    }
    out = v.get<long long>();
    if (out < lo || out > hi) {
        why = "expected a whole number from " + std::to_string(lo) + " to " + std::to_string(hi);
        return false;
    }
    return true;
}

bool Text(const Json& v, std::string& out, std::string& why) {
    if (!v.is_string()) {
        why = "expected a string, not " + v.dump();
        return false;
    }
    out = v.get<std::string>();
    return true;
}

}  // namespace

bool ScalarPayload(const ScalarKey& k, const Json& v, std::string& payload, std::string& why) {
    long long n = 0;
    switch (k.kind) {
        case Kind::kFlag:
            if (!v.is_boolean()) {
                why = "expected true or false, not " + v.dump();
                return false;
            }
            payload = v.get<bool>() ? "1" : "0";
            return true;
        case Kind::kPolicy: {
            std::string s;
            if (!Text(v, s, why))
                return false;
            if (s != "accept" && s != "drop") {
                why = "expected accept or drop, not \"" + s + "\"";
                return false;
            }
            payload = s == "accept" ? "1" : "2";
            return true;
        }
        case Kind::kLanguage: {
            std::string s;
            if (!Text(v, s, why))
                return false;
            if (LanguageCode(s) < 0) {
                why = "expected en, chgb2312 or chutf8, not \"" + s + "\"";
                return false;
            }
            payload = std::to_string(LanguageCode(s));
            return true;
        }
        case Kind::kLimit:
            if (!Whole(v, 0, 4294967295LL, n, why))
                return false;
            payload = std::to_string(n);
            break;
        case Kind::kPercent:
            if (!Whole(v, 0, 100, n, why))
                return false;
            payload = std::to_string(n);
            return true;  // the ceiling and floor are judged together by the plan
        case Kind::kMemCeil:
            if (!Whole(v, 0, INT_MAX, n, why))
                return false;
            payload = std::to_string(n);
            break;
        case Kind::kPath:
            if (!Text(v, payload, why))
                return false;
            if (payload.empty())
                return true;  // emptied through the service's defaults command
            break;
        case Kind::kHostName:
            if (!Text(v, payload, why))
                return false;
            if (payload.find_first_of(" \t\n") != std::string::npos) {
                why = "a host name has no blanks";
                return false;
            }
            break;
    }
    return AgentAccepts(k.cmd, payload, why);
}

const std::vector<ListKey>& ListKeys() {
    // clang-format off
    static const std::vector<ListKey> keys = {
        {"monitors.files.paths", "vFileMonitList", ListType::kFiles, 13, 0, 0, 0},
        {"monitors.processes.commands", "vProcessMonitList", ListType::kProcesses, 15, 0, 0, 0},
        {"monitors.disk_volumes.volumes", "vDV", ListType::kVolumes, 0, 23, 24, 25},
        {"monitors.backups.files", "vBakForSize", ListType::kBackups, 0, 28, 29, 30},
        {"firewall.input.rules", "vsIptablesInputList", ListType::kRules, 0, 33, 34, 35},
        {"firewall.output.rules", "vsIptablesOutputList", ListType::kRules, 0, 37, 38, 39},
    };
    // clang-format on
    return keys;
}

const ListKey* FindList(const std::string& dotted) {
    for (const ListKey& k : ListKeys()) {
        if (dotted == k.path)
            return &k;
    }
    return nullptr;
}

namespace {

const char* const kProtoWords[] = {"", "tcp", "udp"};
const char* const kActionWords[] = {"", "accept", "drop", "reject"};

int WordIndex(const char* const* words, int n, const std::string& w) {
    for (int i = 1; i < n; ++i) {
        if (w == words[i])
            return i;
    }
    return 0;
}

Json RuleJson(const nvagent::FwRule& r) {
    Json j = Json::object();
    j["proto"] = kProtoWords[r.proto];
    j["src"] = r.src.empty() ? "any" : r.src;
    j["sport"] = r.sport;
    j["dst"] = r.dst.empty() ? "any" : r.dst;
    j["dport"] = r.dport;
    j["action"] = kActionWords[r.action];
    return j;
}

// Each field of an element object: its name, whether it is a number, and
// its default (null: required).
struct ElementField {
    const char* name;
    bool number;
    Json fallback;
};

std::vector<ElementField> FieldsOf(ListType t) {
    switch (t) {
        case ListType::kVolumes:
            return {{"partition", false, Json()},
                    {"ceiling", true, Json()},
                    {"floor", true, Json()},
                    {"interval", true, Json()}};
        case ListType::kBackups:
            return {{"file", false, Json()}, {"dir", false, Json()}, {"limit_kb", true, Json()}};
        case ListType::kRules:
            return {{"proto", false, "tcp"}, {"src", false, "any"}, {"sport", true, 0},
                    {"dst", false, "any"},   {"dport", true, 0},    {"action", false, "accept"}};
        default:
            return {};
    }
}

// The element's fields in order, defaults filled in; false with the bad
// field for a missing required one, an unknown one or a wrong type.
bool FillFields(ListType t, const Json& e, Json& out, std::string& sub, std::string& why) {
    if (!e.is_object()) {
        why = "expected a mapping, not " + e.dump();
        return false;
    }
    std::vector<ElementField> fields = FieldsOf(t);
    for (const auto& kv : e.items()) {
        bool known = false;
        for (const ElementField& f : fields)
            known = known || kv.key() == f.name;
        if (!known) {
            sub = kv.key();
            why = "unknown key";
            return false;
        }
    }
    out = Json::object();
    for (const ElementField& f : fields) {
        if (!e.contains(f.name)) {
            if (f.fallback.is_null()) {
                sub = f.name;
                why = "is required";
                return false;
            }
            out[f.name] = f.fallback;
            continue;
        }
        const Json& v = e[f.name];
        if (f.number ? !v.is_number_integer() : !v.is_string()) {
            sub = f.name;
            why = std::string("expected ") + (f.number ? "a whole number" : "a string") + ", not " +
                  v.dump();
            return false;
        }
        out[f.name] = v;
    }
    return true;
}

std::string Dash(const std::string& s) {
    return s.empty() || s == "any" ? "-" : s;
}

}  // namespace

std::string AddPayload(const ListKey& k, const Json& c, bool top) {
    switch (k.type) {
        case ListType::kVolumes:
            return c["partition"].get<std::string>() + " " + c["ceiling"].dump() + " " +
                   c["floor"].dump() + " " + c["interval"].dump();
        case ListType::kBackups:
            return c["file"].get<std::string>() + " " + c["dir"].get<std::string>() + " " +
                   c["limit_kb"].dump();
        case ListType::kRules:
            return std::string(top ? "1 " : "2 ") +
                   std::to_string(WordIndex(kProtoWords, 3, c["proto"].get<std::string>())) + " " +
                   Dash(c["src"].get<std::string>()) + " " + c["sport"].dump() + " " +
                   Dash(c["dst"].get<std::string>()) + " " + c["dport"].dump() + " " +
                   std::to_string(WordIndex(kActionWords, 4, c["action"].get<std::string>()));
        default:
            return c.get<std::string>();
    }
}

bool ElementFromDoc(const ListKey& k, const Json& e, Json& canon, std::string& sub,
                    std::string& why) {
    sub.clear();
    if (k.type == ListType::kFiles || k.type == ListType::kProcesses) {
        std::string s;
        if (!Text(e, s, why))
            return false;
        if (s.empty() || s.find('\n') != std::string::npos) {
            why = "expected one non-empty line";
            return false;
        }
        nvagent::Request req;
        nvagent::CmdResult r;
        if (!nvagent::ParseCommand(k.setCmd, s, req, r)) {
            why = r.sDetail;
            return false;
        }
        const auto& entries = std::get<nvagent::ListRequest>(req).entries;
        canon = entries.empty() ? Json(s) : Json(entries[0]);
        return true;
    }
    Json filled;
    if (!FillFields(k.type, e, filled, sub, why))
        return false;
    if (k.type == ListType::kRules) {
        for (const char* f : {"proto", "action"}) {
            const char* const* words = f[0] == 'p' ? kProtoWords : kActionWords;
            if (WordIndex(words, f[0] == 'p' ? 3 : 4, filled[f].get<std::string>()) == 0) {
                sub = f;
                why = f[0] == 'p' ? "expected tcp or udp" : "expected accept, drop or reject";
                return false;
            }
        }
    }
    std::string payload = AddPayload(k, filled, false);
    nvagent::Request req;
    nvagent::CmdResult r;
    if (!nvagent::ParseCommand(k.addCmd, payload, req, r)) {
        why = r.sDetail;
        return false;
    }
    if (k.type == ListType::kRules) {
        canon = RuleJson(nvsettings::CanonicalRule(std::get<nvagent::RuleAddRequest>(req).rule));
    } else {
        canon = filled;
    }
    return true;
}

Json ElementKey(const ListKey& k, const Json& canon) {
    if (k.type == ListType::kVolumes)
        return canon["partition"];
    if (k.type == ListType::kBackups)
        return canon["file"];
    return canon;
}

std::vector<Json> CurrentElements(const ListKey& k, const Json& state,
                                  std::vector<unsigned long>* shownIndex) {
    std::vector<Json> out;
    if (shownIndex)
        shownIndex->clear();
    if (!state.contains(k.field))
        return out;
    const Json& list = state[k.field];
    if (k.type == ListType::kRules) {
        std::vector<std::string> lines = list.get<std::vector<std::string>>();
        for (const ShownRule& r : RulesFromLines(lines)) {
            out.push_back(RuleJson(r.rule));
            if (shownIndex)
                shownIndex->push_back(r.index);
        }
        return out;
    }
    unsigned long i = 0;
    for (const Json& e : list) {
        ++i;
        if (k.type == ListType::kVolumes) {
            out.push_back(Json{{"partition", e.value("szPart", "")},
                               {"ceiling", e.value("iCeil", 0)},
                               {"floor", e.value("iFloor", 0)},
                               {"interval", e.value("iItv", 0)}});
        } else if (k.type == ListType::kBackups) {
            out.push_back(Json{{"file", e.value("szFileName", "")},
                               {"dir", e.value("szBakDir", "")},
                               {"limit_kb", e.value("iKilobyte", 0)}});
        } else {
            out.push_back(e);
        }
        if (shownIndex)
            shownIndex->push_back(i);
    }
    return out;
}

Json ElementForExport(const ListKey& k, const Json& canon) {
    if (k.type != ListType::kRules)
        return canon;
    Json j = Json::object();
    j["proto"] = canon["proto"];
    for (const char* f : {"src", "sport", "dst", "dport"}) {
        if (canon[f] != Json("any") && canon[f] != Json(0))
            j[f] = canon[f];
    }
    j["action"] = canon["action"];
    return j;
}

ListSpec ReadListSpec(const Json& v) {
    ListSpec s;
    if (v.is_array()) {
        s.items = v;
        return s;
    }
    std::string st = v.value("state", "exact");
    s.state = st == "present"  ? ListState::kPresent
              : st == "absent" ? ListState::kAbsent
                               : ListState::kExact;
    s.items = v.value("items", Json::array());
    return s;
}

}  // namespace nvsettings
