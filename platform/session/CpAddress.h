#pragma once

#include "avcore/IZolHttp.h"
#include "common/wbaselib/wtypes.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>

/// The request for the address of a connection point from an HTTP(S) server, as docs/cp-address.md describes it.
namespace platform
{

/// Whether a server text is an HTTP or HTTPS address, in any letter case.
bool IsHttpServer(std::string_view server);

struct CpRequest
{
    std::string server;
    std::string appId;
    std::string token;
    std::string companyId;
};

std::string MakeCpUrl(const CpRequest& request);

struct CpAnswer
{
    HRESULT result = E_FAIL;
    std::string address; ///< the connection point, if `result` is 0
    std::string text;    ///< the reason, if `result` is not 0
};

/// Parses the body of an answer. Refuses a body longer than `longest` without reading it.
CpAnswer ParseCpAnswer(std::string_view body, size_t longest);

/// One blocking request with a limit in wall time. Another thread can end it early.
class HttpFetch
{
public:
    /// Sends the request on a thread of its own, waits, and parses the answer. After the time limit or an `Abort` it
    /// closes the request again and again until it has ended. Call it once.
    CpAnswer Run(avcore::IZolHttp& http, const CpRequest& request, std::chrono::milliseconds limit, size_t longest);

    /// [any] Ends the request, or prevents its beginning.
    void Abort();

    /// [any] Waits until `http` is no longer used. `Run` must be under way or follow, or `Abandon` must have been
    /// called.
    void WaitEnd();
    /// Replaces a `Run` that cannot be called.
    void Abandon();

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_aborted = false;
    bool m_answered = false;
    bool m_ended = false;
};

} // namespace platform
