#pragma once

#include "common/frameworksdk/IUnknown.h"
#include "common/wbaselib/wstringbase.h"

#include <cstddef>

/// One request to the host's HTTP object. Lives on the caller's stack: the HTTP object copies what it needs before
/// `Request` returns.
struct HttpRequest
{
    uint32_t method;    ///< `kHttpMethodGet` or `kHttpMethodPost`
    uint32_t constant2; ///< always 2
    uint32_t constant1; ///< always 1
    int64_t zero1;      ///< always 0
    int64_t zero2;      ///< always 0
    uint32_t constant5; ///< always 5
    const char* url;
    const char* body; ///< the POST body; an empty text for GET
};
static_assert(sizeof(HttpRequest) == 56);
static_assert(offsetof(HttpRequest, zero1) == 16 && offsetof(HttpRequest, constant5) == 32);
static_assert(offsetof(HttpRequest, url) == 40 && offsetof(HttpRequest, body) == 48);

inline constexpr uint32_t kHttpMethodGet = 1;
inline constexpr uint32_t kHttpMethodPost = 2;

/// Receives the events of HTTP requests. Implemented by whoever sends a request.
class IHttpResponseNotify
{
public:
    /// [http] A header of the answer. `data` has `len` bytes and need not be terminated.
    virtual void OnHeaderRespond(unsigned int id, char* data, unsigned int len) = 0;

    /// [http] A piece of the body.
    virtual void OnDataRespond(unsigned int id, char* data, unsigned int len) = 0;

    /// [http] The request has ended; nothing follows for this id. `code` is the HTTP status, `data`/`len` the whole body.
    /// `data` is terminated by a NUL behind its `len` bytes; it may be null when `len` is 0.
    virtual void OnCompleteRespond(unsigned int id, unsigned int code, char* data, unsigned int len) = 0;

protected:
    ~IHttpResponseNotify() = default;
};

/// The host's HTTP object, given to `IOnlineManager::Initialize` as `IUnknown*`.
///
/// The module calls `Request` while it holds the lock of its list of pending requests, so the object must deliver every
/// event from a thread of its own, never from inside `Request`, or the two wait for each other forever.
/// The module takes over one reference with `Initialize`.
class IHttpClient : public IUnknown
{
public:
    virtual void Reserved3() = 0;
    virtual void Reserved4() = 0;
    virtual void Reserved5() = 0;
    virtual void Reserved6() = 0;
    virtual void Reserved7() = 0;
    virtual void Reserved8() = 0;

    /// [any] Starts a request and returns the id that its events carry. `notify` is kept until the request has completed.
    /// `text` is the caller's empty text; it is not read back.
    virtual uint32_t Request(const HttpRequest* request, IHttpResponseNotify* notify,
                             WBASELIB::TStringBase<char>* text) = 0;

protected:
    ~IHttpClient() = default;
};
