// The prompt identifiers: which key help the prompt line shows. The text of
// prompt id is pcStrPrompt[id][iLanIdx] (com_str.h).
#ifndef NV_STRINGS_PROMPT_ID_H
#define NV_STRINGS_PROMPT_ID_H

enum EN_PROMPT {
    PROMPT_MENU = 0,
    PROMPT_CONTENT = 1,
    PROMPT_CONTENT_NO_MODIFY = 2,
    PROMPT_CONTENT_LIST = 3,
    PROMPT_CONTENT_NEW_LEVEL = 4,
    PROMPT_INPUT = 5,
    PROMPT_CHOOSE = 6,
    PROMPT_LIST = 7,
    PROMPT_SCKEY_TOGGLE = 8,
    PROMPT_SCKEY_POLICY = 9,
    PROMPT_HELP = 10,
    PROMPT_NET_INTERFACE = 11,
    PROMPT_SYS_STATE_CONFIG = 12,
    // No text: the prompt line holds this before the first prompt is drawn.
    PROMPT_MAX = 13
};

#endif
