#pragma once

#include "common/wbaselib/wtypes.h"

#include <cstdint>
#include <pthread.h>

namespace WBASELIB
{

/// A counting semaphore with a maximum, whose waits can be given a time-out.
///
/// Time-outs are milliseconds of the monotonic clock: setting the wall clock neither shortens nor lengthens a wait.
/// Every operation may be called from any thread.
class WSemaphore
{
public:
    /// Neither number is checked: with an initial count of 0 or less the first waits block, and with a maximum that is
    /// not above the count every release is dropped.
    WSemaphore(int initialCount, int maxCount);

    /// Nobody may be waiting any more.
    virtual ~WSemaphore();

    /// Takes one unit, waiting for it up to `milliseconds` (INFINITE: for ever; 0: not at all).
    /// Returns WAIT_OBJECT_0 when a unit was taken, WAIT_TIMEOUT when none came in time or the system failed.
    uint32_t WaitSemaphore(unsigned int milliseconds);

    /// Adds `count` units, one at a time, and wakes one waiter for each. Units above the maximum are dropped without a
    /// word; a negative `count` fills the semaphore up to its maximum. Always true.
    BOOL ReleaseSemaphore(int count);

    /// Locks or unlocks the mutex that guards the count. Both return the result of the system's call, 0 = done. While
    /// it is held no unit can be taken or added; the mutex is not recursive.
    int32_t Lock();
    int32_t UnLock();

private:
    WSemaphore(const WSemaphore&) = delete;
    WSemaphore& operator=(const WSemaphore&) = delete;

    volatile int32_t m_nCount; ///< guarded by m_mutex
    int32_t m_nMax;
    pthread_mutex_t m_mutex;
    pthread_cond_t m_cond;
};

} // namespace WBASELIB
