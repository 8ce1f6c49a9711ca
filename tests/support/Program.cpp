#include "tests/support/Program.h"

#include "tests/support/TemporaryFolder.h"

#include <cstdlib>
#include <fcntl.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

bool Redirect(int target, const std::string& path, int flags)
{
    const int file = open(path.c_str(), flags, 0600);
    return file >= 0 && dup2(file, target) == target;
}

} // namespace

ProgramResult RunHost(const std::vector<std::string>& arguments, const std::string& input, const std::string& out,
                      const std::map<std::string, std::string>& environment)
{
    const TemporaryFolder folder;
    const std::string inPath = folder.Write("in", input);
    const std::string outPath = out.empty() ? std::string(folder / "out") : out;
    const std::string errPath = folder / "err";

    std::string program = ONLINEHOST_PROGRAM;
    std::vector<std::string> copies = arguments;
    std::vector<char*> pointers{program.data()};
    for (std::string& copy : copies)
    {
        pointers.push_back(copy.data());
    }
    pointers.push_back(nullptr);

    const pid_t process = fork();
    if (process == 0)
    {
        for (const auto& [name, value] : environment)
        {
            setenv(name.c_str(), value.c_str(), 1);
        }
        if (Redirect(STDIN_FILENO, inPath, O_RDONLY) && Redirect(STDOUT_FILENO, outPath, O_WRONLY | O_CREAT) &&
            Redirect(STDERR_FILENO, errPath, O_WRONLY | O_CREAT))
        {
            execv(program.c_str(), pointers.data());
        }
        _exit(127);
    }
    int status = 0;
    if (process < 0 || waitpid(process, &status, 0) != process)
    {
        throw std::runtime_error("the program does not run");
    }
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, out.empty() ? ReadFile(outPath) : "", ReadFile(errPath)};
}
