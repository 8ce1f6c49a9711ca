#pragma once

#include "avcore/IZolConnection.h"
#include "platform/Faults.h"
#include "platform/PlatformOptions.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// The platform library `avcore` for use without a server. What it promises beyond the interfaces in avcore/ stands in
/// docs/platform.md; the answer it expects from an HTTP(S) server in docs/cp-address.md.
namespace platform
{

class Engine;

inline constexpr HRESULT kClassNotAvailable = MakeResult(0x80040111); ///< no such class
inline constexpr HRESULT kNoAggregation = MakeResult(0x80040110);     ///< an outer object was given

/// Why `RequestCPAddress` failed; docs/cp-address.md tells what each means.
inline constexpr HRESULT kCpNoHttp = MakeResult(0x80040201);        ///< an HTTP(S) server, but no HTTP object
inline constexpr HRESULT kCpNoAnswer = MakeResult(0x80040202);      ///< the answer was empty, or the request was closed
inline constexpr HRESULT kCpTimeLimit = MakeResult(0x80040203);     ///< no answer in time
inline constexpr HRESULT kCpTooLong = MakeResult(0x80040204);       ///< the answer is too long
inline constexpr HRESULT kCpNotUnderstood = MakeResult(0x80040205); ///< the answer is not the document
inline constexpr HRESULT kCpRefused = MakeResult(0x80040206);       ///< the answer is a refusal

/// One login as it stands, for diagnosis.
struct SessionInfo
{
    enum class State
    {
        LoggingIn,
        LoggedIn,
        Reconnecting,
    };

    State state = State::LoggingIn;
    bool gateway = false; ///< by `LoginOldGw`; then `groupId` is the meeting and `deviceId` is "gateway"
    std::string appId;    ///< empty for a gateway login, like the next one and `mutex`, `ext`, `server`
    std::string companyId;
    std::string userId;
    std::string deviceId;
    std::string mutex;
    std::string ext;
    std::string custom;          ///< the terminal's custom information
    std::string server;          ///< as given to `Login`
    std::string connectionPoint; ///< where the login went
    std::string groupId;         ///< the group that the connection is in; empty for none
    std::string clientId;        ///< the session's client id at the backplane
    bool force = false;          ///< as given to `Login`
    bool registerUser = false;   ///< as given to `Login`; kept, and without effect here
};

/// One message service, company and meeting world in this process: all connections of one `Platform` see each other, those
/// of different ones never do.
///
/// A `Platform` has one thread of its own, on which every event of every connection runs, one at a time ("platform
/// thread"), and short-lived threads for HTTP requests. No lock is held during an event, so a listener may call anything
/// from inside one: log out, remove itself or others, release the connection, order faults.
///
/// Every operation may be called on any thread.
class Platform
{
public:
    explicit Platform(const PlatformOptions& options = {});
    /// Ends all logins without further events and waits for the platform's threads; not allowed from inside an event.
    /// Connections may outlive the platform: their operations then fail with `E_FAIL`.
    ~Platform();

    Platform(const Platform&) = delete;
    Platform& operator=(const Platform&) = delete;

    /// The one that hosts share; made at the first call, gone at the end of the process.
    static Platform& Default();

    /// For a host's component factory. Makes a connection for `avcore::CLSID_ZolConnection` and hands out its
    /// `avcore::IID_IZolConnection` or `IID_IUnknown` with one reference. `E_POINTER` when `out` is null; otherwise a
    /// failure leaves null there: `kNoAggregation` when `outer` is not null, `kClassNotAvailable` for another class,
    /// `E_NOINTERFACE` for another interface.
    HRESULT CreateComponent(const CLSID& clsid, const IID& iid, IUnknown* outer, void** out);

    void SetOptions(const PlatformOptions& options);
    PlatformOptions GetOptions() const;

    Faults& GetFaults();

    /// Where the platform says in words what happened, failed requests of connection points above all; an empty function
    /// ends it. Called on any of the platform's threads and on the host's own, without a lock; the text ends with the call.
    /// A call that is under way while this one returns may still use the former function.
    using Diagnostic = std::function<void(std::string_view text)>;
    void SetDiagnostic(Diagnostic diagnostic);

    /// A message from a user to a user of the same company; every terminal of the receiver gets it by `OnUserMsgIncome`. The
    /// sender need not be logged in. Result: the message's id, never 0.
    uint32_t SendUserMessage(const std::string& appId, const std::string& companyId, const std::string& fromUserId,
                             const std::string& toUserId, const std::string& text);
    /// The same to everybody in a group, `OnGroupMsgIncome`; members of the same user as the sender get it too.
    uint32_t SendGroupMessage(const std::string& groupId, const std::string& fromUserId, const std::string& text);

    /// The group that a gateway login with this meeting id joins: 36 characters, lower-case hexadecimal digits and hyphens,
    /// no braces. A PaaS connection that joins the group of this text is in the same meeting.
    static std::string MeetingGroupId(const GUID& meeting);

    /// Every login under way or standing, in the order of their beginning.
    std::vector<SessionInfo> Sessions() const;

    /// Waits until the platform thread has nothing left to do and every operation has had its effects; HTTP requests, delayed
    /// deliveries and times to come (of a reconnection, of a crowd's answers) excepted. For tests and programs that tell a
    /// story; not from inside an event.
    void Settle();

    /// What the platform's own parts share.
    const std::shared_ptr<Engine>& GetEngine() const;

private:
    std::shared_ptr<Engine> m_engine;
    std::unique_ptr<Faults> m_faults;
};

} // namespace platform
