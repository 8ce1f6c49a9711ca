#pragma once

#include "host/trace/TracePlatform.h"
#include "onlinemanager/IOnlineManager.h"

#include <cstdint>

namespace host
{

/// Puts a recording component in front of another one. Records the calls to its services and to the listeners of these
/// services. `factory` is the factory with which the component was created. The result lives as long as the trace.
onlinemanager::IOnlineManager& RecordModule(Trace& trace, uint32_t component, onlinemanager::IOnlineManager& manager,
                                            TracedFactory& factory);

} // namespace host
