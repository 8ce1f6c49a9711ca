#pragma once

#include "avcore/IZolConnection.h"
#include "avcore/IZolOnline.h"
#include "common/wbaselib/wlock.h"
#include "common/wbaselib/wrelaxed.h"
#include "onlinemanager/HttpHelper.h"
#include "onlinemanager/IMeetingTunnel.h"
#include "onlinemanager/IPaasOnline.h"
#include "onlinemanager/ISerialization.h"
#include "onlinemanager/NotifyList.h"
#include "onlinemanager/ServiceUse.h"
#include "onlinemanager/UserOnlineImp.h"

#include <atomic>
#include <map>
#include <memory>
#include <string>

namespace onlinemanager
{

/// The online session over the PaaS connection. It listens to the connection for logins and logouts, its tunnel listens for
/// groups and reconnections; it receives the tunnel's and the gateway's reconnection events and passes them to the host.
class PaasOnlineImp : public IPaasOnline, public avcore::IZolConnectionListener, public IReconnectionNotify
{
public:
    /// The meeting tunnel that carries a meeting as a group of the session's connection.
    class ZolTunnel : public IMeetingTunnel, public avcore::IZolConnectionListener
    {
    public:
        ZolTunnel() = default;
        virtual ~ZolTunnel() = default;

        void AddNotify(IMeetingTunnelNotify* notify) override;
        void RemoveNotify(IMeetingTunnelNotify* notify) override;
        void RemoveAllNotify() override;
        bool JoinMeeting(const JoinData& data) override;
        bool LeaveMeeting() override;

        void OnLoginResult(avcore::ZolPortErrCode code, const char* szConflictDeviceId,
                           const char* szConflictCustomState, const char* szConflictExtendInfo) override;
        void OnJoinGroupResult(avcore::ZolPortErrCode code) override;
        void OnLeaveGroupResult(avcore::ZolPortErrCode code) override;
        void OnLogouted(avcore::ZolPortErrCode code) override;
        int32_t OnReconnectStart() override;
        void OnReconnectSucess() override;
        void OnReconnectFail(avcore::ZolPortErrCode code, const char* text) override;
        void OnGroupUserJoined(const char* userId) override;
        void OnGroupUserLeaved(const char* userId) override;
        void OnGroupUserSync(const avcore::ZolTextList& users, const WBASELIB::Vector<avcore::ZolMediaInfo>& media,
                             bool complete) override;

    private:
        friend class PaasOnlineImp;

        int32_t StopReconnect(PaasOnlineImp& session);

        NotifyList<IMeetingTunnelNotify> m_notify_list;
        WBASELIB::WRelaxed<PaasOnlineImp*> m_session = nullptr; ///< from `InitModel` to `UninitModel`
        std::atomic<bool> m_join_pending{false};
        const TunnelType m_tunnel_type = TUNNEL_TYPE_PAAS;
    };

    /// `connection` is the manager's field: what it holds at the time of a call is used. `outer` is the host's HTTP object;
    /// null leaves the session without HTTP.
    PaasOnlineImp(avcore::IZolConnection*& connection, IUnknown* outer);

    PaasOnlineImp(const PaasOnlineImp&) = delete;
    PaasOnlineImp& operator=(const PaasOnlineImp&) = delete;

    void AddNotify(IPaasOnlineNotify* notify) override;
    void RemoveNotify(IPaasOnlineNotify* notify) override;
    void RemoveAllNotify() override;
    bool InitModel(IComponentFactory* factory) override;
    bool UninitModel() override;
    bool Login(const LoginParam& param, bool force) override;
    bool RequestCPAddress(const LoginParam& param) override;
    bool Relogin(bool force) override;
    bool Logout() override;
    ConnectPropertyResult GetConnectProperty(ConnectProperty key, char* buffer, int size) override;
    bool TriggerNotify() override;
    int32_t GetUserOnline(IUserOnline** out) override;
    int32_t GetMeetingTunnel(IMeetingTunnel** out) override;
    void SetReconnectionStrategy(IReconnectionStrategy* strategy) override;

    virtual ~PaasOnlineImp();

    void OnLoginResult(avcore::ZolPortErrCode code, const char* szConflictDeviceId, const char* szConflictCustomState,
                       const char* szConflictExtendInfo) override;
    void OnJoinGroupResult(avcore::ZolPortErrCode code) override;
    void OnLeaveGroupResult(avcore::ZolPortErrCode code) override;
    void OnLogouted(avcore::ZolPortErrCode code) override;
    int32_t OnReconnectStart() override;
    void OnReconnectSucess() override;
    void OnReconnectFail(avcore::ZolPortErrCode code, const char* text) override;
    void OnGroupUserJoined(const char* userId) override;
    void OnGroupUserLeaved(const char* userId) override;
    void OnGroupUserSync(const avcore::ZolTextList& users, const WBASELIB::Vector<avcore::ZolMediaInfo>& media,
                         bool complete) override;

    void OnReadyReconnect(TunnelType type) override;
    void OnReconnectStart(TunnelType type) override;
    void OnReconnectSucess(TunnelType type) override;
    void OnReconnectFail(TunnelType type, ErrCode code) override;

    /// `ReleaseService` forgets the session's own listeners only.
    void ForgetTunnelListeners();

    /// Gives the storage back without running the destructor, which is how the component has always torn its services down.
    void Free();

    ServiceUse m_use;

private:
    enum LoginState : int32_t
    {
        LOGIN_STATE_LOGGED_OUT = 0,
        LOGIN_STATE_LOGGING_IN = 1, ///< reconnecting as well
        LOGIN_STATE_LOGGED_IN = 2,
    };

    bool HasTransportFor(const std::string& server) const;
    bool IsLoggedIn();
    uint32_t UserId();
    void SetProperty(ConnectProperty key, const char* value);
    std::shared_ptr<ISerialization> Serialization();
    ServiceRef<UserOnlineImp> UserOnline();
    void TellUserOnline(UserOnlineImp& userOnline, bool loggedIn);
    void SendLoginState();

    NotifyList<IPaasOnlineNotify> m_notify_list;
    ZolTunnel m_tunnel;
    avcore::IZolConnection*& m_zol_connection;
    avcore::IZolOnline* m_zol_online = nullptr; ///< read by platform threads: relaxed accesses only
    WBASELIB::WRelaxed<LoginState> m_login_state = LOGIN_STATE_LOGGED_OUT;
    WBASELIB::WRelaxed<IReconnectionStrategy*> m_reconnection_strategy = nullptr;
    std::unique_ptr<HttpHelper> m_http_helper; ///< null without an HTTP object

    WBASELIB::WLock m_lock; ///< guards everything below
    LoginParam m_login_param;
    std::shared_ptr<ISerialization> m_serialization;
    UserOnlineImp* m_user_online = nullptr; ///< owned
    std::map<ConnectProperty, std::string> m_connect_property;
};

} // namespace onlinemanager
