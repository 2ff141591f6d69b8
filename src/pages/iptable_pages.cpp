// The firewall chain pages: the agent's rule lines as they come, and on F2
// to F5 the add-rule, delete, clear and policy forms. One builder with a
// table per chain.
#include "content/content_view.h"
#include "link/cmd_catalogue.h"
#include "link/global_val.h"
#include "pages/form_build.h"
#include "pages/menu_struct.h"
#include "pages/page_rows.h"
#include "shell/nv_log.h"
#include "strings/com_str.h"
#include "strings/help_id.h"
#include "strings/prompt_id.h"

namespace {

#define NV_CHOICE(label, first, second) \
    { label, EN_CHOOSE_CONTROL, 0, first, 0, 0, first, second, nullptr }
#define NV_INPUT(label, initial, width) \
    { label, EN_INPUT_CONTROL, width, initial, 1, 0, nullptr, nullptr, nullptr }

// The destination address is two columns narrower than the source, and the
// action offers no reject; both as established.
const ST_FORM_ROW g_astAddRuleForm[] = {NV_CHOICE(pcStrPriority, pcStrHighest, pcStrLowest),
                                        NV_CHOICE(pcStrProtocol, pcStrTcp, pcStrUdp),
                                        NV_INPUT(pcStrSrcIp, pcStrDefaultIP, 20),
                                        NV_INPUT(pcStrSrcPort, pcStrDefaultPort, 5),
                                        NV_INPUT(pcStrDesIp, pcStrDefaultIP, 18),
                                        NV_INPUT(pcStrDesPort, pcStrDefaultPort, 5),
                                        NV_CHOICE(pcStrAction, pcStrAccept, pcStrDrop)};
const ST_FORM_ROW g_stPolicyRow = NV_CHOICE(pcStrModifyPolicy, pcStrAccept, pcStrDrop);

// What sets one chain page apart from the other.
struct ST_CHAIN_PAGE {
    tVecStr cSvrState::*pvsLines;
    char cSvrState::*pchPolicy;
    int iHelp;
    const char** pcClearQuestion;
    UPDATE_FUNC apfnSender[4];  // add, delete, clear, policy
    const char* pcCountLog;
};

const ST_CHAIN_PAGE g_stInputChain = {
    &cSvrState::vsIptablesInputList,
    &cSvrState::chIptablesInputPolicy,
    EN_IPTABLE_INPUT,
    pcStrInputClearInfo,
    {InputAddUpdateFunc, InputDeleteUpdateFunc, InputClearUpdateFunc, InputPolicyUpdateFunc},
    "Iptables input list:%d"};

const ST_CHAIN_PAGE g_stOutputChain = {
    &cSvrState::vsIptablesOutputList,
    &cSvrState::chIptablesOutputPolicy,
    EN_IPTABLE_OUTPUT,
    pcStrOutputClearInfo,
    {OutputAddUpdateFunc, OutputDeleteUpdateFunc, OutputClearUpdateFunc, OutputPolicyUpdateFunc},
    "Iptables output list:%d"};

// The policy shows the state's flag; any other flag shows four blanks,
// which are sent as "-".
std::string PolicyInitial(char chFlag) {
    if (chFlag == '1')
        return pcStrAccept[iLanIdx];
    if (chFlag == '2')
        return pcStrDrop[iLanIdx];
    return pcStrNullInfo[iLanIdx];
}

int ChainPage(const ST_CHAIN_PAGE& m) {
    int iRet;
    if (!LoadState(iRet))
        return iRet;
    const cSvrState& c = pg_Obj->objSS;
    const tVecStr& vsLines = c.*m.pvsLines;
    NV_DBG(m.pcCountLog, static_cast<int>(vsLines.size()));
    for (size_t i = 0; i < vsLines.size(); ++i)
        NV_DBG("(%d)%s", static_cast<int>(i), vsLines[i].c_str());
    CONTENT_DATA* p = ListPage(vsLines, PROMPT_SCKEY_POLICY, m.iHelp);
    AddFormKey(p, MAP_KEY_F2, m.apfnSender[0], UI_IpTableAddRule());
    AddFormKey(p, MAP_KEY_F3, m.apfnSender[1], DeleteForm(m.iHelp));
    AddFormKey(p, MAP_KEY_F4, m.apfnSender[2], ClearForm(m.pcClearQuestion, m.iHelp));
    std::string sPolicy = PolicyInitial(c.*m.pchPolicy);
    AddFormKey(p, MAP_KEY_F5, m.apfnSender[3], BuildForm(&g_stPolicyRow, 1, m.iHelp, &sPolicy));
    NV_DBG("Policy ok!");
    return ShowPage(p);
}

}  // namespace

CONTENT_DATA* UI_IpTableAddRule() {
    return BuildForm(g_astAddRuleForm, 7, EN_IPTABLE_INPUT);
}

int UI_IpTableInput(void* arg) {
    (void)arg;
    return ChainPage(g_stInputChain);
}

int UI_IpTableOutput(void* arg) {
    (void)arg;
    return ChainPage(g_stOutputChain);
}
