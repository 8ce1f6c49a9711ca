#pragma once

#include "common/wbaselib/wtypes.h"

#include <pthread.h>

namespace WBASELIB
{

/// A recursive mutex: the thread that holds it may lock it again and then has to unlock it as often.
///
/// Every operation may be called from any thread. An error of the system (unlocking a lock that is not held, say) is
/// not reported.
class WLock
{
public:
    WLock();
    virtual ~WLock();

    /// Waits until the lock is free or already held by this thread, and takes it.
    void Lock();

    /// Gives back one Lock() or successful TryLock() of the calling thread.
    void UnLock();

    /// Takes the lock without waiting. True exactly when it was taken; false while another thread holds it.
    BOOL TryLock();

private:
    WLock(const WLock&) = delete;
    WLock& operator=(const WLock&) = delete;

    pthread_mutexattr_t m_attr;
    pthread_mutex_t m_Lock;
};

/// Holds a WLock for the length of a scope.
class WAutoLock
{
public:
    /// Locks `lock`, which has to outlive this guard. With null the guard does nothing.
    explicit WAutoLock(WLock* lock);
    virtual ~WAutoLock();

private:
    WAutoLock(const WAutoLock&) = delete;
    WAutoLock& operator=(const WAutoLock&) = delete;

    WLock* m_pLock;
};

/// A read-write lock: many readers or one writer. It is not recursive.
///
/// Every operation may be called from any thread. An error of the system is not reported.
class WRWLock
{
public:
    WRWLock();
    virtual ~WRWLock();

    /// Waits until no writer holds the lock, and joins its readers.
    void RDLock();

    /// Waits until nobody holds the lock, and takes it alone.
    void WRLock();

    /// Gives the lock back. The system has one unlock for readers and writers, so both names do the same.
    void RDUnLock();
    void WRUnLock();

private:
    WRWLock(const WRWLock&) = delete;
    WRWLock& operator=(const WRWLock&) = delete;

    pthread_rwlock_t m_Lock;
};

} // namespace WBASELIB
