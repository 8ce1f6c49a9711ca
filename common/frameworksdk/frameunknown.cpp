#include "common/frameworksdk/frameunknown.h"

#include "common/frameworksdk/frameworkcomponent.h"

#include <algorithm>
#include <atomic>

namespace FRAMEWORKSDK
{

namespace
{

IUnknown* AsUnknown(INonDelegatingUnknown* object)
{
    // Both interfaces have the same three slots, and callers outside the module use the slots only.
    return reinterpret_cast<IUnknown*>(object);
}

} // namespace

CFrameUnknown::CFrameUnknown(const char* name, IUnknown* outer, IComponentFactory* factory)
    : CFrameBaseObject(name),
      m_pUnknown(outer != nullptr ? outer : AsUnknown(this)),
      m_pComponentFactory(factory)
{
}

CFrameUnknown::~CFrameUnknown() = default;

HRESULT CFrameUnknown::NonDelegatingQueryInterface(const GUID& iid, void** out)
{
    if (out == nullptr)
    {
        return E_POINTER;
    }
    if (iid == IID_IUnknown)
    {
        return GetComponentInterface(static_cast<INonDelegatingUnknown*>(this), out);
    }
    *out = nullptr;
    return E_NOINTERFACE;
}

uint32_t CFrameUnknown::NonDelegatingAddRef()
{
    // Returns the result of the increment: a second read could find the object destroyed.
    return std::max<uint32_t>(std::atomic_ref(m_cRef).fetch_add(1, std::memory_order_relaxed) + 1, 1);
}

uint32_t CFrameUnknown::NonDelegatingRelease()
{
    const uint32_t remaining = std::atomic_ref(m_cRef).fetch_sub(1, std::memory_order_acq_rel) - 1;
    if (remaining != 0)
    {
        return remaining;
    }
    // The count is 1 during the destruction, so a pair of AddRef and Release in a destructor does not destroy the
    // object again.
    std::atomic_ref(m_cRef).fetch_add(1, std::memory_order_relaxed);
    delete this;
    return 0;
}

} // namespace FRAMEWORKSDK
