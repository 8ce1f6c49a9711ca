#include "host/shell/ShellSignals.h"

#include "host/console/IgnoredSignal.h"
#include "onlinehost/Error.h"

#include <cerrno>
#include <cstring>
#include <string>
#include <sys/signalfd.h>
#include <unistd.h>

namespace host
{

using namespace onlinehost;

ShellSignals::ShellSignals()
{
    sigset_t held;
    sigemptyset(&held);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGTSTP, SIGWINCH})
    {
        if (!IsIgnored(signal))
        {
            sigaddset(&held, signal);
        }
    }
    m_descriptor = signalfd(-1, &held, SFD_CLOEXEC | SFD_NONBLOCK);
    if (m_descriptor < 0)
    {
        throw Error(std::string("no signal descriptor: ") + std::strerror(errno));
    }
    pthread_sigmask(SIG_BLOCK, &held, &m_former);
}

ShellSignals::~ShellSignals()
{
    Release();
    close(m_descriptor);
}

void ShellSignals::Release()
{
    // A pending signal asks the shell to end, which it already does. It must not end the process when the mask is
    // restored.
    while (Take() != 0)
    {
    }
    pthread_sigmask(SIG_SETMASK, &m_former, nullptr);
}

int ShellSignals::Take()
{
    signalfd_siginfo info{};
    const bool isThere = read(m_descriptor, &info, sizeof(info)) == static_cast<ssize_t>(sizeof(info));
    return isThere ? static_cast<int>(info.ssi_signo) : 0;
}

void ShellSignals::Stop()
{
    kill(getpid(), SIGSTOP);
}

} // namespace host
