#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

/// One request that the server has read, with its connection.
class HttpExchange
{
public:
    HttpExchange(int socket, std::string request) : m_socket(socket), m_request(std::move(request)) {}

    /// Head and body as the client sent them.
    const std::string& Request() const
    {
        return m_request;
    }

    /// "/path" of the request line.
    std::string Path() const;

    /// Returns false if the client has closed the connection.
    bool Send(std::string_view text) const;

    /// Sends a complete answer with its length.
    void Answer(const std::string& status, std::string_view body, const std::string& headers = "") const;

    /// Sends nothing until the client closes the connection or the server stops.
    void Stall() const;

private:
    const int m_socket;
    const std::string m_request;
};

/// A small HTTP server on 127.0.0.1 for tests: one thread and one request for each connection, which closes when the
/// handler returns.
class HttpServer
{
public:
    using Handler = std::function<void(const HttpExchange&)>;

    explicit HttpServer(Handler handler);
    ~HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    std::string Url(const std::string& path = "/") const
    {
        return "http://127.0.0.1:" + std::to_string(m_port) + path;
    }

private:
    void Accept();
    void Serve(int socket) const;

    const Handler m_handler;
    uint16_t m_port = 0;
    int m_listener = -1;
    std::atomic<bool> m_stopping{false};
    std::thread m_thread;
    std::vector<int> m_sockets;
    std::vector<std::thread> m_connections;
};

/// A port of 127.0.0.1 without a server.
uint16_t UnusedPort();
