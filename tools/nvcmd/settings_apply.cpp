// Sending an apply plan and writing its report.
#include "settings_apply.h"

#include <set>

#include "link/result_codes.h"
#include "settings_yaml.h"

namespace nvsettings {

namespace {

const char* StatusWord(ItemStatus s) {
    switch (s) {
        case ItemStatus::kChanged:
            return "changed";
        case ItemStatus::kFailed:
            return "failed";
        case ItemStatus::kSkipped:
            return "skipped";
        default:
            return "unchanged";
    }
}

bool Failed(ItemStatus s) {
    return s == ItemStatus::kFailed || s == ItemStatus::kSkipped;
}

// A value on one line: scalars as YAML writes them, lists and mappings flow.
std::string OneLine(const Json& v) {
    if (v.is_null())
        return "(none)";
    if (v.is_object() && !v.empty()) {
        std::string y = WriteYaml(Json::array({v}));
        return y.substr(2, y.size() - 3);
    }
    std::string y = WriteYaml(Json{{"v", v}});
    return y.substr(3, y.size() - 4);
}

void ListDiff(const Json& before, const Json& after, std::string& out) {
    std::set<std::string> b, a;
    for (const Json& e : before)
        b.insert(e.dump());
    for (const Json& e : after)
        a.insert(e.dump());
    bool any = false;
    for (const Json& e : before) {
        if (!a.count(e.dump())) {
            out += "    - " + OneLine(e) + "\n";
            any = true;
        }
    }
    for (const Json& e : after) {
        if (!b.count(e.dump())) {
            out += "    + " + OneLine(e) + "\n";
            any = true;
        }
    }
    if (!any) {
        out += "    new order:\n";
        for (const Json& e : after)
            out += "      " + OneLine(e) + "\n";
    }
}

void SetAtPath(Json& doc, const Path& p, const Json& v) {
    Json* at = &doc;
    for (size_t i = 0; i + 1 < p.size(); ++i) {
        if (!at->contains(p[i]))
            (*at)[p[i]] = Json::object();
        at = &(*at)[p[i]];
    }
    (*at)[p.back()] = v;
}

}  // namespace

void CarryOut(std::vector<Item>& plan, bool check, const SendFn& send) {
    for (size_t i = 0; i < plan.size(); ++i) {
        Item& it = plan[i];
        it.status = it.steps.empty() ? ItemStatus::kUnchanged : ItemStatus::kChanged;
        for (size_t need : it.needs) {
            if (Failed(plan[need].status) && !it.steps.empty()) {
                it.status = ItemStatus::kSkipped;
                it.detail = "Not attempted: " + PathText(plan[need].path) + " failed.";
            }
        }
        if (check || it.status != ItemStatus::kChanged)
            continue;
        bool changed = false;
        for (const Step& s : it.steps) {
            std::string detail;
            int r = send(s.cmd, s.payload, detail);
            it.result = r;
            if (r == em_ActSuccAll) {
                changed = true;
            } else if (r != em_ActNeedNoSet) {
                it.status = ItemStatus::kFailed;
                it.detail = detail;
                break;
            }
        }
        if (it.status == ItemStatus::kChanged && !changed)
            it.status = ItemStatus::kUnchanged;
    }
}

int ApplyStatus(const std::vector<Item>& plan) {
    int status = kApplyUnchanged;
    for (const Item& it : plan) {
        if (Failed(it.status))
            return kApplyFailed;
        if (it.status == ItemStatus::kChanged)
            status = kApplyChanged;
    }
    return status;
}

std::string ReportText(const std::vector<Item>& plan, bool check, bool diff) {
    std::string out;
    size_t counts[4] = {0, 0, 0, 0};
    for (const Item& it : plan) {
        ++counts[static_cast<int>(it.status)];
        if (it.status == ItemStatus::kUnchanged)
            continue;
        std::string word = StatusWord(it.status);
        out += word + std::string(10 - word.size(), ' ') + PathText(it.path);
        if (Failed(it.status)) {
            out += ": " + it.detail + "\n";
            continue;
        }
        bool lists = it.before.is_array() || it.after.is_array();
        if (diff && !lists)
            out += ": " + OneLine(it.before) + " -> " + OneLine(it.after);
        out += "\n";
        if (diff && lists)
            ListDiff(it.before.is_array() ? it.before : Json::array(), it.after, out);
    }
    out += std::string(check ? "check (nothing sent): " : "") + std::to_string(counts[1]) +
           (check ? " to change, " : " changed, ") + std::to_string(counts[0]) + " unchanged, " +
           std::to_string(counts[2] + counts[3]) + " failed\n";
    return out;
}

Json ReportJson(const std::vector<Item>& plan, bool check) {
    Json items = Json::array();
    Json before = Json::object(), after = Json::object();
    bool password = false;
    for (const Item& it : plan) {
        Json j = Json::object();
        j["path"] = PathText(it.path);
        j["status"] = StatusWord(it.status);
        j["before"] = it.before;
        j["after"] = it.after;
        Json commands = Json::array();
        for (const Step& s : it.steps) {
            password = s.cmd == kPasswordHashCmd;
            commands.push_back(
                Json{{"cmd", s.cmd}, {"payload", password ? "(hidden)" : s.payload}});
        }
        j["commands"] = commands;
        if (!it.detail.empty())
            j["detail"] = it.detail;
        if (it.status == ItemStatus::kFailed)
            j["result"] = it.result;
        items.push_back(j);
        if (it.status != ItemStatus::kUnchanged) {
            SetAtPath(before, it.path, it.before);
            SetAtPath(after, it.path, it.after);
        }
    }
    int status = ApplyStatus(plan);
    Json r = Json::object();
    r["changed"] = status == kApplyChanged ||
                   std::any_of(plan.begin(), plan.end(),
                               [](const Item& i) { return i.status == ItemStatus::kChanged; });
    r["failed"] = status == kApplyFailed;
    r["check"] = check;
    r["items"] = items;
    r["diff"] = Json{{"before", before}, {"after", after}};
    return r;
}

}  // namespace nvsettings
