#pragma once

#include "avcore/IZolHttp.h"
#include "common/wbaselib/wtypes.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>

/// The request of a connection point's address from an HTTP(S) server, as docs/cp-address.md has it.
namespace platform
{

/// Whether a server text is an HTTP or HTTPS address; in any letter case.
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
    std::string address; ///< the connection point, when `result` is 0
    std::string text;    ///< the reason, when it is not
};

/// Reads the body of an answer; a body longer than `longest` is not looked at.
CpAnswer ParseCpAnswer(std::string_view body, size_t longest);

/// One blocking request with a limit of its own in wall time, which another thread can end early.
class HttpFetch
{
public:
    /// Asks on a thread made for it, waits, and reads the answer. Without an answer in time, or after `Abort`, the request is
    /// closed as often as it takes until it has ended. To be called once.
    CpAnswer Run(avcore::IZolHttp& http, const CpRequest& request, std::chrono::milliseconds limit, size_t longest);

    /// [any] Ends the request, or keeps it from beginning.
    void Abort();

    /// [any] Returns when `http` is not used any more. `Run` has to be under way or to come, or `Abandon` was called.
    void WaitEnd();
    /// Instead of `Run`, when it cannot be called.
    void Abandon();

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_aborted = false;
    bool m_answered = false;
    bool m_ended = false;
};

} // namespace platform
