#pragma once

#include "common/frameworksdk/IComponentFactory.h"
#include "host/Counted.h"

namespace platform
{
class Platform;
}

namespace host
{

class LogCenter;

/// What modules get everything else from: connections from a platform, and the log center.
class ComponentFactory final : public Counted<IComponentFactory>
{
public:
    /// Both must outlive the factory and every component that was made with it.
    ComponentFactory(platform::Platform& platform, LogCenter& logCenter);

    HRESULT QueryInterface(const GUID& iid, void** out) override;
    HRESULT CreateComponent(const CLSID& clsid, const IID& iid, IUnknown* outer, void** out) override;

private:
    platform::Platform& m_platform;
    LogCenter& m_logCenter;
};

} // namespace host
