#pragma once

#include "common/frameworksdk/IComponentFactory.h"

#include <cstdint>
#include <map>
#include <mutex>

namespace host
{

class Trace;

/// Stands in front of a component factory. Records the calls to the connections that the factory makes, and to all
/// objects from these connections. It lives as long as the trace.
class TracedFactory final : public IComponentFactory
{
public:
    /// Records for one component.
    TracedFactory(Trace& trace, uint32_t component, IComponentFactory& target);

    HRESULT QueryInterface(const GUID& iid, void** out) override;
    uint32_t AddRef() override;
    uint32_t Release() override;
    HRESULT CreateComponent(const CLSID& clsid, const IID& iid, IUnknown* outer, void** out) override;

    /// The same connection for the host's own use: its calls are recorded as the host's. Returns `connection` itself if
    /// this factory did not make it.
    IUnknown* ForHost(IUnknown* connection);

private:
    Trace& m_trace;
    const uint32_t m_component;
    IComponentFactory& m_target;
    std::mutex m_mutex;
    std::map<IUnknown*, IUnknown*> m_forHost; ///< by the recording object that the module has
};

} // namespace host
