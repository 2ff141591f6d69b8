// Carrying out an apply plan and reporting it: each item unchanged, changed
// (before and after), failed with the agent's answer, or not attempted
// because an item it needs failed; as text, with differences, or as JSON.
#ifndef NV_TOOLS_NVCMD_SETTINGS_APPLY_H
#define NV_TOOLS_NVCMD_SETTINGS_APPLY_H

#include <functional>
#include <string>
#include <vector>

#include "settings_plan.h"

namespace nvsettings {

// Sends one set command; returns the agent's result code and its detail.
using SendFn = std::function<int(short cmd, const std::string& payload, std::string& detail)>;

// Sends the plan's commands in order (none in check mode) and fills each
// item's status.
void CarryOut(std::vector<Item>& plan, bool check, const SendFn& send);

// 0 nothing changed, 2 something changed (or would), 1 an item failed.
enum { kApplyUnchanged = 0, kApplyFailed = 1, kApplyChanged = 2 };
int ApplyStatus(const std::vector<Item>& plan);

// One line per item that changed, failed or was not attempted, and a
// summary; with diff each change shows its before and after.
std::string ReportText(const std::vector<Item>& plan, bool check, bool diff);
// The machine-readable result: changed, failed, every item with its
// commands and answers, and the changes as before and after documents.
Json ReportJson(const std::vector<Item>& plan, bool check);

}  // namespace nvsettings

#endif
