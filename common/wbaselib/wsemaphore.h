#pragma once

#include "common/wbaselib/wtypes.h"

#include <cstdint>
#include <pthread.h>

namespace WBASELIB
{

/// A counting semaphore with a maximum. Its waits take a time-out.
///
/// Time-outs are milliseconds of the monotonic clock: a change of the wall clock neither shortens nor lengthens a wait.
/// Every operation may be called from any thread.
class WSemaphore
{
public:
    /// Does not check the numbers. With an initial count of 0 or less the first waits block. With a maximum that is not
    /// above the count every release is dropped.
    WSemaphore(int initialCount, int maxCount);

    /// No thread may be waiting.
    virtual ~WSemaphore();

    /// Takes one unit; waits for it up to `milliseconds` (INFINITE: without a limit; 0: not at all). Returns
    /// WAIT_OBJECT_0 when it took a unit, WAIT_TIMEOUT when the wait timed out or the system failed.
    uint32_t WaitSemaphore(unsigned int milliseconds);

    /// Adds `count` units, one at a time, and wakes one waiting thread for each. Drops units above the maximum without
    /// a report. A negative `count` fills the semaphore up to its maximum. Always true.
    BOOL ReleaseSemaphore(int count);

    /// Lock or unlock the mutex that guards the count. Return the result of the system's call, 0 = success. While a
    /// thread holds the mutex, no thread can take or add a unit. The mutex is not recursive.
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
