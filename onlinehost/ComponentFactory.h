#pragma once

#include "common/frameworksdk/IComponentFactory.h"
#include "onlinehost/Counted.h"

#include <functional>

namespace onlinehost
{

class LogCenter;

/// The component factory of a host: hands out the log center, and passes every creation on to the platform library.
class ComponentFactory final : public Counted<IComponentFactory>
{
public:
    /// The platform library's creation function, with the arguments and results of `IComponentFactory::CreateComponent`.
    using CreatePlatformObject =
        std::function<HRESULT(const CLSID& clsid, const IID& iid, IUnknown* outer, void** out)>;

    /// What `create` refers to and the log center must outlive the factory and every component that was made with it.
    ComponentFactory(CreatePlatformObject create, LogCenter& logCenter);

    HRESULT QueryInterface(const GUID& iid, void** out) override;
    HRESULT CreateComponent(const CLSID& clsid, const IID& iid, IUnknown* outer, void** out) override;

private:
    const CreatePlatformObject m_create;
    LogCenter& m_logCenter;
};

} // namespace onlinehost
