#include "host/console/StandardStreams.h"

#include "onlinehost/Error.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace host
{

using namespace onlinehost;

namespace
{

void Occupy(int stream, int flags)
{
    if (open("/dev/null", flags) != stream)
    {
        throw Error(std::string("/dev/null cannot be opened: ") + std::strerror(errno));
    }
}

bool IsClosed(int stream)
{
    return fcntl(stream, F_GETFD) < 0;
}

} // namespace

void PrepareStandardStreams()
{
    std::signal(SIGPIPE, SIG_IGN);
    // In the order of their numbers, because the system gives the lowest free descriptor.
    if (IsClosed(STDIN_FILENO))
    {
        Occupy(STDIN_FILENO, O_PATH); // cannot be read, and `IsStandardInputClosed` recognises it
    }
    if (IsClosed(STDOUT_FILENO))
    {
        throw Error("the standard output is closed; connect it, to /dev/null for no output");
    }
    if (IsClosed(STDERR_FILENO))
    {
        Occupy(STDERR_FILENO, O_RDWR);
    }
}

bool IsStandardInputClosed()
{
    return (fcntl(STDIN_FILENO, F_GETFL) & O_PATH) != 0;
}

} // namespace host
