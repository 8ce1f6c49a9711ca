#include "host/trace/RecordComponent.h"

#include "host/trace/Trace.h"
#include "host/trace/TraceModule.h"
#include "host/trace/TracePlatform.h"

namespace host
{

onlinehost::Interposer RecordComponent(Trace* trace, const std::string& device)
{
    if (trace == nullptr)
    {
        return {};
    }
    return [trace, device](IComponentFactory& factory,
                           const onlinehost::ComponentCreator& create) -> onlinemanager::IOnlineManager&
    {
        const uint32_t component = trace->AddComponent(device);
        TracedFactory& recorded = trace->Keep<TracedFactory>(*trace, component, factory);
        const TraceSpan span(*trace, {Crossing::HostCall, component, "WDllCreateComponent"});
        return RecordModule(*trace, component, create(recorded), recorded);
    };
}

} // namespace host
