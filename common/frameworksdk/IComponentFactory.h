#pragma once

#include "common/frameworksdk/IUnknown.h"

/// The host's maker of components.
///
/// Implemented by the host, given to `WDllCreateComponent`. `QueryInterface` also yields the host's log center
/// (`IID_ILogCenter`) and, in hosts that have one, the older log allocator (`IID_IWLogAllocator`).
/// Lives at least as long as the component that it was given to: the component takes over one reference and releases it
/// when it is destroyed (see IOnlineManager.h).
class IComponentFactory : public IUnknown
{
public:
    /// [any] Creates the component `clsid` and hands out its interface `iid` in `*out`, the caller holding the only
    /// reference. `outer` is the controlling object of an aggregate; null for a component that stands alone.
    /// Negative on failure, `*out` is then null or untouched.
    virtual HRESULT CreateComponent(const CLSID& clsid, const IID& iid, IUnknown* outer, void** out) = 0;

protected:
    ~IComponentFactory() = default;
};
