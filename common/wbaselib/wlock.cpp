#include "common/wbaselib/wlock.h"

#include <cerrno>
#include <cstring>

namespace WBASELIB
{

WLock::WLock()
{
    pthread_mutexattr_init(&m_attr);
    pthread_mutexattr_settype(&m_attr, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(&m_Lock, &m_attr);
}

WLock::~WLock()
{
    pthread_mutex_destroy(&m_Lock);
    pthread_mutexattr_destroy(&m_attr);
}

void WLock::Lock()
{
    while (pthread_mutex_lock(&m_Lock) == EINTR)
    {
    }
}

void WLock::UnLock()
{
    while (pthread_mutex_unlock(&m_Lock) == EINTR)
    {
    }
}

BOOL WLock::TryLock()
{
    int result = 0;
    do
    {
        result = pthread_mutex_trylock(&m_Lock);
    } while (result == EINTR);
    return result == 0 ? 1 : 0;
}

WAutoLock::WAutoLock(WLock* lock) : m_pLock(lock)
{
    if (m_pLock != nullptr)
    {
        m_pLock->Lock();
    }
}

WAutoLock::~WAutoLock()
{
    if (m_pLock != nullptr)
    {
        m_pLock->UnLock();
    }
}

WRWLock::WRWLock()
{
    std::memset(&m_Lock, 0, sizeof(m_Lock));
    pthread_rwlock_init(&m_Lock, nullptr);
}

WRWLock::~WRWLock()
{
    pthread_rwlock_destroy(&m_Lock);
}

void WRWLock::RDLock()
{
    while (pthread_rwlock_rdlock(&m_Lock) == EINTR)
    {
    }
}

void WRWLock::WRLock()
{
    while (pthread_rwlock_wrlock(&m_Lock) == EINTR)
    {
    }
}

void WRWLock::RDUnLock()
{
    WRUnLock();
}

void WRWLock::WRUnLock()
{
    while (pthread_rwlock_unlock(&m_Lock) == EINTR)
    {
    }
}

} // namespace WBASELIB
