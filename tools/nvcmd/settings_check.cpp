// The check of a settings document before anything is sent: every key
// known, every value of the right type and one the agent's own parsers
// accept, no list entry twice. The first bad item is named by its path.
#include <set>

#include "agent/commands/command_parser.h"
#include "settings_doc.h"

namespace nvsettings {

namespace {

struct Bad {
    Path path;
    std::string why;
};

Path Sub(Path p, const std::string& key) {
    p.push_back(key);
    return p;
}

[[noreturn]] void Refuse(const Path& p, const std::string& why) {
    throw Bad{p, why};
}

bool IsGroup(const std::string& dotted) {
    std::string prefix = dotted + ".";
    for (const ScalarKey& k : ScalarKeys()) {
        if (std::string(k.path).rfind(prefix, 0) == 0)
            return true;
    }
    for (const ListKey& k : ListKeys()) {
        if (std::string(k.path).rfind(prefix, 0) == 0)
            return true;
    }
    return false;
}

void Parsed(short cmd, const std::string& payload, const Path& p) {
    nvagent::Request req;
    nvagent::CmdResult r;
    if (!nvagent::ParseCommand(cmd, payload, req, r))
        Refuse(p, r.sDetail);
}

bool KeyOnlyAbsent(const ListKey& k, const ListSpec& s, const Json& e) {
    if (s.state != ListState::kAbsent || !e.is_object() || e.size() != 1)
        return false;
    const char* key = k.type == ListType::kVolumes   ? "partition"
                      : k.type == ListType::kBackups ? "file"
                                                     : nullptr;
    return key && e.contains(key) && e[key].is_string();
}

void CheckList(const ListKey& k, const Json& v, const Path& p, CanonLists* lists) {
    if (v.is_object()) {
        for (const auto& kv : v.items()) {
            if (kv.key() != "state" && kv.key() != "items")
                Refuse(Sub(p, kv.key()), "unknown key");
        }
        if (v.contains("state")) {
            const Json& st = v["state"];
            if (!st.is_string() || (st != "exact" && st != "present" && st != "absent"))
                Refuse(Sub(p, "state"), "expected exact, present or absent");
        }
        if (v.contains("items") && !v["items"].is_array())
            Refuse(Sub(p, "items"), "expected a list");
    } else if (!v.is_array()) {
        Refuse(p, "expected a list, or a mapping with state and items");
    }
    ListSpec s = ReadListSpec(v);
    Path base = p;
    if (v.is_object())
        base.push_back("items");
    std::set<std::string> seen;
    std::vector<Json>* out = lists ? &(*lists)[k.path] : nullptr;
    for (size_t i = 0; i < s.items.size(); ++i) {
        Path at = base;
        at.push_back("[" + std::to_string(i) + "]");
        Json canon;
        if (KeyOnlyAbsent(k, s, s.items[i])) {
            canon = s.items[i].begin().value();
        } else {
            std::string sub, why;
            if (!ElementFromDoc(k, s.items[i], canon, sub, why)) {
                if (!sub.empty())
                    at.push_back(sub);
                Refuse(at, why);
            }
        }
        if (out)
            out->push_back(canon);
        if (!seen.insert((canon.is_object() ? ElementKey(k, canon) : canon).dump()).second)
            Refuse(at, "this entry is given twice");
    }
}

void CheckInterface(const std::string& name, const Json& v, const Path& p) {
    Parsed(53, name, p);
    if (!v.is_object())
        Refuse(p, "expected a mapping");
    for (const auto& kv : v.items()) {
        Path at = p;
        at.push_back(kv.key());
        const std::string& key = kv.key();
        const Json& x = kv.value();
        if (key == "enabled") {
            if (!x.is_boolean())
                Refuse(at, "expected true or false");
        } else if (key == "mode") {
            if (x != "static" && x != "dhcp")
                Refuse(at, "expected static or dhcp");
        } else if (key == "address" || key == "netmask" || key == "gateway") {
            if (!x.is_string())
                Refuse(at, "expected a string");
        } else if (key == "dns") {
            if (!x.is_array() || x.size() > 2)
                Refuse(at, "expected a list of at most two addresses");
            for (const Json& d : x) {
                if (!d.is_string())
                    Refuse(at, "expected a list of at most two addresses");
            }
        } else {
            Refuse(at, "unknown key");
        }
    }
    bool dhcp = v.value("mode", "") == "dhcp";
    if (dhcp) {
        for (const char* f : {"address", "netmask", "gateway", "dns"}) {
            if (v.contains(f))
                Refuse(Sub(p, f), "an interface on DHCP takes no " + std::string(f));
        }
        Parsed(54, name, p);
    } else if (InterfaceWantsStatic(v)) {
        for (const char* f : {"address", "netmask"}) {
            if (!v.contains(f))
                Refuse(Sub(p, f), "is required for a manual address");
        }
        Parsed(55, InterfaceManualPayload(name, v), p);
    } else {
        for (const char* f : {"netmask", "gateway", "dns"}) {
            if (v.contains(f))
                Refuse(Sub(p, f), "needs an address");
        }
    }
}

void CheckUser(const std::string& name, const Json& v, const Path& p) {
    if (name.empty() || name.find_first_of(" \t\n:") != std::string::npos)
        Refuse(p, "not a user name");
    if (!v.is_object())
        Refuse(p, "expected a mapping");
    for (const auto& kv : v.items()) {
        if (kv.key() != "password_hash")
            Refuse(Sub(p, kv.key()), "unknown key");
    }
    if (!v.contains("password_hash"))
        return;
    Path at = p;
    at.push_back("password_hash");
    if (!v["password_hash"].is_string())
        Refuse(at, "expected a string");
    Parsed(kPasswordHashCmd, PasswordHashPayload(name, v["password_hash"]), at);
}

void Walk(const Json& v, const std::string& dotted, const Path& p, CanonLists* lists) {
    if (const ScalarKey* k = FindScalar(dotted)) {
        std::string payload, why;
        if (!ScalarPayload(*k, v, payload, why))
            Refuse(p, why);
        return;
    }
    if (const ListKey* k = FindList(dotted)) {
        CheckList(*k, v, p, lists);
        return;
    }
    bool named = dotted == "interfaces" || dotted == "users";
    if (!named && !IsGroup(dotted))
        Refuse(p, "unknown key");
    if (!v.is_object())
        Refuse(p, "expected a mapping");
    for (const auto& kv : v.items()) {
        Path at = p;
        at.push_back(kv.key());
        if (dotted == "interfaces")
            CheckInterface(kv.key(), kv.value(), at);
        else if (dotted == "users")
            CheckUser(kv.key(), kv.value(), at);
        else
            Walk(kv.value(), dotted + "." + kv.key(), at, lists);
    }
}

}  // namespace

bool InterfaceWantsStatic(const Json& spec) {
    return spec.value("mode", "") == "static" || spec.contains("address");
}

std::string InterfaceManualPayload(const std::string& name, const Json& spec) {
    auto field = [](const Json& v) {
        std::string s = v.is_string() ? v.get<std::string>() : "";
        return s.empty() ? std::string("-") : s;
    };
    Json dns = spec.value("dns", Json::array());
    return name + " " + field(spec.value("address", Json())) + " " +
           field(spec.value("netmask", Json())) + " " + field(spec.value("gateway", Json())) + " " +
           field(dns.size() > 0 ? dns[0] : Json()) + " " + field(dns.size() > 1 ? dns[1] : Json());
}

std::string PasswordHashPayload(const std::string& user, const std::string& hash) {
    return user + " " + hash;
}

bool CheckDocument(const Json& doc, std::string& path, std::string& why, CanonLists* lists) {
    if (doc.is_null())
        return true;
    try {
        if (!doc.is_object())
            Refuse({}, "a settings document is a mapping");
        for (const auto& kv : doc.items())
            Walk(kv.value(), kv.key(), {kv.key()}, lists);
        if (doc.contains("monitors") && doc["monitors"].contains("cpu")) {
            const Json& cpu = doc["monitors"]["cpu"];
            if (cpu.contains("ceiling") && cpu.contains("floor") && cpu["floor"] > cpu["ceiling"])
                Refuse({"monitors", "cpu", "floor"}, "the floor must not be above the ceiling");
        }
    } catch (const Bad& b) {
        path = PathText(b.path);
        why = b.why;
        return false;
    }
    return true;
}

}  // namespace nvsettings
