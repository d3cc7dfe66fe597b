// Thread-local slots: pthread keys without a destructor, never released.
#include <pthread.h>

#include "wexelxi/threads.h"

uint32_t TlsAlloc(void)
{
    pthread_key_t key;
    return pthread_key_create(&key, nullptr) == 0 ? key : UINT32_MAX;
}

BOOL TlsSetValue(uint32_t key, LPVOID value)
{
    pthread_setspecific(key, value);
    return TRUE;
}

LPVOID TlsGetValue(uint32_t key)
{
    return pthread_getspecific(key);
}
