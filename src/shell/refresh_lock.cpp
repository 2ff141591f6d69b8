// The refresh lock, held around every key function call and every refresh,
// and the refresh thread that rebuilds a live page about every two seconds
// while the page has the keyboard.
#include <sys/syscall.h>
#include <unistd.h>

#include <ctime>

#include "content/content_view.h"
#include "link/result_codes.h"
#include "shell/nv_log.h"
#include "shell/start_up.h"

pthread_mutex_t f_refresh_lock = PTHREAD_MUTEX_INITIALIZER;

// A page is refreshed when it was entered this many seconds ago or more.
static const time_t REFRESH_AFTER_S = 2;

int RefreshOnce() {
    int iDone = 0;
    pthread_mutex_lock(&f_refresh_lock);
    const CONTENT_DRAW_INFO& d = sg_ContentInfo;
    if (d.pWin != NULL && d.pstContent != NULL && d.iCursorInContentWinFlag == 1 &&
        d.pstContent->pfnRefreshCallFunc != NULL &&
        time(NULL) >= d.iRefreshTime + REFRESH_AFTER_S) {
        d.pstContent->pfnRefreshCallFunc(NULL);
        iDone = 1;
    }
    pthread_mutex_unlock(&f_refresh_lock);
    return iDone;
}

void* RefreshThreadFunc(void* arg) {
    (void)arg;
    int iTid = static_cast<int>(syscall(SYS_gettid));
    // The log record is built in the shared state record: under the lock.
    pthread_mutex_lock(&f_refresh_lock);
    NV_DBG("enter refresh thread:ID is %d(0x%x)!\n", iTid, static_cast<unsigned>(iTid));
    pthread_mutex_unlock(&f_refresh_lock);
    for (;;) {
        RefreshOnce();
        sleep(1);
    }
    return NULL;
}

int InitRefreshThread() {
    if (pthread_mutex_init(&f_refresh_lock, NULL) != 0)
        return ERR_REFRESH_THREAD_FAILED;
    // Never joined: the thread ends with the process.
    pthread_t tThread;
    if (pthread_create(&tThread, NULL, RefreshThreadFunc, NULL) != 0)
        return ERR_REFRESH_THREAD_FAILED;
    return 0;
}
