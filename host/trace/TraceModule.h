#pragma once

#include "onlinemanager/IOnlineManager.h"

#include <string>

namespace host
{

class Trace;

/// Puts a recording object in front of a component: everything that is got from it, and every listener that is registered
/// through it, is recorded too. The caller goes on with the result in place of `manager`, of whose reference it takes care.
onlinemanager::IOnlineManager& RecordModule(Trace& trace, const std::string& device,
                                            onlinemanager::IOnlineManager& manager);

} // namespace host
