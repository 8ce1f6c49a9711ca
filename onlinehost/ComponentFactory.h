#pragma once

#include "common/frameworksdk/IComponentFactory.h"
#include "onlinehost/Counted.h"

#include <functional>

namespace onlinehost
{

class LogCenter;

/// The component factory of a host, which a module uses in two ways: it asks for the log center, and it has the
/// platform library create connections.
///
/// A host makes one before its components, and destroys it after them.
class ComponentFactory final : public Counted<IComponentFactory>
{
public:
    /// The platform library's creation function, with the arguments and results of
    /// `IComponentFactory::CreateComponent`. [any] The factory calls it on the thread that creates or initialises a
    /// component.
    using CreatePlatformObject =
        std::function<HRESULT(const CLSID& clsid, const IID& iid, IUnknown* outer, void** out)>;

    /// The factory borrows both: `logCenter`, and what `create` refers to, must outlive the factory and every component
    /// that was created with it. `create` must not be empty.
    ComponentFactory(CreatePlatformObject create, LogCenter& logCenter);

    /// [any] As `Counted`; also gives the log center for `IID_ILogCenter`.
    HRESULT QueryInterface(const GUID& iid, void** out) override;

    /// [any] Calls the platform library's creation function and returns its result.
    HRESULT CreateComponent(const CLSID& clsid, const IID& iid, IUnknown* outer, void** out) override;

private:
    const CreatePlatformObject m_create;
    LogCenter& m_logCenter;
};

} // namespace onlinehost
