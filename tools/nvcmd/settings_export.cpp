// The export: a check answer as a settings document, grouped by domain,
// holding only what apply can set again and never a password.
#include <arpa/inet.h>

#include "settings_doc.h"
#include "settings_lines.h"

namespace nvsettings {

namespace {

// Puts v at a dotted path, making the groups on the way in first-use order.
void SetAt(Json& doc, const std::string& dotted, const Json& v) {
    Json* at = &doc;
    size_t from = 0;
    for (;;) {
        size_t dot = dotted.find('.', from);
        std::string key = dotted.substr(from, dot == std::string::npos ? dot : dot - from);
        if (dot == std::string::npos) {
            (*at)[key] = v;
            return;
        }
        if (!at->contains(key))
            (*at)[key] = Json::object();
        at = &(*at)[key];
        from = dot + 1;
    }
}

// The agent never sets an address on the loopback network, so the loopback's
// own address is left out: apply could not send it again.
bool OnLoopback(const std::string& ip) {
    in_addr a{};
    return inet_pton(AF_INET, ip.c_str(), &a) == 1 && ntohl(a.s_addr) >> 24 == 127;
}

Json InterfaceDoc(const nvagent::NetInterface& n) {
    Json j = Json::object();
    j["enabled"] = n.up;
    if (n.mode == nvagent::kModeDynamic) {
        j["mode"] = "dhcp";
    } else if (!n.ip.empty() && !n.mask.empty() && !OnLoopback(n.ip)) {
        j["mode"] = "static";
        j["address"] = n.ip;
        j["netmask"] = n.mask;
    }
    return j;
}

}  // namespace

Json ExportSettings(const Json& state) {
    Json doc = Json::object();
    for (const ScalarKey& k : ScalarKeys()) {
        Json v = ScalarFromState(k, state);
        if (!v.is_null())
            SetAt(doc, k.path, v);
        // Each list follows the switch of its monitor or the policy of its chain.
        for (const ListKey& l : ListKeys()) {
            std::string group(l.path, std::string(l.path).rfind('.'));
            std::string own = std::string(k.path).substr(std::string(k.path).rfind('.') + 1);
            if (std::string(k.path).rfind(group + ".", 0) == 0 &&
                (own == "enabled" || own == "policy")) {
                Json items = Json::array();
                for (const Json& e : CurrentElements(l, state, nullptr))
                    items.push_back(ElementForExport(l, e));
                SetAt(doc, l.path, items);
            }
        }
    }
    Json ifs = Json::object();
    if (state.contains("vsIfconfigList")) {
        for (const Json& line : state["vsIfconfigList"]) {
            nvagent::NetInterface n;
            if (InterfaceFromLine(line.get<std::string>(), n))
                ifs[n.name] = InterfaceDoc(n);
        }
    }
    if (!ifs.empty())
        doc["interfaces"] = ifs;
    return doc;
}

}  // namespace nvsettings
