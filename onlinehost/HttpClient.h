#pragma once

#include "common/frameworksdk/IHttpClient.h"
#include "onlinehost/Counted.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace onlinehost
{

/// The host's HTTP object: real HTTP and HTTPS, certificates verified, every event on one thread of its own that starts
/// with the first request.
///
/// A request tells its listener of each line of the answer's head without its line end, the status line first; then of the
/// pieces of the body; then of its completion with the HTTP status and the whole body. Redirections are followed within
/// HTTP and HTTPS, never from HTTPS down to HTTP, and only the last answer is told. A request that fails, for whatever
/// reason, completes with code 0 and no body. No proxy is used, and no environment variable is read.
class HttpClient final : public Counted<IHttpClient>
{
public:
    struct Options
    {
        std::string caFile; ///< PEM file of the authorities to trust; empty: those of the system
        std::chrono::milliseconds timeLimit{30000}; ///< of a whole request
        size_t largestBody = size_t{16} << 20;      ///< bytes; a request whose answer is larger fails
        long redirections = 5;
        std::function<void(const std::string& text)> onFailure; ///< [http] told why a request failed; may be empty
    };

    explicit HttpClient(Options options);

    /// As `Close`, and ends the thread. Not from inside an event.
    ~HttpClient();

    /// [any] Ends all requests under way, and every later one at once, with code 0. Returns when none is left, unless it is
    /// called from inside an event.
    void Close();

    void Reserved3() override {}
    void Reserved4() override {}
    void Reserved5() override {}
    void Reserved6() override {}
    void Reserved7() override {}
    void Reserved8() override {}

    /// The id is never 0. A request that makes no sense fails like one that cannot be sent; only without a listener nobody
    /// is told.
    uint32_t Request(const HttpRequest* request, IHttpResponseNotify* notify,
                     WBASELIB::TStringBase<char>* text) override;

private:
    struct State;

    std::unique_ptr<State> m_state;
};

} // namespace onlinehost
