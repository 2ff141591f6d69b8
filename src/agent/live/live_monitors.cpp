// The live agent's side of the monitors: its settings translated for the
// supervisor, and the display lines completed with what is measured now.
#include "agent/live/live_monitors.h"

#include <algorithm>

#include "agent/display_lines.h"
#include "agent/monitors/conf_settings.h"
#include "agent/monitors/trusted_path.h"

namespace nvagent {

bool IsMonitorCommand(short cmd) {
    return cmd >= 13 && cmd <= 31;
}

LiveMonitors::LiveMonitors(std::string dataDir, int intervalMs)
    : m_dataDir(std::move(dataDir)), m_intervalMs(intervalMs) {}

bool LiveMonitors::SwitchOffEmptyLists(cConf_Inf& conf) const {
    nvmonit::MonitorSettings s = nvmonit::SettingsFromConf(conf, m_dataDir, m_intervalMs);
    if (!nvmonit::SwitchOffEmptyLists(s))
        return false;
    nvmonit::StoreSwitches(s, conf);
    return true;
}

namespace {

// Why the paths of req are refused, or empty; made on a probe's thread.
std::string PathProblem(const Request& req, const std::string& dataDir) {
    std::vector<std::pair<std::string, std::string>> paths;  // what, path
    const BackupAddRequest* backup = std::get_if<BackupAddRequest>(&req);
    if (const ListRequest* l = std::get_if<ListRequest>(&req); l && l->cmd == 13) {
        for (const std::string& e : l->entries)
            paths.push_back({"The monitored path", e});
    } else if (const VolumeAddRequest* v = std::get_if<VolumeAddRequest>(&req)) {
        paths.push_back({"The partition", v->partition});
    } else if (backup != nullptr) {
        paths.push_back({"The file", backup->file});
        paths.push_back({"The backup directory", backup->dir});
    }
    std::string data = nvmonit::NormalPath(dataDir);
    std::string dataResolved = nvmonit::ResolvedPath(dataDir);
    nvmonit::PathResolver resolver;
    for (const auto& [what, path] : paths) {
        std::string normal = nvmonit::NormalPath(path);
        if (nvmonit::IsAtOrUnderNormal(normal, data) ||
            nvmonit::IsAtOrUnderNormal(resolver.Resolve(normal), dataResolved)) {
            return what + " " + path + " lies in the agent's data directory " + data +
                   " (its settings and reports).";
        }
    }
    if (backup == nullptr)
        return "";
    for (bool isDir : {false, true}) {
        const std::string& path = isDir ? backup->dir : backup->file;
        std::string why = nvmonit::UntrustedPathReason(path, isDir);
        if (!why.empty()) {
            return std::string(isDir ? "The backup directory " : "The file ") + path +
                   " is refused: " + why + ".";
        }
    }
    return "";
}

}  // namespace

bool LiveMonitors::PathsRefused(const Request& req, CmdResult& r) {
    const ListRequest* list = std::get_if<ListRequest>(&req);
    if (!(list != nullptr && list->cmd == 13) && !std::holds_alternative<VolumeAddRequest>(req) &&
        !std::holds_alternative<BackupAddRequest>(req)) {
        return false;
    }
    // Keyed by the request, so that a hung check answers only its own.
    std::string key;
    std::visit(
        [&key](const auto& q) {
            using Q = std::decay_t<decltype(q)>;
            if constexpr (std::is_same_v<Q, ListRequest>) {
                key = "list " + std::to_string(q.cmd);
                for (const std::string& e : q.entries)
                    key += "\n" + e;
            } else if constexpr (std::is_same_v<Q, VolumeAddRequest>) {
                key = "volume\n" + q.partition;
            } else if constexpr (std::is_same_v<Q, BackupAddRequest>) {
                key = "backup\n" + q.file + "\n" + q.dir;
            }
        },
        req);
    std::string dataDir = m_dataDir;
    // A long list takes longer: a few microseconds an entry, allowed 20.
    size_t entries = static_cast<size_t>(std::count(key.begin(), key.end(), '\n'));
    auto timeout = 2 * nvmonit::kProbeAnswerTime + std::chrono::milliseconds(entries / 50);
    std::optional<std::string> why = m_pathChecks.Run(
        key, [req, dataDir] { return PathProblem(req, dataDir); }, timeout);
    if (!why) {
        r = Invalid("The paths could not be checked: their file system does not answer.");
        return true;
    }
    if (why->empty())
        return false;
    r = Invalid(*why);
    return true;
}

void LiveMonitors::Apply(const cConf_Inf& conf) {
    m_supervisor.Apply(nvmonit::SettingsFromConf(conf, m_dataDir, m_intervalMs));
}

void LiveMonitors::ShowCurrentUse(cConf_Inf& conf) const {
    conf.vsDV = VolumeLines(conf.vDV);
    std::vector<nvmonit::VolumeUsage> uses;
    std::vector<long long> sizes;
    m_supervisor.CurrentUse(uses, sizes);
    for (size_t i = 0; i < conf.vsDV.size() && i < uses.size(); ++i)
        conf.vsDV[i] += nvmonit::VolumeUseText(uses[i]);
    conf.vsBakForSize = BackupLines(conf.vBakForSize);
    for (size_t i = 0; i < conf.vsBakForSize.size() && i < sizes.size(); ++i)
        conf.vsBakForSize[i] += nvmonit::BackupSizeText(sizes[i]);
}

}  // namespace nvagent
