#pragma once

#include <cstdint>
#include <string>

namespace avcore
{

/// HTTP for the platform: implemented by the module over the host's HTTP object, lent to `IZolConnection::Login` and
/// `RequestCPAddress` for servers that are HTTP or HTTPS addresses. Valid until the module removes its listeners from the
/// connection.
class IZolHttp
{
public:
    /// [platform] Sends a GET and blocks until the answer is there. The body whatever its status code; empty on any failure.
    /// A null `url` raises the exception that making a `std::string` of it raises; nothing is sent.
    virtual std::string HttpGet(const char* url) = 0;

    /// [platform] The same with POST. Neither text may be null.
    virtual std::string HttpPost(const char* url, const char* body) = 0;

    /// [any] Ends the first request under way whose URL is `url` with an empty answer; nothing when there is none.
    /// Always 0.
    virtual int32_t HttpClose(const char* url) = 0;

protected:
    ~IZolHttp() = default;
};

} // namespace avcore
