// The page builders: one per menu leaf, each turning the agent's state into
// a content page and handing it to the content view.
#ifndef NV_PAGES_MENU_STRUCT_H
#define NV_PAGES_MENU_STRUCT_H

#include "content/content_data.h"

int UI_TcpPortState(void* arg);

#endif
