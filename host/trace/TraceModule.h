#pragma once

#include "host/trace/TracePlatform.h"
#include "onlinemanager/IOnlineManager.h"

#include <cstdint>

namespace host
{

/// Puts a recording component in front of another one: its services are recorded, and the listeners that are registered with
/// them. `factory` is the one that the component was created with. The result lives as long as the trace.
onlinemanager::IOnlineManager& RecordModule(Trace& trace, uint32_t component, onlinemanager::IOnlineManager& manager,
                                            TracedFactory& factory);

} // namespace host
