// Working out an apply: each item's before and after, its set commands, and
// the order and dependencies that keep the server reachable and consistent.
#include "settings_plan.h"

#include <algorithm>
#include <map>
#include <set>

#include "settings_lines.h"

namespace nvsettings {

namespace {

constexpr size_t kNone = static_cast<size_t>(-1);

Path Split(const std::string& dotted) {
    Path p;
    size_t from = 0;
    for (;;) {
        size_t dot = dotted.find('.', from);
        p.push_back(dotted.substr(from, dot == std::string::npos ? dot : dot - from));
        if (dot == std::string::npos)
            return p;
        from = dot + 1;
    }
}

// One service with a command that puts its options back to defaults, the
// only way its path option can be emptied.
struct Service {
    const char* prefix;
    const char* pathKey;
    short defaultsCmd;
    std::vector<const char*> resetKeys;  // flags the defaults put back to off
    const char* runKey;
};

const Service kServices[] = {
    {"ftp",
     "ftp.anonymous_root",
     47,
     {"ftp.anonymous", "ftp.anonymous_upload", "ftp.anonymous_mkdir", "ftp.local_users",
      "ftp.write"},
     "ftp.running"},
    {"samba", "samba.share_path", 51, {"samba.share_write"}, "samba.running"},
};

// A monitor: its switch and the settings it watches with.
struct Monitor {
    const char* enabled;
    std::vector<const char*> members;
};

const Monitor kMonitors[] = {
    {"monitors.files.enabled", {"monitors.files.paths"}},
    {"monitors.processes.enabled", {"monitors.processes.commands"}},
    {"monitors.cpu.enabled", {"monitors.cpu.floor", "monitors.cpu.ceiling"}},
    {"monitors.memory.enabled", {"monitors.memory.ceiling"}},
    {"monitors.disk_volumes.enabled", {"monitors.disk_volumes.volumes"}},
    {"monitors.backups.enabled", {"monitors.backups.files"}},
};

class Planner {
public:
    Planner(const Json& doc, const Json& state, const CanonLists* lists)
        : m_doc(doc), m_state(state), m_lists(lists) {}

    std::vector<Item> Run() {
        Scalar("hostname");
        Scalar("language");
        for (const ScalarKey& k : ScalarKeys()) {
            if (std::string(k.path).rfind("kernel.", 0) == 0)
                Scalar(k.path);
        }
        for (const Service& s : kServices)
            PlanService(s);
        for (const Monitor& m : kMonitors)
            PlanMonitor(m);
        PlanChain("firewall.input");
        PlanChain("firewall.output");
        PlanInterfaces();
        PlanUsers();
        return std::move(m_items);
    }

private:
    const Json* At(const std::string& dotted) const {
        const Json* at = &m_doc;
        for (const std::string& k : Split(dotted)) {
            if (!at->is_object() || !at->contains(k))
                return nullptr;
            at = &(*at)[k];
        }
        return at;
    }

    size_t Add(Item it) {
        m_items.push_back(std::move(it));
        return m_items.size() - 1;
    }

    Json Current(const ScalarKey& k) const {
        return k.kind == Kind::kPath ? m_state.value(k.field, Json(""))
                                     : ScalarFromState(k, m_state);
    }

    size_t Scalar(const std::string& dotted, std::vector<size_t> needs = {}) {
        const ScalarKey* k = FindScalar(dotted);
        const Json* want = At(dotted);
        if (k == nullptr || want == nullptr || m_done.count(dotted))
            return kNone;
        m_done.insert(dotted);
        Item it;
        it.path = Split(dotted);
        it.before = Current(*k);
        it.after = *want;
        it.needs = std::move(needs);
        if (it.before != it.after) {
            std::string payload, why;
            ScalarPayload(*k, *want, payload, why);
            it.steps.push_back({k->cmd, payload});
        }
        return Add(std::move(it));
    }

    void SetFlag(const char* dotted, bool on) {
        m_state[FindScalar(dotted)->field] = on ? "1" : "0";
    }

    void PlanService(const Service& s) {
        std::vector<size_t> options;
        const ScalarKey* pathKey = FindScalar(s.pathKey);
        const Json* root = At(s.pathKey);
        std::string current = m_state.value(pathKey->field, "");
        if (root && *root == "" && !current.empty()) {
            // Only the defaults command empties the path; it also turns the
            // options off, so those the document leaves out are put back.
            Item it;
            it.path = Split(s.pathKey);
            it.before = current;
            it.after = "";
            it.steps.push_back({s.defaultsCmd, ""});
            for (const char* key : s.resetKeys) {
                const ScalarKey* k = FindScalar(key);
                bool wasOn = Current(*k) == Json(true);
                SetFlag(key, false);
                if (wasOn && At(key) == nullptr) {
                    it.steps.push_back({k->cmd, "1"});
                    SetFlag(key, true);
                }
            }
            m_state[pathKey->field] = "";
            m_done.insert(s.pathKey);
            options.push_back(Add(std::move(it)));
        }
        const Json* run = At(s.runKey);
        bool starting = run && *run == Json(true);
        if (!starting)
            Scalar(s.runKey);
        for (const ScalarKey& k : ScalarKeys()) {
            std::string path = k.path;
            if (path.rfind(std::string(s.prefix) + ".", 0) == 0 && path != s.runKey) {
                size_t i = Scalar(path);
                if (i != kNone)
                    options.push_back(i);
            }
        }
        if (starting)
            Scalar(s.runKey, options);
    }

    void PlanMonitor(const Monitor& m) {
        const Json* on = At(m.enabled);
        bool starting = on && *on == Json(true);
        if (!starting)
            Scalar(m.enabled);
        std::vector<const char*> members = m.members;
        // The agent keeps the CPU floor at or below the ceiling at every step.
        if (members.size() == 2 && At("monitors.cpu.floor") &&
            *At("monitors.cpu.floor") > m_state.value("shCpuCeil", Json(100))) {
            std::swap(members[0], members[1]);
        }
        std::vector<size_t> needs;
        for (const char* key : members) {
            size_t i = FindList(key) ? ListItem(*FindList(key), true) : Scalar(key);
            if (i != kNone)
                needs.push_back(i);
        }
        if (starting)
            Scalar(m.enabled, needs);
    }

    void PlanChain(const std::string& chain) {
        std::string policyKey = chain + ".policy";
        const Json* policy = At(policyKey);
        Json now = ScalarFromState(*FindScalar(policyKey), m_state);
        bool dropping = policy && *policy == Json("drop");
        const ListKey& list = *FindList(chain + ".rules");
        // With the families' policies apart the record says neither; the
        // policy line tells whether one of them drops.
        Json shown = m_state.value(list.field, Json::array());
        bool dropsNow = now == Json("drop") ||
                        (now.is_null() && shown.is_array() && !shown.empty() &&
                         shown[0].is_string() && ChainShowsDrop({shown[0].get<std::string>()}));
        // Rules may be cleared and rebuilt only while nothing is dropped.
        bool mayClear = !dropsNow && !dropping;
        if (!dropping)
            Scalar(policyKey);
        size_t rules = ListItem(list, mayClear);
        std::vector<size_t> needs;
        if (rules != kNone)
            needs.push_back(rules);
        if (dropping)
            Scalar(policyKey, needs);
    }

    size_t ListItem(const ListKey& k, bool mayClear);

    void PlanInterfaces() {
        const Json* ifs = At("interfaces");
        if (ifs == nullptr)
            return;
        std::map<std::string, nvagent::NetInterface> now;
        for (const Json& line : m_state.value("vsIfconfigList", Json::array())) {
            nvagent::NetInterface n;
            if (InterfaceFromLine(line.get<std::string>(), n))
                now[n.name] = n;
        }
        for (const auto& kv : ifs->items()) {
            const std::string& name = kv.key();
            const Json& spec = kv.value();
            auto found = now.find(name);
            const nvagent::NetInterface* n = found == now.end() ? nullptr : &found->second;
            std::vector<size_t> needs;
            bool dhcp = spec.value("mode", "") == "dhcp";
            if (dhcp || InterfaceWantsStatic(spec)) {
                Item it;
                it.path = {"interfaces", name, "mode"};
                it.before = n ? AddressDoc(*n) : Json();
                it.after = dhcp ? Json{{"mode", "dhcp"}}
                                : Json{{"mode", "static"},
                                       {"address", spec["address"]},
                                       {"netmask", spec["netmask"]}};
                if (it.before != it.after) {
                    if (dhcp)
                        it.steps.push_back({54, name});
                    else
                        it.steps.push_back({55, InterfaceManualPayload(name, spec)});
                }
                needs.push_back(Add(std::move(it)));
            }
            if (spec.contains("enabled")) {
                Item it;
                it.path = {"interfaces", name, "enabled"};
                it.before = n ? Json(n->up) : Json();
                it.after = spec["enabled"];
                if (it.before != it.after)
                    it.steps.push_back(
                        {static_cast<short>(it.after == Json(true) ? 53 : 52), name});
                if (it.after == Json(true))
                    it.needs = needs;
                Add(std::move(it));
            }
        }
    }

    static Json AddressDoc(const nvagent::NetInterface& n) {
        if (n.mode == nvagent::kModeDynamic)
            return Json{{"mode", "dhcp"}};
        return Json{{"mode", "static"}, {"address", n.ip}, {"netmask", n.mask}};
    }

    // A hash cannot be read back: the command is always sent, and the agent
    // answers that nothing changed when the hash is already the user's.
    void PlanUsers() {
        const Json* users = At("users");
        if (users == nullptr)
            return;
        for (const auto& kv : users->items()) {
            if (!kv.value().contains("password_hash"))
                continue;
            Item it;
            it.path = {"users", kv.key(), "password_hash"};
            it.before = "(hidden)";
            it.after = "(hidden)";
            it.steps.push_back(
                {kPasswordHashCmd,
                 PasswordHashPayload(kv.key(), kv.value()["password_hash"].get<std::string>())});
            Add(std::move(it));
        }
    }

    const Json& m_doc;
    Json m_state;
    const CanonLists* m_lists;
    std::vector<Item> m_items;
    std::set<std::string> m_done;
};

std::vector<std::string> Keys(const std::vector<Json>& v) {
    std::vector<std::string> out;
    out.reserve(v.size());
    for (const Json& j : v)
        out.push_back(j.dump());
    return out;
}

Json ExportList(const ListKey& k, const std::vector<Json>& v) {
    Json out = Json::array();
    for (const Json& e : v)
        out.push_back(ElementForExport(k, e));
    return out;
}

size_t Planner::ListItem(const ListKey& k, bool mayClear) {
    const Json* given = At(k.path);
    if (given == nullptr)
        return kNone;
    ListSpec spec = ReadListSpec(*given);
    std::vector<unsigned long> index;
    std::vector<Json> have = CurrentElements(k, m_state, &index);
    std::vector<Json> want;
    auto known = m_lists ? m_lists->find(k.path) : CanonLists::const_iterator();
    if (m_lists && known != m_lists->end())
        want = known->second;
    for (size_t i = want.size(); i < spec.items.size(); ++i) {
        const Json& e = spec.items[i];
        Json canon;
        std::string sub, why;
        bool keyOnly = spec.state == ListState::kAbsent && e.is_object() && e.size() == 1 &&
                       k.type != ListType::kRules;
        want.push_back(keyOnly ? e.begin().value()
                               : (ElementFromDoc(k, e, canon, sub, why), canon));
    }
    bool byKey = k.type == ListType::kVolumes || k.type == ListType::kBackups;
    std::vector<std::string> haveKeys = Keys(have);
    std::vector<std::string> haveIds;  // what an entry is known by
    for (const Json& h : have)
        haveIds.push_back(ElementKey(k, h).dump());

    std::vector<bool> drop(have.size(), false);
    std::vector<Json> tops, appends, result;
    if (spec.state == ListState::kExact) {
        KeptRun run = LongestKeptRun(have, want, k.setCmd != 0 || k.type != ListType::kRules);
        for (size_t i = 0; i < have.size(); ++i)
            drop[i] = !run.kept[i];
        for (size_t t = run.a; t-- > 0;)
            tops.push_back(want[t]);
        appends.assign(want.begin() + static_cast<long>(run.b), want.end());
        result = want;
    } else {
        std::set<std::string> wantKeys, wantIds;
        for (const Json& w : want) {
            wantKeys.insert(w.dump());
            wantIds.insert((byKey && w.is_object() ? ElementKey(k, w) : w).dump());
        }
        std::set<std::string> haveSet(haveKeys.begin(), haveKeys.end());
        for (size_t i = 0; i < have.size(); ++i) {
            if (spec.state == ListState::kAbsent)
                drop[i] = wantIds.count(byKey ? haveIds[i] : haveKeys[i]) != 0;
            else  // an entry known by the same key but with other values goes
                drop[i] = byKey && wantIds.count(haveIds[i]) && !wantKeys.count(haveKeys[i]);
        }
        for (size_t i = 0; i < have.size(); ++i) {
            if (!drop[i])
                result.push_back(have[i]);
        }
        if (spec.state == ListState::kPresent) {
            for (const Json& w : want) {
                if (!haveSet.count(w.dump())) {
                    appends.push_back(w);
                    result.push_back(w);
                }
            }
        }
    }

    Item it;
    it.path = Split(k.path);
    it.before = ExportList(k, have);
    it.after = ExportList(k, result);
    size_t drops = static_cast<size_t>(std::count(drop.begin(), drop.end(), true));
    if (k.setCmd != 0) {
        if (Keys(result) != haveKeys) {
            std::string payload;
            for (const Json& e : result)
                payload += e.get<std::string>() + "\n";
            it.steps.push_back({k.setCmd, payload});
        }
        return Add(std::move(it));
    }
    bool clear = drops == have.size() && have.size() > 1 && (mayClear || result.empty());
    if (clear) {
        it.steps.push_back({k.clearCmd, ""});
        tops.clear();
        appends = result;
    }
    bool rules = k.type == ListType::kRules;
    auto deletes = [&](size_t shift) {
        if (clear)
            return;
        for (size_t i = have.size(); i-- > 0;) {
            if (drop[i])
                it.steps.push_back({k.delCmd, std::to_string(index[i] + shift)});
        }
    };
    // Rules: new ones first, old ones after, so that the chain never lacks
    // an accept rule the document keeps; other lists free a key first.
    if (!rules)
        deletes(0);
    for (const Json& e : tops)
        it.steps.push_back({k.addCmd, AddPayload(k, e, true)});
    for (const Json& e : appends)
        it.steps.push_back({k.addCmd, AddPayload(k, e, false)});
    if (rules)
        deletes(tops.size());
    return Add(std::move(it));
}

}  // namespace

KeptRun LongestKeptRun(const std::vector<Json>& have, const std::vector<Json>& want,
                       bool fromStart) {
    std::vector<std::string> h = Keys(have), w = Keys(want);
    KeptRun best;
    size_t bestLen = 0;
    for (size_t a = 0; a < w.size(); ++a) {
        if (w.size() - a <= bestLen || (fromStart && a > 0))
            break;
        size_t j = 0, t = a;
        while (t < w.size()) {
            while (j < h.size() && h[j] != w[t])
                ++j;
            if (j == h.size())
                break;
            ++j;
            ++t;
        }
        if (t - a > bestLen) {
            bestLen = t - a;
            best.a = a;
            best.b = t;
        }
    }
    best.kept.assign(h.size(), false);
    size_t j = 0;
    for (size_t t = best.a; t < best.b; ++t) {
        while (h[j] != w[t])
            ++j;
        best.kept[j++] = true;
    }
    return best;
}

std::vector<Item> MakePlan(const Json& doc, const Json& state, const CanonLists* lists) {
    return Planner(doc, state, lists).Run();
}

}  // namespace nvsettings
