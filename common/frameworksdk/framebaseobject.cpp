#include "common/frameworksdk/framebaseobject.h"

#include <atomic>

namespace FRAMEWORKSDK
{

int32_t CFrameBaseObject::m_cObjects = 0;

CFrameBaseObject::CFrameBaseObject(const char* /*name*/)
{
    std::atomic_ref(m_cObjects).fetch_add(1, std::memory_order_relaxed);
}

CFrameBaseObject::~CFrameBaseObject()
{
    std::atomic_ref(m_cObjects).fetch_sub(1, std::memory_order_relaxed);
}

} // namespace FRAMEWORKSDK
