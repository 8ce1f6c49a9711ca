#pragma once

#include "common/frameworksdk/IHttpClient.h"
#include "onlinehost/Counted.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace onlinehost
{

/// An HTTP object for `IOnlineManager::Initialize`: requests over HTTP and HTTPS, with verified certificates.
///
/// A host makes one for each component and destroys it after the component; `Component` does both. All events come on
/// one thread of the client, which starts with the first request; this thread is [http] in the headers.
///
/// For each request its listener gets `OnHeaderRespond` for each line of the answer's head without its line end, the
/// status line first; then `OnDataRespond` for each piece of the body; then `OnCompleteRespond` with the HTTP status
/// and the whole body, with a NUL after it. A request that fails completes with code 0 and a null body; so does one whose
/// header lines, with those of redirections and the trailers, are larger than 64 KiB. The client
/// follows redirections within HTTP and HTTPS, but not from HTTPS to HTTP, and reports only the last answer. It uses no
/// proxy and reads no environment variable.
class HttpClient final : public Counted<IHttpClient>
{
public:
    struct Options
    {
        std::string caFile; ///< PEM file of the trusted authorities; empty for those of the system
        std::chrono::milliseconds timeLimit{30000};               ///< for a whole request, redirections included
        size_t largestBody = size_t{16} << 20;                    ///< bytes; a request with a larger answer fails
        long redirections = 5;                                    ///< a request with more of them fails
        std::function<void(const std::string& reason)> onFailure; ///< [http] called for each failure; may be empty
    };

    /// Throws `Error` if the HTTP library cannot start.
    explicit HttpClient(Options options);

    /// As `Close`, and ends the thread. Must not be called from inside an event.
    ~HttpClient();

    /// [any] Completes all requests under way with code 0, and from now on every new one too. Returns when no request
    /// is left; from inside an event it returns at once.
    void Close();

    /// [any] Has the client's thread complete the requests under way with code 0, and returns without waiting for that.
    /// Later requests are sent as usual.
    void CancelRequests();

    void Reserved3() override {}
    void Reserved4() override {}
    void Reserved5() override {}
    void Reserved6() override {}
    void Reserved7() override {}
    void Reserved8() override {}

    /// [any] Starts a request and returns its id, which is never 0. It copies `request` with its texts, and borrows
    /// `notify` until `OnCompleteRespond` has returned. A request that cannot be sent (a null `request`, an unknown
    /// method, a bad address) fails as described above. With a null `notify` nothing is sent. `text` is not used.
    uint32_t Request(const HttpRequest* request, IHttpResponseNotify* notify,
                     WBASELIB::TStringBase<char>* text) override;

private:
    struct State;

    std::unique_ptr<State> m_state;
};

} // namespace onlinehost
