#pragma once

#include "avcore/IZolConnection.h"
#include "platform/base/Listeners.h"
#include "platform/engine/Engine.h"
#include "platform/session/CompanyDirectory.h"
#include "platform/session/CpAddress.h"
#include "platform/session/Group.h"
#include "platform/session/Invitations.h"
#include "platform/simulation/ServiceClient.h"
#include "platform/wire/Records.h"
#include "platform/wire/Topics.h"

#include <chrono>
#include <cstdint>
#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace platform
{

/// The arguments of a login.
struct LoginRequest
{
    bool gateway = false;
    std::string server;
    std::string appId;
    std::string token; ///< for a gateway login its three numbers, which a gateway may check
    std::string deviceId;
    std::string companyId;
    std::string userId;
    std::string mutex;
    std::string ext;
    bool force = false;
    bool registerUser = false;
    std::string groupId; ///< the meeting of a gateway login
};

/// The state behind one connection object: its login, its view of the company, its invitations and its group.
///
/// An operation of the host checks its arguments, stores what the host may read at once, and posts the rest. Everything
/// else runs on the platform thread, and no lock is held during an event. Each login has a number, by which it
/// recognises tasks of an earlier login. Each client of the backplane has a number, by which the session recognises its
/// events.
class Session : public std::enable_shared_from_this<Session>
{
public:
    explicit Session(std::shared_ptr<Engine> engine);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // [any] Operations of the host. Arguments are valid.

    template <typename Listener>
    HRESULT AddListener(Listener* listener)
    {
        const HRESULT result = m_listeners.Add(listener);
        if (result == S_OK)
        {
            PostOperation([](Session& self) { self.ListenToCompany(); });
        }
        return result;
    }

    template <typename Listener>
    HRESULT RemoveListener(Listener* listener)
    {
        const HRESULT result = m_listeners.Remove(listener);
        if (!m_listeners.IsAttended())
        {
            EndHttp();
        }
        return result;
    }

    HRESULT Login(LoginRequest request, avcore::IZolHttp* http);
    HRESULT Logout();
    HRESULT JoinGroup(const std::string& groupId);
    HRESULT LeaveGroup();
    HRESULT RequestCpAddress(const CpRequest& request, avcore::IZolHttp* http);
    /// Without ids it refreshes all users of the company.
    HRESULT Refresh(std::optional<std::vector<std::string>> ids, unsigned* requestId);
    HRESULT SetCustomInfo(const std::string& text);
    HRESULT InviteUsers(const std::vector<std::string>& ids, avcore::ZolTextPairList& results, const std::string& code,
                        const std::string& text, unsigned* inviteId);
    HRESULT CancelInvite(const std::vector<std::string>& ids, avcore::ZolTextPairList& results, unsigned inviteId);
    HRESULT AnswerInvite(bool accept, const std::string& inviterId, unsigned inviteId, const std::string& text);
    HRESULT SendReport(const std::string& json);

    /// The connection object is destroyed: no further event comes, and the login ends in order.
    void Abandon();

    /// The platform is about to end: the login ends without an event, and requests under way end early.
    void Halt();

    /// Nothing without a login.
    std::optional<SessionInfo> GetInfo() const;
    uint64_t GetBegin() const; ///< orders the logins of a platform

    // [platform] For the parts of the session.

    void Publish(BackplaneMessage message);
    /// A record waits while the connection is lost.
    void Post(const std::string& topic, PostRecord record);
    void Subscribe(const std::string& filter, Delivery delivery);
    void Unsubscribe(const std::string& filter);
    /// Runs `then` when no retained record has come for the time that a snapshot needs. Does not run it when the
    /// connection ends before.
    void AfterQuiet(std::function<void()> then);
    std::chrono::seconds GetGoneRecordLife() const;

    template <typename Listener, typename Event>
    void Emit(Event&& event)
    {
        m_listeners.Deliver<Listener>(
            [this, &event](Listener& listener)
            {
                try
                {
                    event(listener);
                }
                catch (const std::exception& exception)
                {
                    m_engine->Diagnose(std::string("a listener raised an exception: ") + exception.what());
                }
            });
    }

private:
    class Sink;

    enum class Phase
    {
        LoggedOut,
        FetchingAddress,
        Opening,    ///< waits for the answer of the backplane
        Checking,   ///< reads the other terminals of the user
        Announcing, ///< waits for its own record to arrive
        LoggedIn,
        Waiting, ///< for the next attempt to reconnect
    };

    struct RefreshRequest
    {
        unsigned id;
        std::optional<std::vector<std::string>> users;
    };

    struct Conflict
    {
        std::string deviceId;
        std::string custom;
        std::string ext;
    };

    bool PostOperation(std::function<void(Session&)> operation);
    HRESULT PostForLogin(uint64_t login, std::function<void(Session&)> operation);
    std::optional<uint64_t> FindPaasLogin() const;
    bool IsActive(uint64_t login) const;
    bool Deactivate(uint64_t login);
    void EndHttp();
    CpAnswer Fetch(HttpFetch& fetch, avcore::IZolHttp& http, const CpRequest& request);
    void ForgetFetch(const std::shared_ptr<HttpFetch>& fetch);

    void Begin(const LoginRequest& request, uint64_t login);
    void FetchAddress();
    void OnAddress(uint64_t login, const CpAnswer& answer);
    void Open();
    void OnOpened(uint64_t client);
    void OnRefused(uint64_t client, Refusal reason);
    void OnLost(uint64_t client);
    void OnTimeLimit(uint64_t client);
    void OnSubscribed(uint64_t client, const std::string& filter);
    void OnMessage(uint64_t client, const BackplaneMessage& message);

    void Check();
    void Announce();
    bool EnterLoggedIn();
    bool OnGroupJoined();
    void StartReconnect();
    void ScheduleReconnect();
    void FailAttempt(avcore::ZolPortErrCode code);
    void FailLogin(avcore::ZolPortErrCode code, const Conflict& conflict = {});
    void FailReconnect(avcore::ZolPortErrCode code, const std::string& deviceId = {});
    void YieldTo(const std::string& deviceId, const PresenceRecord& other);
    void Leave(bool sayGoodbye = true);

    void OnPresence(const std::string& userId, const std::string& deviceId, const PresenceRecord& record,
                    bool retained);
    void OnOwnRecord(const PresenceRecord& record);
    void OnOtherTerminal(const std::string& deviceId, const PresenceRecord& record);
    std::optional<Conflict> FindConflict() const;
    PresenceRecord MakeRecord(bool online) const;
    BackplaneMessage MakePresence(bool online) const;
    void EmitTerminal(const std::string& userId, const CompanyDirectory::Terminal& terminal);

    void ListenToCompany();
    void OnDirectoryComplete();
    void AnswerRefreshes();
    void AnswerRefresh(const RefreshRequest& request);
    void FailRefresh(const RefreshRequest& request);
    void SendInvites();

    void OnPost(const PostRecord& record);
    void FlushPosts();
    void StartGroup(uint64_t ticket);
    void StopGroup();
    void SetInfo(const std::function<void(SessionInfo&)>& change);

    const std::shared_ptr<Engine> m_engine;
    Listeners m_listeners;

    mutable std::mutex m_mutex; ///< guards what follows up to the next blank line
    uint64_t m_lastLogin = 0;   ///< the number of the latest login
    uint64_t m_active = 0;      ///< the login that the host has not ended and that has not failed; 0 = none
    bool m_online = false;      ///< the active login has succeeded and is connected
    bool m_abandoned = false;
    uint64_t m_begin = 0;
    SessionInfo m_info;
    uint64_t m_lastTicket = 0;
    uint64_t m_groupTicket = 0; ///< the join that the host has not ended and that has not failed; 0 = none
    std::string m_groupId;
    unsigned m_lastRequest = 0;
    avcore::IZolHttp* m_http = nullptr; ///< for the active login; null again when the connection is unattended
    std::vector<std::shared_ptr<HttpFetch>> m_fetches;
    std::shared_ptr<HttpFetch> m_loginFetch;
    CpRequest m_cpRequest; ///< the request that `m_cpAddress` answers
    std::string m_cpAddress;

    Invitations m_invitations;
    CompanyDirectory m_directory;

    // Only on the platform thread.
    Phase m_phase = Phase::LoggedOut;
    uint64_t m_login = 0; ///< the login that `m_phase` is about
    LoginRequest m_request;
    std::string m_connectionPoint;
    std::string m_sessionId;
    std::string m_clientId;
    std::string m_custom;
    CompanyTopics m_topics;
    bool m_reconnecting = false;
    bool m_force = false; ///< of the record; a reconnected login does not force
    uint64_t m_epoch = 0;
    uint64_t m_newestSeen = 0; ///< newest epoch among the user's terminals
    uint64_t m_clientSerial = 0;
    std::unique_ptr<BackplaneClient> m_client;
    std::set<std::string> m_waitFor;             ///< subscriptions that the check needs
    std::map<std::string, PresenceRecord> m_own; ///< the user's terminals, by device
    std::chrono::steady_clock::time_point m_lastRetained;
    std::chrono::milliseconds m_reconnectDelay{0};
    std::chrono::steady_clock::time_point m_giveUp;
    std::vector<RefreshRequest> m_refreshes;
    std::vector<Invitations::Outgoing> m_outgoing;
    std::vector<PostRecord> m_held;                           ///< records that came before the login result
    std::vector<std::pair<std::string, PostRecord>> m_unsent; ///< records to send after the reconnection
    SerialFilter m_serials;
    uint64_t m_directoryClient = 0; ///< the client that has subscribed to the company
    std::shared_ptr<Group> m_group;
    bool m_groupResultDue = false; ///< the result of the join is due
    bool m_groupLeaving = false;   ///< left while the connection was lost: the record must be taken back
};

} // namespace platform
