#pragma once

#include "common/frameworksdk/IUnknown.h"

#include <atomic>

namespace onlinehost
{

/// Base of the host's own reference-counted objects, which it passes to a module: factory, log center, HTTP object.
///
/// The host owns such an object and destroys it itself, after the components that use it. The count does not decide: a
/// module keeps references of the log center and of the HTTP object that it never releases. The count starts at 1,
/// which is the host's own reference, and may be read with `ForeignReferences`.
template <typename Interface>
class Counted : public Interface
{
public:
    Counted() = default;
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;

    /// [any] Gives `IID_IUnknown` with a reference. Otherwise `E_NOINTERFACE`, and `*out` is null; `E_POINTER` for a
    /// null `out`. A derived class that has further identifiers tests them first.
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

    /// [any] Both return the new count.
    uint32_t AddRef() override
    {
        return ++m_references;
    }

    uint32_t Release() override
    {
        return --m_references;
    }

    /// [any] The number of references that others hold, without the host's own.
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
