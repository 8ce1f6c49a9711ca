#pragma once

#include "common/frameworksdk/IUnknown.h"
#include "common/wbaselib/wstringbase.h"

#include <cstddef>

/// One request to the host's HTTP object. The record and its texts are valid until `Request` returns: the HTTP object
/// must copy what it needs.
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

/// Receives the events of HTTP requests. Implemented by the module; passed to `IHttpClient::Request`.
class IHttpResponseNotify
{
public:
    /// [http] A header of the answer. `data` has `len` bytes and need not end with a NUL. The module ignores it.
    virtual void OnHeaderRespond(unsigned int id, char* data, unsigned int len) = 0;

    /// [http] A piece of the body. The module ignores it and takes the body from `OnCompleteRespond`.
    virtual void OnDataRespond(unsigned int id, char* data, unsigned int len) = 0;

    /// [http] The request has ended; no further event may follow for this id. `code` is the HTTP status; the module
    /// only logs it. `data` is the whole body: `len` bytes and a NUL behind them. The module reads up to the first NUL.
    /// `data` may be null when `len` is 0: the request has no answer, and its caller gets an empty text. The module
    /// ignores an id that is not under way.
    virtual void OnCompleteRespond(unsigned int id, unsigned int code, char* data, unsigned int len) = 0;

protected:
    ~IHttpResponseNotify() = default;
};

/// The host's HTTP object. The host passes it to `IOnlineManager::Initialize` as `IUnknown*`; the module does not ask
/// for its interface. The module takes over one reference.
///
/// Deliver every event from another thread, never from inside `Request`. The module holds the lock of its list of
/// pending requests during `Request`, and the request enters the list when `Request` returns:
///
/// - An event from another thread may come before `Request` has returned. It waits for the lock and then finds the
///   request.
/// - `OnCompleteRespond` from inside `Request` finds no request. The answer is lost and the caller waits on. The call
///   also leaves the lock in an undefined state, so later requests may hang.
class IHttpClient : public IUnknown
{
public:
    virtual void Reserved3() = 0;
    virtual void Reserved4() = 0;
    virtual void Reserved5() = 0;
    virtual void Reserved6() = 0;
    virtual void Reserved7() = 0;
    virtual void Reserved8() = 0;

    /// [any] Starts a request and returns the id that its events carry. The id must differ from those of all requests
    /// under way; 0 is an id like any other. There is no result for failure: when the object cannot start the request,
    /// it must return an id and then end that id, from another thread, by `OnCompleteRespond` with a null `data` and a
    /// `len` of 0. Without that event the caller waits until it has reached the limit of `avcore::IZolHttp`.
    ///
    /// `notify` is valid until the request has ended. `text` is an empty text; the module does not read it afterwards.
    virtual uint32_t Request(const HttpRequest* request, IHttpResponseNotify* notify,
                             WBASELIB::TStringBase<char>* text) = 0;

protected:
    ~IHttpClient() = default;
};
