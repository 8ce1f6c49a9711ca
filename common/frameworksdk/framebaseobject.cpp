#include "common/frameworksdk/framebaseobject.h"

namespace FRAMEWORKSDK
{

std::atomic<int32_t> CFrameBaseObject::m_cObjects{0};

CFrameBaseObject::CFrameBaseObject(const char* /*name*/)
{
    m_cObjects.fetch_add(1, std::memory_order_relaxed);
}

CFrameBaseObject::~CFrameBaseObject()
{
    m_cObjects.fetch_sub(1, std::memory_order_relaxed);
}

} // namespace FRAMEWORKSDK
