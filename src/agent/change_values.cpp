// The fields each command changes, and the old and new values of those that
// a change really altered, as the journal records them.
#include "agent/change_values.h"

#include <map>

#include "agent/state_json.h"

namespace nvagent {

namespace {

struct ChangedRow {
    short first;
    short last;
    std::vector<const char*> fields;
};

// A list's monitor switch is listed with it: emptying a list turns its
// monitor off in the same change.
// clang-format off
const ChangedRow kRows[] = {
    {2, 2, {"chLangCode"}},
    {4, 4, {"chIcmpEchoIgnoreAll"}}, {5, 5, {"chTcpSyncookies"}}, {6, 6, {"chTcpTwReuse"}},
    {7, 7, {"ulShmMax"}}, {8, 8, {"ulShmAll"}}, {9, 9, {"ulShmMni"}},
    {10, 10, {"ulThreadMax"}}, {11, 11, {"ulFileMax"}},
    {13, 13, {"vFileMonitList", "chFileMonitFlag"}}, {14, 14, {"chFileMonitFlag"}},
    {15, 15, {"vProcessMonitList", "chProcessMonitFlag"}}, {16, 16, {"chProcessMonitFlag"}},
    {17, 17, {"shCpuCeil"}}, {18, 18, {"shCpuFloor"}}, {19, 19, {"chCpuMonitFlag"}},
    {20, 20, {"iMemCeil"}}, {21, 21, {"chMemMonitFlag"}},
    {23, 25, {"vsDV", "chDVMonitFlag"}}, {26, 26, {"chDVMonitFlag"}},
    {28, 30, {"vsBakForSize", "chBakForSizeFlag"}}, {31, 31, {"chBakForSizeFlag"}},
    {32, 32, {"chIptablesInputPolicy"}}, {33, 35, {"vsIptablesInputList"}},
    {36, 36, {"chIptablesOutputPolicy"}}, {37, 39, {"vsIptablesOutputList"}},
    {40, 40, {"chVsftpdAnonEnable"}}, {41, 41, {"chVsftpdAnonUpload"}},
    {42, 42, {"chVsftpdAnonMkdir"}}, {43, 43, {"sVsftpdAnonRoot"}},
    {44, 44, {"chVsftpdLocalEnable"}}, {45, 45, {"chVsftpdWrite"}}, {46, 46, {"chVsftpdRunFlag"}},
    {47, 47, {"chVsftpdAnonEnable", "chVsftpdAnonUpload", "chVsftpdAnonMkdir", "sVsftpdAnonRoot",
              "chVsftpdLocalEnable", "chVsftpdWrite", "chVsftpdRunFlag"}},
    {48, 48, {"sSambaSharePath"}}, {49, 49, {"chSambaShareWrite"}}, {50, 50, {"chSambaRunFlag"}},
    {51, 51, {"sSambaSharePath", "chSambaShareWrite", "chSambaRunFlag"}},
    {52, 55, {"vsIfconfigList"}},
    {57, 57, {"sHostname"}}, {58, 58, {"sNowDate"}}, {59, 59, {"sNowTime"}},
};
// clang-format on

// Lines are compared by their words: columns are padded to the widest
// entry, so one added line can widen every other. Lists whose lines start
// with an index column are compared without it, so that the lines after an
// inserted or deleted one, renumbered but otherwise the same, are not taken
// for changes.
const char* const kIndexedLists[] = {"vsDV", "vsBakForSize", "vsIptablesInputList",
                                     "vsIptablesOutputList", "vsIfconfigList"};

bool IsIndexed(const std::string& field) {
    for (const char* f : kIndexedLists) {
        if (field == f)
            return true;
    }
    return false;
}

std::string Comparable(const Json& line, bool indexed) {
    std::string s = line.is_string() ? line.get<std::string>() : line.dump();
    std::string words;
    size_t at = 0;
    bool first = true;
    while ((at = s.find_first_not_of(" \t", at)) != std::string::npos) {
        size_t end = s.find_first_of(" \t", at);
        if (end == std::string::npos)
            end = s.size();
        if (!(first && indexed))
            words.append(s, at, end - at).push_back(' ');
        first = false;
        at = end;
    }
    return words;
}

Json Slice(const Json& list, size_t from, size_t to) {
    Json out = Json::array();
    size_t shown = to - from > kChangedEntriesMax ? kChangedEntriesMax - 1 : to - from;
    for (size_t i = from; i < from + shown; ++i)
        out.push_back(list[i]);
    if (from + shown < to)
        out.push_back("(" + std::to_string(to - from - shown) + " more)");
    return out;
}

// The entries between the common head and the common tail of the two lists;
// false when the lists hold the same entries.
bool ListChange(const Json& a, const Json& b, bool indexed, Json& removed, Json& added) {
    std::vector<std::string> ka, kb;
    for (const Json& e : a)
        ka.push_back(Comparable(e, indexed));
    for (const Json& e : b)
        kb.push_back(Comparable(e, indexed));
    size_t head = 0;
    while (head < ka.size() && head < kb.size() && ka[head] == kb[head])
        ++head;
    size_t tail = 0;
    while (tail < ka.size() - head && tail < kb.size() - head &&
           ka[ka.size() - 1 - tail] == kb[kb.size() - 1 - tail])
        ++tail;
    if (head + tail == ka.size() && head + tail == kb.size())
        return false;
    removed = Slice(a, head, a.size() - tail);
    added = Slice(b, head, b.size() - tail);
    return true;
}

std::string Text(const Json& j) {
    return j.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

const std::vector<const char*>& ChangedFields(short cmd) {
    static const std::vector<const char*> kNone;
    for (const ChangedRow& row : kRows) {
        if (cmd >= row.first && cmd <= row.last)
            return row.fields;
    }
    return kNone;
}

void RecordChange(short cmd, const cConf_Inf& c0, const cSvrState& s0, const cConf_Inf& c1,
                  const cSvrState& s1, CmdResult& r) {
    r.sOldValues.clear();
    r.sNewValues.clear();
    const std::vector<const char*>& fields = ChangedFields(cmd);
    if (fields.empty())
        return;
    Json before = FieldsToJson(c0, s0, fields);
    Json after = FieldsToJson(c1, s1, fields);
    Json oldValues = Json::object();
    Json newValues = Json::object();
    for (const char* f : fields) {
        const Json& a = before[f];
        const Json& b = after[f];
        if (a.is_array() && b.is_array()) {
            Json removed, added;
            if (ListChange(a, b, IsIndexed(f), removed, added)) {
                oldValues[f] = std::move(removed);
                newValues[f] = std::move(added);
            }
        } else if (a != b) {
            oldValues[f] = a;
            newValues[f] = b;
        }
    }
    if (oldValues.empty())
        return;
    r.sOldValues = Text(oldValues);
    r.sNewValues = Text(newValues);
}

}  // namespace nvagent
