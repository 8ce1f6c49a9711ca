#include "common/wbaselib/wsemaphore.h"

#include <cerrno>
#include <ctime>

namespace WBASELIB
{

namespace
{

constexpr long kNanosecondsPerMillisecond = 1000000;
constexpr long kNanosecondsPerSecond = 1000000000;

timespec DeadlineIn(unsigned int milliseconds)
{
    timespec deadline{};
    clock_gettime(CLOCK_MONOTONIC, &deadline);
    deadline.tv_sec += static_cast<time_t>(milliseconds / 1000);
    deadline.tv_nsec += static_cast<long>(milliseconds % 1000) * kNanosecondsPerMillisecond;
    if (deadline.tv_nsec >= kNanosecondsPerSecond)
    {
        ++deadline.tv_sec;
        deadline.tv_nsec -= kNanosecondsPerSecond;
    }
    return deadline;
}

} // namespace

WSemaphore::WSemaphore(int initialCount, int maxCount) : m_nCount(initialCount), m_nMax(maxCount)
{
    pthread_mutex_init(&m_mutex, nullptr);

    pthread_condattr_t attributes;
    pthread_condattr_init(&attributes);
    pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
    pthread_cond_init(&m_cond, &attributes);
    pthread_condattr_destroy(&attributes);
}

WSemaphore::~WSemaphore()
{
    pthread_cond_destroy(&m_cond);
    pthread_mutex_destroy(&m_mutex);
}

uint32_t WSemaphore::WaitSemaphore(unsigned int milliseconds)
{
    const bool timed = milliseconds != INFINITE;
    const timespec deadline = timed ? DeadlineIn(milliseconds) : timespec{};

    if (Lock() != 0)
    {
        return WAIT_TIMEOUT;
    }
    while (m_nCount <= 0)
    {
        const int result =
            timed ? pthread_cond_timedwait(&m_cond, &m_mutex, &deadline) : pthread_cond_wait(&m_cond, &m_mutex);
        if (result != 0 && result != EINTR)
        {
            UnLock();
            return WAIT_TIMEOUT;
        }
    }
    m_nCount = m_nCount - 1;
    UnLock();
    return WAIT_OBJECT_0;
}

BOOL WSemaphore::ReleaseSemaphore(int count)
{
    // An unsigned copy, on purpose: a negative count becomes so large that the semaphore reaches its maximum, and the
    // loop ends there. Callers fill a semaphore so.
    for (auto left = static_cast<uint32_t>(count); left != 0; --left)
    {
        if (Lock() != 0)
        {
            return 1;
        }
        if (m_nCount >= m_nMax)
        {
            // Units above the maximum are dropped on purpose: a full semaphore has enough units for its waiting
            // threads.
            UnLock();
            return 1;
        }
        m_nCount = m_nCount + 1;
        pthread_cond_signal(&m_cond);
        UnLock();
    }
    return 1;
}

int32_t WSemaphore::Lock()
{
    int result = 0;
    do
    {
        result = pthread_mutex_lock(&m_mutex);
    } while (result == EINTR);
    return result;
}

int32_t WSemaphore::UnLock()
{
    int result = 0;
    do
    {
        result = pthread_mutex_unlock(&m_mutex);
    } while (result == EINTR);
    return result;
}

} // namespace WBASELIB
