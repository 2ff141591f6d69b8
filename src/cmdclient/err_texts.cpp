// Descriptions of the result codes. Each is a sentence ending in a period and
// a blank, because the agent's detail text is shown directly behind it.
#include "cmdclient/cmd_client.h"
#include "link/result_codes.h"

namespace {

struct ST_ERR_TEXT {
    int iCode;
    const char* pcText;
};

const ST_ERR_TEXT g_astErrText[] = {
    {em_Start, "Internal error in the command client. "},
    {em_AddCharBuffNotEnough, "The request does not fit its buffer. "},
    {em_AddShortBuffNotEnough, "The request does not fit its buffer. "},
    {em_AddIntBuffNotEnough, "The request does not fit its buffer. "},
    {em_AddStrBuffNotEnough, "The request text does not fit its buffer. "},
    {em_GetCharReadBuffNotEnough, "The agent's answer is cut short. "},
    {em_GetShortReadBuffNotEnough, "The agent's answer is cut short. "},
    {em_GetIntReadBuffNotEnough, "The agent's answer is cut short. "},
    {em_GetStrReadBuffNotEnough, "The agent's answer is cut short in a text field. "},
    {em_GetStrWriteBuffNotEnough, "The agent's answer holds a text too long for its field. "},
    {em_GetDiskInfoSscanfError, "The agent could not read the disk information. "},
    {em_GetMemUseError, "The agent could not read the memory use. "},
    {em_GetMemFreeError, "The agent could not read the free memory. "},
    {em_GetShmMaxError, "The agent could not read the shared memory maximum. "},
    {em_GetShmAllError, "The agent could not read the shared memory total. "},
    {em_GetStrFromResPkgStrEndOutOfRange, "The agent's answer holds a text out of range. "},
    {em_GetVecStrFromReqPkgReadBuffNotEnough, "The request's list is cut short. "},
    {em_GetVecStrFromReqPkgStrlenNotMatch, "The request's list has a wrong length. "},
    {em_ParsePkgPkglenNotMatch, "The packet length does not match its content. "},
    {em_ParsePkgCmdNoOutOfRange, "The command number is not known. "},
    {em_ParsePkgActFunRetError, "The agent's action failed. "},
    {em_ComSendReqPkgRecvFinUnexpect,
     "The agent closed the connection before its answer was complete. "},
    {em_ComSendReqPkgLenNotMatch, "The request could not be sent in full. "},
    {em_IptalbesReadError, "The firewall rules could not be read. "},
    {em_FileNotExist, "The file does not exist. "},
    {em_Error, "The request failed. "},
    {em_OK, "OK. "},
    {em_ActPostCmdBuffFmtError, "The value is malformed. "},
    {em_ActPostValueNotValid, "The value is not valid. "},
    {em_ActSuccPart, "The command was carried out in part. "},
    {em_ActFail, "The command failed. "},
    {em_ActNotPrepare, "The agent is not ready for this command. "},
    {em_ActNeedNoSet, "Nothing to change. "},
    {em_ActSuccAll, "Done. "},
    {em_ItemSet, "The item is set. "},
    {em_ItemNoSet, "The item is not set. "},
    {em_ItemUnknown, "The item is unknown. "},
    {em_CmdTooLong, "The command is too long. "},
};

}  // namespace

int SetErrMap(cGlobalVal* pObj) {
    for (const ST_ERR_TEXT& e : g_astErrText)
        pObj->mErrorNo2Des[e.iCode] = e.pcText;
    return em_OK;
}
