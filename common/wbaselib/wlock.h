#pragma once

#include "common/wbaselib/wtypes.h"

#include <pthread.h>

namespace WBASELIB
{

/// A recursive mutex: the thread that holds it may lock it again, and must unlock it as often as it locked it.
///
/// Every operation may be called from any thread. Errors of the system are not reported, for example when a thread
/// unlocks a lock that it does not hold.
class WLock
{
public:
    WLock();
    virtual ~WLock();

    /// Waits until no other thread holds the lock, and takes it.
    void Lock();

    /// Undoes one Lock() or successful TryLock() of the calling thread.
    void UnLock();

    /// Takes the lock without waiting. True when it took the lock; false while another thread holds it.
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
    /// Locks `lock`, which must outlive this guard. With null the guard does nothing.
    explicit WAutoLock(WLock* lock);
    virtual ~WAutoLock();

private:
    WAutoLock(const WAutoLock&) = delete;
    WAutoLock& operator=(const WAutoLock&) = delete;

    WLock* m_pLock;
};

/// A read-write lock: many readers or one writer. It is not recursive.
///
/// Every operation may be called from any thread. Errors of the system are not reported.
class WRWLock
{
public:
    WRWLock();
    virtual ~WRWLock();

    /// Waits until no writer holds the lock, and takes it as one of its readers.
    void RDLock();

    /// Waits until no other thread holds the lock, and takes it alone.
    void WRLock();

    /// Unlocks. The system has one unlock operation for readers and writers, so both names do the same.
    void RDUnLock();
    void WRUnLock();

private:
    WRWLock(const WRWLock&) = delete;
    WRWLock& operator=(const WRWLock&) = delete;

    pthread_rwlock_t m_Lock;
};

} // namespace WBASELIB
