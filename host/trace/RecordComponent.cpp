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
        IComponentFactory& recorded = RecordPlatform(*trace, device, factory);
        const TraceSpan span(*trace, Crossing::HostCall, device, "WDllCreateComponent", {});
        return RecordModule(*trace, device, create(recorded));
    };
}

} // namespace host
