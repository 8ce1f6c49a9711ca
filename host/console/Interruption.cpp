#include "host/console/Interruption.h"

#include "host/console/IgnoredSignal.h"
#include "onlinehost/Error.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>
#include <utility>

namespace host
{

using namespace onlinehost;

Interruption::Interruption()
{
    sigemptyset(&m_signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
    {
        if (!IsIgnored(signal))
        {
            sigaddset(&m_signals, signal);
        }
    }
    m_descriptor = signalfd(-1, &m_signals, SFD_CLOEXEC);
    m_stop = eventfd(0, EFD_CLOEXEC);
    if (m_descriptor < 0 || m_stop < 0)
    {
        const int reason = errno;
        close(m_descriptor);
        close(m_stop);
        throw Error(std::string("signals cannot be received: ") + std::strerror(reason));
    }
    pthread_sigmask(SIG_BLOCK, &m_signals, &m_former);
    m_thread = std::thread([this] { Run(); });
}

Interruption::~Interruption()
{
    eventfd_write(m_stop, 1);
    m_thread.join();
    pthread_sigmask(SIG_SETMASK, &m_former, nullptr);
    close(m_descriptor);
    close(m_stop);
}

void Interruption::Run()
{
    std::array<pollfd, 2> waiting{pollfd{m_stop, POLLIN, 0}, pollfd{m_descriptor, POLLIN, 0}};
    while (poll(waiting.data(), waiting.size(), -1) < 0 || waiting[0].revents == 0)
    {
        signalfd_siginfo info{};
        if (waiting[1].revents == 0 || read(m_descriptor, &info, sizeof(info)) != static_cast<ssize_t>(sizeof(info)))
        {
            continue;
        }
        m_signal = static_cast<int>(info.ssi_signo);
        // A second signal must end a command that hangs. This thread unblocks the signals, so the system's default action
        // ends the process. It unblocks them before the actions, because an action may hang too.
        waiting[1].fd = -1;
        pthread_sigmask(SIG_UNBLOCK, &m_signals, nullptr);
        const std::lock_guard lock(m_mutex);
        for (const std::function<void()>& action : m_actions)
        {
            action();
        }
    }
}

std::string Interruption::Reason() const
{
    const char* const name = sigabbrev_np(m_signal);
    return "interrupted by SIG" + std::string(name != nullptr ? name : "NAL " + std::to_string(m_signal));
}

Interruption::Watch::Watch(Interruption* interruption, std::function<void()> action) : m_interruption(interruption)
{
    if (m_interruption == nullptr)
    {
        return;
    }
    const std::lock_guard lock(m_interruption->m_mutex);
    m_place = m_interruption->m_actions.insert(m_interruption->m_actions.end(), std::move(action));
    if (m_interruption->Signal() != 0)
    {
        (*m_place)();
    }
}

Interruption::Watch::~Watch()
{
    if (m_interruption != nullptr)
    {
        const std::lock_guard lock(m_interruption->m_mutex);
        m_interruption->m_actions.erase(m_place);
    }
}

} // namespace host
