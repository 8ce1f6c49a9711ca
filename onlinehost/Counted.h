#pragma once

#include "common/frameworksdk/IUnknown.h"

#include <atomic>

namespace onlinehost
{

/// Base of the objects that the host lends to modules: counts references, and is destroyed by its owner in the host.
///
/// Modules keep references that they never give back (of the log center, of the HTTP object), so the count must not decide
/// about an object's life. It starts at 1, the owner's own reference; the owner destroys the object when the components
/// that it was lent to are gone.
template <typename Interface>
class Counted : public Interface
{
public:
    Counted() = default;
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;

    /// Hands out `IID_IUnknown`; derived objects test their own interfaces first.
    HRESULT QueryInterface(const GUID& iid, void** out) override
    {
        if (out == nullptr)
        {
            return E_POINTER;
        }
        *out = nullptr;
        if (iid != IID_IUnknown)
        {
            return E_NOINTERFACE;
        }
        *out = static_cast<Interface*>(this);
        AddRef();
        return S_OK;
    }

    uint32_t AddRef() override
    {
        return ++m_references;
    }

    uint32_t Release() override
    {
        return --m_references;
    }

    /// [any] References that others hold.
    uint32_t ForeignReferences() const
    {
        return m_references - 1;
    }

protected:
    ~Counted() = default;

private:
    std::atomic<uint32_t> m_references{1};
};

} // namespace onlinehost
