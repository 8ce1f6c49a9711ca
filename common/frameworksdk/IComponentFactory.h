#pragma once

#include "common/frameworksdk/IUnknown.h"

/// The host's factory of components. The module creates the platform's connections through it.
///
/// Implemented by the host, which passes it to `FMDllTable::m_lpfnCreateComponent`. `QueryInterface` must also answer
/// `IID_ILogCenter`, or the module logs nothing. It may answer `IID_IWLogAllocator`, the older log allocator. The
/// component takes over one reference and releases it when the component is destroyed. The host must add that reference
/// before the creation; frameworkcomponent.h says what happens to it when a creation fails.
class IComponentFactory : public IUnknown
{
public:
    /// [any] Creates the component `clsid` and writes its interface `iid` to `*out`. The caller holds the only
    /// reference. `outer` is the controlling object of an aggregate, or null; the module passes null. 0 or positive on
    /// success. Negative on failure; `*out` is then null or unchanged.
    virtual HRESULT CreateComponent(const CLSID& clsid, const IID& iid, IUnknown* outer, void** out) = 0;

protected:
    ~IComponentFactory() = default;
};
