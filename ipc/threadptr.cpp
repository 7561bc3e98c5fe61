#include "threadptr.h"

#include "assertfatal.h"

ThreadSpecificKeyC::ThreadSpecificKeyC(void (*cleanup)(void*))
{
    const int result = pthread_key_create(&key, cleanup);
    m_usable = TVX_CHECK(result == 0, "(result = pthread_key_create(&key, c)) == 0");
    if (m_usable) {
        set(nullptr);
    } else {
        assertFatal("Failed to create Thread Local Storage, cannot start", __FILE_NAME__, __LINE__);
    }
}

ThreadSpecificKeyC::~ThreadSpecificKeyC()
{
    if (m_usable) pthread_key_delete(key);
}

void ThreadSpecificKeyC::set(const void* value)
{
    if (!m_usable) return;
    const int result = pthread_setspecific(key, value);
    (void)TVX_CHECK(result == 0, "result == 0");
}
