#pragma once

#include "common/frameworksdk/IComponentFactory.h"
#include "common/frameworksdk/framebaseobject.h"
#include "common/wbaselib/wlock.h"

namespace FRAMEWORKSDK
{

/// An object's own identity, whether it stands alone or inside an aggregate. Its three slots are laid out as those of
/// `IUnknown`, so that it serves as one.
class INonDelegatingUnknown
{
public:
    virtual HRESULT NonDelegatingQueryInterface(const GUID& iid, void** out) = 0;
    virtual uint32_t NonDelegatingAddRef() = 0;
    virtual uint32_t NonDelegatingRelease() = 0;

protected:
    ~INonDelegatingUnknown() = default;
};

/// Base of every component: reference counting, aggregation, and the count of live objects.
///
/// A component class derives from `CFrameUnknown` first and from its public interface second, forwards the interface's
/// `QueryInterface`, `AddRef` and `Release` to `m_pUnknown`, and tests its own interface ids in
/// `NonDelegatingQueryInterface` before it falls back to this one.
/// The count starts at 0; the creation routine adds the first reference.
class CFrameUnknown : public INonDelegatingUnknown, public CFrameBaseObject
{
public:
    /// `outer` is the controlling object of an aggregate, null for an object that stands alone. `factory` is kept and not
    /// counted here.
    CFrameUnknown(const char* name, IUnknown* outer, IComponentFactory* factory);

    /// [any] Hands out `IID_IUnknown` only: the object's own identity, with one reference added.
    /// `E_POINTER` for a null `out`; `E_NOINTERFACE`, with null in `*out`, for anything else.
    HRESULT NonDelegatingQueryInterface(const GUID& iid, void** out) override;

    /// [any] The count after the increment, 1 at the least.
    uint32_t NonDelegatingAddRef() override;

    /// [any] The count after the decrement; at 0 the object is destroyed.
    uint32_t NonDelegatingRelease() override;

    virtual ~CFrameUnknown();

protected:
    IUnknown* m_pUnknown;      ///< the controlling unknown: the outer object, else this object's own identity
    uint32_t m_cRef = 0;       ///< every access is atomic
    WBASELIB::WLock m_reflock; ///< for derived components; reference counting does not take it
    IComponentFactory* m_pComponentFactory; ///< the host's, not counted by this class
};

} // namespace FRAMEWORKSDK
