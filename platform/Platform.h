#pragma once

#include "avcore/IZolConnection.h"
#include "platform/Faults.h"
#include "platform/PlatformOptions.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// The platform library `avcore` for use without a server. docs/platform.md describes what it promises beyond the
/// interfaces in avcore/. docs/cp-address.md describes the answer that it expects from an HTTP(S) server.
namespace platform
{

class Engine;

inline constexpr HRESULT kClassNotAvailable = MakeResult(0x80040111); ///< the class id is unknown
inline constexpr HRESULT kNoAggregation = MakeResult(0x80040110);     ///< an outer object was given

/// Results of a failed `RequestCPAddress`; docs/cp-address.md describes each.
inline constexpr HRESULT kCpNoHttp = MakeResult(0x80040201);        ///< an HTTP(S) server without an HTTP object
inline constexpr HRESULT kCpNoAnswer = MakeResult(0x80040202);      ///< the answer was empty, or the request was closed
inline constexpr HRESULT kCpTimeLimit = MakeResult(0x80040203);     ///< the time limit passed without an answer
inline constexpr HRESULT kCpTooLong = MakeResult(0x80040204);       ///< the answer exceeds `httpLongestAnswer`
inline constexpr HRESULT kCpNotUnderstood = MakeResult(0x80040205); ///< the answer is not the expected JSON document
inline constexpr HRESULT kCpRefused = MakeResult(0x80040206);       ///< the server refused the request

/// The present state of one login, for diagnosis.
struct SessionInfo
{
    enum class State
    {
        LoggingIn,
        LoggedIn,
        Reconnecting,
    };

    State state = State::LoggingIn;
    bool gateway = false; ///< made by `LoginOldGw`: `groupId` is the meeting, `deviceId` is "gateway"
    std::string appId;    ///< empty for a gateway login, as are `companyId`, `mutex`, `ext` and `server`
    std::string companyId;
    std::string userId;
    std::string deviceId;
    std::string mutex;
    std::string ext;
    std::string custom;          ///< custom information of the terminal
    std::string server;          ///< the server text given to `Login`
    std::string connectionPoint; ///< the address that the login used
    std::string groupId;         ///< the group that the connection has joined; empty without a group
    std::string clientId;        ///< client id of the session at the backplane
    bool force = false;          ///< as given to `Login`
    bool registerUser = false;   ///< as given to `Login`; the platform keeps the value and does not use it
};

/// One world of companies, meetings and messages in this process. Connections of one `Platform` see each other;
/// connections of different platforms never do.
///
/// A `Platform` runs one thread, the platform thread. Every event of every connection runs on it, one at a time. HTTP
/// requests run on short-lived threads of their own. The platform holds no lock during an event, so a listener may call
/// any operation from inside one: log out, remove listeners, release the connection, order faults.
///
/// [any] Every operation may be called on any thread.
class Platform
{
public:
    explicit Platform(const PlatformOptions& options = {});
    /// Ends all logins without further events and waits for the platform's threads. Must not be called from inside an
    /// event. Connections may outlive the platform: their operations then fail with `E_FAIL`.
    ~Platform();

    Platform(const Platform&) = delete;
    Platform& operator=(const Platform&) = delete;

    /// The platform that all hosts of a process share. The first call creates it; it lives until the process ends.
    static Platform& Default();

    /// Creates a platform object for a host's component factory. For `avcore::CLSID_ZolConnection` the object is a
    /// connection, handed out as `avcore::IID_IZolConnection` or `IID_IUnknown` with one reference, which the caller
    /// owns.
    ///
    /// Results: `E_POINTER` when `out` is null; `kNoAggregation` when `outer` is not null; `kClassNotAvailable` for
    /// another class; `E_NOINTERFACE` for another interface. The last three set `*out` to null.
    HRESULT CreateComponent(const CLSID& clsid, const IID& iid, IUnknown* outer, void** out);

    void SetOptions(const PlatformOptions& options);
    PlatformOptions GetOptions() const;

    Faults& GetFaults();

    /// Receives a text for each problem that no result code describes, such as a failed request of a connection point.
    /// The text is valid during the call. The function runs on the platform's threads and on the host's threads,
    /// without a lock. An empty function ends the reports. A report that is under way when `SetDiagnostic` returns may
    /// still use the previous function.
    using Diagnostic = std::function<void(std::string_view text)>;
    void SetDiagnostic(Diagnostic diagnostic);

    /// Sends a message from one user of a company to another. Every terminal of the receiver gets it by
    /// `OnUserMsgIncome`. The sender may be offline. Returns the id of the message, which is never 0.
    uint32_t SendUserMessage(const std::string& appId, const std::string& companyId, const std::string& fromUserId,
                             const std::string& toUserId, const std::string& text);
    /// Sends a message to all members of a group, who get it by `OnGroupMsgIncome`. Terminals of the sender in the
    /// group get it as well.
    uint32_t SendGroupMessage(const std::string& groupId, const std::string& fromUserId, const std::string& text);

    /// Returns the id of the group that a gateway login with this meeting id joins: 36 characters, lower-case
    /// hexadecimal digits and hyphens, without braces. A PaaS connection that joins this group is in the same meeting.
    static std::string MeetingGroupId(const GUID& meeting);

    /// Returns all logins that are under way or established, in the order in which they began.
    std::vector<SessionInfo> Sessions() const;

    /// Waits until the platform thread is idle and every earlier operation has had its effects. Does not wait for HTTP
    /// requests, delayed deliveries, reconnections, or answers of a crowd that are still due. Meant for tests and
    /// demonstrations. Must not be called from inside an event.
    void Settle();
    /// The same, for at most `limit`: false when something was left to do then.
    bool SettleFor(std::chrono::milliseconds limit);

    /// The engine, for the platform's own classes.
    const std::shared_ptr<Engine>& GetEngine() const;

private:
    std::shared_ptr<Engine> m_engine;
    std::unique_ptr<Faults> m_faults;
};

} // namespace platform
