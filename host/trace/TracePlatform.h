#pragma once

#include "common/frameworksdk/IComponentFactory.h"

#include <string>

namespace host
{

class Trace;

/// Puts a recording factory in front of another one: the connections that it makes are recorded, and everything that is
/// got from them. The result lives as long as the trace.
IComponentFactory& RecordPlatform(Trace& trace, const std::string& device, IComponentFactory& factory);

} // namespace host
