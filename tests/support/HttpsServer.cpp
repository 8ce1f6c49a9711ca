#include "tests/support/HttpsServer.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

void MakeCertificate(const std::string& name, const std::string& key, const std::string& certificate)
{
    const std::string kind = name == "127.0.0.1" ? "IP:" : "DNS:";
    const std::string command =
        "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 2 -subj /CN=" + name +
        " -addext subjectAltName=" + kind + name + " -keyout " + key + " -out " + certificate + " 2>/dev/null";
    if (std::system(command.c_str()) != 0)
    {
        throw std::runtime_error("openssl did not make a certificate");
    }
}

/// The program prints "ACCEPT 127.0.0.1:port" when it is ready.
std::string ReadPort(int output)
{
    std::string text;
    char letter;
    while (read(output, &letter, 1) == 1)
    {
        if (letter == '\n' && text.starts_with("ACCEPT "))
        {
            return text.substr(text.rfind(':') + 1);
        }
        text = letter == '\n' ? "" : text + letter;
    }
    throw std::runtime_error("openssl did not start the server");
}

} // namespace

HttpsServer::HttpsServer(const std::string& name)
{
    const std::string key = m_folder / "key.pem";
    const std::string certificate = Certificate();
    const std::string folder = m_folder / "";
    MakeCertificate(name, key, certificate);

    int output[2];
    if (pipe2(output, O_CLOEXEC) != 0)
    {
        throw std::runtime_error("no pipe");
    }
    m_process = fork();
    if (m_process == 0)
    {
        dup2(output[1], STDOUT_FILENO);
        dup2(open("/dev/null", O_RDWR), STDERR_FILENO);
        if (chdir(folder.c_str()) == 0)
        {
            execlp("openssl", "openssl", "s_server", "-accept", "127.0.0.1:0", "-key", key.c_str(), "-cert",
                   certificate.c_str(), "-HTTP", nullptr);
        }
        _exit(127);
    }
    close(output[1]);
    m_output = output[0];
    m_port = ReadPort(m_output);
}

HttpsServer::~HttpsServer()
{
    kill(m_process, SIGKILL);
    waitpid(m_process, nullptr, 0);
    close(m_output);
}
