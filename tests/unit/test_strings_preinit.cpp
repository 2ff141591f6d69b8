// What the text catalogue offers before InitComStr has run: the service
// link's connect-error text, the constant arrays and the index tables.
#include <gtest/gtest.h>

#include "strings/com_str.h"

namespace {

TEST(StringsBeforeInit, ConnectErrorTextIsReady) {
    EXPECT_STREQ(pcStrConnectError[LAN_ENGLISH], "Error:connect failed!");
    EXPECT_STREQ(pcStrConnectError[LAN_CHINESE_GB2312],
                 "\xb4\xed\xce\xf3:\xc1\xac\xbd\xd3\xca\xa7\xb0\xdc!");
    EXPECT_STREQ(pcStrConnectError[LAN_CHINESE_UTF8], "错误:连接失败!");
}

TEST(StringsBeforeInit, ConstantArraysAndIndexTablesAreReady) {
    EXPECT_STREQ(pcStrMainMenu[LAN_ENGLISH], "main menu");
    EXPECT_STREQ(pcStrNullInfo[LAN_CHINESE_UTF8], "    ");
    EXPECT_EQ(pcStrPrompt[PROMPT_MENU], pcStrPromptMenu);
    EXPECT_EQ(pcStrHelp[EN_SYS_STATE_CONF], pcStrHelpSysStateConfig);
    EXPECT_EQ(iLanIdx, LAN_MAX);
}

TEST(StringsBeforeInit, OtherTextsComeWithInitComStr) {
    EXPECT_EQ(pcStrExitEnquiry[LAN_ENGLISH], nullptr);
    InitComStr();
    EXPECT_STREQ(pcStrExitEnquiry[LAN_ENGLISH], "Are you sure to exit?");
    EXPECT_STREQ(pcStrConnectError[LAN_ENGLISH], "Error:connect failed!");
}

}  // namespace
