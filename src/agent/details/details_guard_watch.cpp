// The watch's texts: the notice of a change undone because it cut the
// console's session, and the refusal while another session's change is
// being watched.
#include "agent/details/details_guard_watch.h"

namespace nvagent {

namespace {

const DetailRow kRows[] = {
    {"Undone: the change at {} cut your SSH session.", nullptr,
     "已撤销：{1} 的更改切断了您的 SSH 会话。"},
    {"Undone: {} changes from {} on cut your SSH session.", nullptr,
     "已撤销：{2} 起的 {1} 项更改切断了您的 SSH 会话。"},
    {"A change made over an SSH session is being watched; try again in {} s.", nullptr,
     "正在观察经 SSH 会话所做的更改；请 {1} 秒后重试。"},
    {"Could not keep the change pending in {}: {}; the change was undone.",
     "Cannot keep change pending in {1}: {2}; undone.", "无法在 {1} 暂存待确认更改：{2}；已撤销。"},
};

}  // namespace

const DetailTable kDetailsGuardWatch = {kRows, sizeof kRows / sizeof kRows[0]};

}  // namespace nvagent
