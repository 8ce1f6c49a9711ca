#include "host/console/IgnoredSignal.h"

#include <csignal>

namespace host
{

bool IsIgnored(int signal)
{
    struct sigaction present
    {
    };
    return sigaction(signal, nullptr, &present) == 0 && present.sa_handler == SIG_IGN;
}

} // namespace host
