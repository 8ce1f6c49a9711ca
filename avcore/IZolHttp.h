#pragma once

#include <cstdint>
#include <string>

namespace avcore
{

/// HTTP for the platform. The module implements it over the host's HTTP object and passes it to `IZolConnection::Login`
/// and `RequestCPAddress`. It is valid until the module has removed its listeners from the connection.
///
/// A request has a time limit of 10 s of the processor time of the whole process (`clock()`), not of wall time. While
/// the process is idle the limit does not advance: a request that is never answered then blocks for ever. A platform
/// that needs a limit in wall time must end the request with `HttpClose`.
class IZolHttp
{
public:
    /// [platform] Sends a GET and blocks until the answer has come, `HttpClose` ends the request, or the time limit is
    /// reached. Returns the body, whatever its status code; empty on failure. May also be called on the thread of the
    /// module's call, from inside `Login` and `RequestCPAddress`. Must not be called on the thread on which the host's
    /// HTTP object delivers its events: it would wait for itself.
    ///
    /// A null `url` raises the exception of `std::string(nullptr)`; no request is sent.
    virtual std::string HttpGet(const char* url) = 0;

    /// [platform] Sends a POST; otherwise as `HttpGet`, for `body` as for `url`.
    virtual std::string HttpPost(const char* url, const char* body) = 0;

    /// [any] Ends the first request under way to exactly this URL, with an empty answer. Does nothing when there is
    /// none. Returns 0. A null `url` counts as an empty text.
    virtual int32_t HttpClose(const char* url) = 0;

protected:
    ~IZolHttp() = default;
};

} // namespace avcore
