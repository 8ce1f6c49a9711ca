#include "tests/support/Program.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <stdexcept>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace
{

constexpr std::chrono::milliseconds kLookInterval{5};

bool Redirect(int target, const std::string& path, int flags)
{
    const int file = open(path.c_str(), flags, 0600);
    return file >= 0 && dup2(file, target) == target;
}

} // namespace

void ResetSignals()
{
    for (const int each : {SIGINT, SIGTERM, SIGHUP, SIGTSTP})
    {
        signal(each, SIG_DFL);
    }
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

RunningHost::RunningHost(const std::vector<std::string>& arguments, const std::string& input, const std::string& out,
                         const std::map<std::string, std::string>& environment)
    : m_hasOutput(out.empty()),
      m_outPath(m_hasOutput ? std::string(m_folder / "out") : out)
{
    const std::string inPath = m_folder.Write("in", input);
    const std::string errPath = m_folder / "err";

    std::string program = ONLINEHOST_PROGRAM;
    std::vector<std::string> copies = arguments;
    std::vector<char*> pointers{program.data()};
    for (std::string& copy : copies)
    {
        pointers.push_back(copy.data());
    }
    pointers.push_back(nullptr);

    m_process = fork();
    if (m_process == 0)
    {
        ResetSignals();
        for (const auto& [name, value] : environment)
        {
            setenv(name.c_str(), value.c_str(), 1);
        }
        if (Redirect(STDIN_FILENO, inPath, O_RDONLY) && Redirect(STDOUT_FILENO, m_outPath, O_WRONLY | O_CREAT) &&
            Redirect(STDERR_FILENO, errPath, O_WRONLY | O_CREAT))
        {
            execv(program.c_str(), pointers.data());
        }
        _exit(127);
    }
    if (m_process < 0)
    {
        throw std::runtime_error("the program does not start");
    }
}

RunningHost::~RunningHost()
{
    if (m_process > 0)
    {
        kill(m_process, SIGKILL);
        waitpid(m_process, nullptr, 0);
    }
}

void RunningHost::Signal(int signal) const
{
    kill(m_process, signal);
}

bool RunningHost::WaitForOutput(const std::string& text)
{
    for (;;)
    {
        siginfo_t info{};
        const bool hasEnded = waitid(P_PID, static_cast<id_t>(m_process), &info, WEXITED | WNOHANG | WNOWAIT) == 0 &&
                              info.si_pid == m_process;
        if (ReadFile(m_outPath).find(text) != std::string::npos)
        {
            return true;
        }
        if (hasEnded)
        {
            return false;
        }
        std::this_thread::sleep_for(kLookInterval);
    }
}

ProgramResult RunningHost::WaitForEnd()
{
    int status = 0;
    if (waitpid(m_process, &status, 0) != m_process)
    {
        throw std::runtime_error("the program is gone");
    }
    m_process = -1;
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, m_hasOutput ? ReadFile(m_outPath) : "",
            ReadFile(m_folder / "err")};
}

ProgramResult RunHost(const std::vector<std::string>& arguments, const std::string& input, const std::string& out,
                      const std::map<std::string, std::string>& environment)
{
    return RunningHost(arguments, input, out, environment).WaitForEnd();
}

ProgramResult RunHostLine(const std::string& line)
{
    const TemporaryFolder folder;
    const std::string outPath = folder / "out";
    const std::string errPath = folder / "err";
    const std::string command =
        "{ timeout 60 '" ONLINEHOST_PROGRAM "' " + line + "; } </dev/null >'" + outPath + "' 2>'" + errPath + "'";
    const int status = std::system(command.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadFile(outPath), ReadFile(errPath)};
}
