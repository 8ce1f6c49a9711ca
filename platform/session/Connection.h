#pragma once

#include "platform/session/Session.h"

#include <atomic>
#include <memory>

namespace platform
{

/// The connection object of the host: checks arguments, counts references and forwards to the session, which may
/// outlive it for a short time.
class Connection final : public avcore::IZolConnection
{
public:
    explicit Connection(const std::shared_ptr<Engine>& engine);
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    HRESULT QueryInterface(const GUID& iid, void** out) override;
    uint32_t AddRef() override;
    uint32_t Release() override;

    HRESULT AddListener(avcore::IZolConnectionListener* listener) override;
    HRESULT RemoveListener(avcore::IZolConnectionListener* listener) override;
    HRESULT Login(const char* server, avcore::IZolHttp* http, const char* appid, const char* token,
                  const char* deviceid, const char* companyid, const char* userid, const char* mutex, const char* ext,
                  bool force, bool registeruser) override;
    HRESULT LoginOldGw(const GUID& guid, const char* userid, uint32_t param32, uint16_t param16,
                       uint64_t param64) override;
    HRESULT Logout() override;
    HRESULT JoinGroup(const char* groupId) override;
    HRESULT LeaveGroup() override;
    HRESULT GetComponent(const IID& iid, void** out) override;
    HRESULT RequestCPAddress(const char* server, avcore::IZolHttp* http, const char* appid, const char* token,
                             const char* companyid) override;

private:
    class Online final : public avcore::IZolOnline
    {
    public:
        explicit Online(Session& session) : m_session(session) {}

        void Reserved0() override {}
        HRESULT AddListener(avcore::IZolOnlineListener* listener) override;
        HRESULT RemoveListener(avcore::IZolOnlineListener* listener) override;
        HRESULT RefreshUsersStatus(const avcore::ZolTextList& ids, unsigned* requestId) override;
        HRESULT RefreshAllUsersStatus(unsigned* requestId) override;
        void Reserved5() override {}
        HRESULT SetUserCustomInfo(const char* text) override;
        HRESULT InviteUsers(const avcore::ZolTextList& ids, avcore::ZolTextPairList& results, const char* code,
                            const char* json, unsigned* inviteId) override;
        HRESULT CancelInvite(const avcore::ZolTextList& ids, avcore::ZolTextPairList& results,
                             unsigned inviteId) override;
        HRESULT AcceptInvite(const char* userId, unsigned inviteId, const char* json) override;
        HRESULT RejectInvite(const char* userId, unsigned inviteId, const char* json) override;

    private:
        Session& m_session;
    };

    class TMsg final : public avcore::IZolTMsg
    {
    public:
        explicit TMsg(Session& session) : m_session(session) {}

        void Reserved0() override {}
        HRESULT AddListener(avcore::IZolTMsgListener* listener) override;
        HRESULT RemoveListener(avcore::IZolTMsgListener* listener) override;

    private:
        Session& m_session;
    };

    class MdsClient final : public avcore::IZolMdsClient
    {
    public:
        explicit MdsClient(Session& session) : m_session(session) {}

        void Reserved0() override {}
        HRESULT AddListener(avcore::IZolMdsClientListener* listener) override;
        HRESULT RemoveListener(avcore::IZolMdsClientListener* listener) override;
        HRESULT SendMdsData(const char* json) override;

    private:
        Session& m_session;
    };

    ~Connection() = default;

    std::atomic<uint32_t> m_references{1};
    const std::shared_ptr<Session> m_session;
    Online m_online;
    TMsg m_tMsg;
    MdsClient m_mdsClient;
};

} // namespace platform
