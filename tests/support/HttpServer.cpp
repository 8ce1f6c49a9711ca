#include "tests/support/HttpServer.h"

#include <arpa/inet.h>
#include <cstdlib>
#include <netinet/in.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

int BindToLocalPort(uint16_t& port)
{
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof(address);
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    if (bind(listener, generic, length) != 0 || getsockname(listener, generic, &length) != 0)
    {
        throw std::runtime_error("the test's server got no port");
    }
    port = ntohs(address.sin_port);
    return listener;
}

size_t BodyLength(const std::string& head)
{
    static constexpr std::string_view kName = "Content-Length: ";
    const size_t name = head.find(kName);
    return name == std::string::npos ? 0 : std::strtoul(head.c_str() + name + kName.size(), nullptr, 10);
}

std::string ReadRequest(int socket)
{
    std::string request;
    char buffer[4096];
    for (;;)
    {
        const size_t end = request.find("\r\n\r\n");
        if (end != std::string::npos && request.size() >= end + 4 + BodyLength(request))
        {
            return request;
        }
        const ssize_t length = recv(socket, buffer, sizeof(buffer), 0);
        if (length <= 0)
        {
            return request;
        }
        request.append(buffer, static_cast<size_t>(length));
    }
}

} // namespace

std::string HttpExchange::Path() const
{
    const size_t from = m_request.find(' ') + 1;
    return m_request.substr(from, m_request.find(' ', from) - from);
}

bool HttpExchange::Send(std::string_view text) const
{
    while (!text.empty())
    {
        const ssize_t sent = send(m_socket, text.data(), text.size(), MSG_NOSIGNAL);
        if (sent <= 0)
        {
            return false;
        }
        text.remove_prefix(static_cast<size_t>(sent));
    }
    return true;
}

void HttpExchange::Answer(const std::string& status, std::string_view body, const std::string& headers) const
{
    Send("HTTP/1.1 " + status + "\r\nContent-Length: " + std::to_string(body.size()) + "\r\nConnection: close\r\n" +
         headers + "\r\n");
    Send(body);
}

void HttpExchange::Stall() const
{
    char byte;
    while (recv(m_socket, &byte, 1, 0) > 0)
    {
    }
}

HttpServer::HttpServer(Handler handler) : m_handler(std::move(handler)), m_listener(BindToLocalPort(m_port))
{
    if (listen(m_listener, SOMAXCONN) != 0)
    {
        throw std::runtime_error("the test's server cannot listen");
    }
    m_thread = std::thread([this] { Accept(); });
}

HttpServer::~HttpServer()
{
    m_stopping = true;
    shutdown(m_listener, SHUT_RDWR);
    m_thread.join();
    for (const int socket : m_sockets)
    {
        shutdown(socket, SHUT_RDWR);
    }
    for (std::thread& connection : m_connections)
    {
        connection.join();
    }
    for (const int socket : m_sockets)
    {
        close(socket);
    }
    close(m_listener);
}

void HttpServer::Accept()
{
    while (!m_stopping)
    {
        const int socket = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (socket >= 0)
        {
            m_sockets.push_back(socket);
            m_connections.emplace_back([this, socket] { Serve(socket); });
        }
    }
}

void HttpServer::Serve(int socket) const
{
    const HttpExchange exchange(socket, ReadRequest(socket));
    if (!exchange.Request().empty())
    {
        m_handler(exchange);
    }
    shutdown(socket, SHUT_RDWR);
}

uint16_t UnusedPort()
{
    uint16_t port = 0;
    close(BindToLocalPort(port));
    return port;
}
