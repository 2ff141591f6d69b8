// The refresh lock, held around every key function call and every refresh.
#include "link/result_codes.h"
#include "shell/start_up.h"

pthread_mutex_t f_refresh_lock = PTHREAD_MUTEX_INITIALIZER;

int InitRefreshThread() {
    if (pthread_mutex_init(&f_refresh_lock, NULL) != 0)
        return ERR_REFRESH_THREAD_FAILED;
    return 0;
}
