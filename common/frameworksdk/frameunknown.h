#pragma once

#include "common/frameworksdk/IComponentFactory.h"
#include "common/frameworksdk/framebaseobject.h"
#include "common/wbaselib/wlock.h"

namespace FRAMEWORKSDK
{

/// The identity of an object, alone or inside an aggregate. Its three slots are those of `IUnknown`, so callers may use
/// it as one.
class INonDelegatingUnknown
{
public:
    virtual HRESULT NonDelegatingQueryInterface(const GUID& iid, void** out) = 0;
    virtual uint32_t NonDelegatingAddRef() = 0;
    virtual uint32_t NonDelegatingRelease() = 0;

protected:
    ~INonDelegatingUnknown() = default;
};

/// Base of every component: reference counting, aggregation and the count of live objects.
///
/// A component class must derive from `CFrameUnknown` first and from its public interface second, forward the
/// interface's `QueryInterface`, `AddRef` and `Release` to `m_pUnknown`, and override `NonDelegatingQueryInterface` for
/// its own interface ids. The reference count starts at 0; the creation routine adds the first reference.
class CFrameUnknown : public INonDelegatingUnknown, public CFrameBaseObject
{
public:
    /// `outer` is the controlling object of an aggregate, null outside an aggregate. The object keeps `factory` and
    /// adds no reference.
    CFrameUnknown(const char* name, IUnknown* outer, IComponentFactory* factory);

    /// [any] Writes the object's identity to `*out` for `IID_IUnknown` and adds a reference. `E_POINTER` for a null
    /// `out`; `E_NOINTERFACE`, with null in `*out`, for any other id.
    HRESULT NonDelegatingQueryInterface(const GUID& iid, void** out) override;

    /// [any] Returns the count after the increment, at least 1.
    uint32_t NonDelegatingAddRef() override;

    /// [any] Returns the count after the decrement. At 0 the object destroys itself.
    uint32_t NonDelegatingRelease() override;

    virtual ~CFrameUnknown();

protected:
    IUnknown* m_pUnknown;                   ///< the outer object; without one, the identity of this object
    uint32_t m_cRef = 0;                    ///< every access is atomic
    WBASELIB::WLock m_reflock;              ///< for derived components; reference counting does not use it
    IComponentFactory* m_pComponentFactory; ///< the factory of the host; this class holds no reference
};

} // namespace FRAMEWORKSDK
