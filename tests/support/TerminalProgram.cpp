#include "tests/support/TerminalProgram.h"

#include "tests/support/Program.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <poll.h>
#include <pty.h>
#include <stdexcept>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utmp.h>

namespace
{

constexpr auto kPatience = std::chrono::seconds(30);

winsize Size(size_t rows, size_t columns)
{
    winsize size{};
    size.ws_row = static_cast<unsigned short>(rows);
    size.ws_col = static_cast<unsigned short>(columns);
    return size;
}

} // namespace

TerminalProgram::TerminalProgram(const std::vector<std::string>& arguments, size_t rows, size_t columns)
    : m_screen(rows, columns)
{
    std::string program = ONLINEHOST_PROGRAM;
    std::vector<std::string> copies = arguments;
    std::vector<char*> pointers{program.data()};
    for (std::string& copy : copies)
    {
        pointers.push_back(copy.data());
    }
    pointers.push_back(nullptr);

    const winsize size = Size(rows, columns);
    int programSide = -1;
    if (openpty(&m_terminal, &programSide, nullptr, nullptr, &size) != 0)
    {
        throw std::runtime_error("cannot open a terminal");
    }
    m_formerModes = Modes();
    m_process = fork();
    if (m_process == 0)
    {
        close(m_terminal);
        login_tty(programSide);
        ResetSignals();
        setenv("TERM", "xterm", 1);
        setenv("LC_ALL", "C.UTF-8", 1);
        setenv("EDITRC", "/dev/null", 1);
        execv(program.c_str(), pointers.data());
        _exit(127);
    }
    close(programSide);
    if (m_process < 0)
    {
        close(m_terminal);
        throw std::runtime_error("cannot start the program");
    }
}

TerminalProgram::~TerminalProgram()
{
    close(m_terminal);
    if (m_process > 0)
    {
        kill(m_process, SIGKILL);
        waitpid(m_process, nullptr, 0);
    }
}

void TerminalProgram::Type(std::string_view keys)
{
    while (!keys.empty())
    {
        // The terminal holds only a few thousand unread keys, so the output must be read in between.
        pollfd ready{m_terminal, POLLIN | POLLOUT, 0};
        if (poll(&ready, 1, -1) < 0)
        {
            return;
        }
        if ((ready.revents & POLLIN) != 0 && !ReadSome())
        {
            return;
        }
        if ((ready.revents & POLLOUT) != 0)
        {
            const ssize_t count = write(m_terminal, keys.data(), std::min<size_t>(keys.size(), 256));
            keys.remove_prefix(count > 0 ? static_cast<size_t>(count) : 0);
        }
    }
}

bool TerminalProgram::ReadSome()
{
    char block[4096];
    const ssize_t count = read(m_terminal, block, sizeof(block));
    if (count <= 0)
    {
        return false;
    }
    m_screen.Feed({block, static_cast<size_t>(count)});
    return true;
}

bool TerminalProgram::WaitForOutput(std::chrono::steady_clock::time_point deadline)
{
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    pollfd readable{m_terminal, POLLIN, 0};
    return left.count() > 0 && poll(&readable, 1, static_cast<int>(left.count())) > 0;
}

bool TerminalProgram::See(const std::function<bool(const Screen&)>& isWanted)
{
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    while (!isWanted(m_screen))
    {
        if (!WaitForOutput(deadline) || !ReadSome())
        {
            return isWanted(m_screen);
        }
    }
    return true;
}

bool TerminalProgram::See(const std::string& text)
{
    return See([&text](const Screen& screen) { return screen.Text().find(text) != std::string::npos; });
}

bool TerminalProgram::SeeLastLine(const std::string& line)
{
    return See(
        [&line](const Screen& screen)
        {
            const std::vector<std::string> lines = screen.Lines();
            return !lines.empty() && lines.back() == line;
        });
}

void TerminalProgram::Resize(size_t rows, size_t columns)
{
    const winsize size = Size(rows, columns);
    m_screen.Resize(rows, columns);
    ioctl(m_terminal, TIOCSWINSZ, &size);
}

void TerminalProgram::Signal(int signal)
{
    kill(m_process, signal);
}

bool TerminalProgram::WaitForStop()
{
    int status = 0;
    return waitpid(m_process, &status, WUNTRACED) == m_process && WIFSTOPPED(status);
}

int TerminalProgram::WaitForEnd()
{
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    bool isOpen = true;
    while (isOpen && WaitForOutput(deadline))
    {
        isOpen = ReadSome();
    }
    if (isOpen)
    {
        kill(m_process, SIGKILL);
    }
    int status = 0;
    const pid_t ended = waitpid(m_process, &status, 0);
    m_process = -1;
    return ended > 0 && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

termios TerminalProgram::Modes() const
{
    termios modes{};
    tcgetattr(m_terminal, &modes);
    return modes;
}
