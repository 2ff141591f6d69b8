// The content view: the page shown in the content window and its keys.
#ifndef NV_CONTENT_CONTENT_VIEW_H
#define NV_CONTENT_CONTENT_VIEW_H

// The content page's key function.
void ContentKeyFunc(int iKey);

#endif
