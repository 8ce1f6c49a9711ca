#pragma once

#include "onlinehost/Component.h"

#include <string>

namespace host
{

class Trace;

/// Records everything that crosses the boundary of a component under the name `device`. The trace must outlive the
/// component; with a null trace the result is empty, and no recording object stands between the component and the host.
onlinehost::Interposer RecordComponent(Trace* trace, const std::string& device);

} // namespace host
