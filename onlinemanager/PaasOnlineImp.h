#pragma once

#include "avcore/IZolOnline.h"
#include "common/wbaselib/wlock.h"
#include "common/wbaselib/wrelaxed.h"
#include "onlinemanager/ConnectionListener.h"
#include "onlinemanager/HttpHelper.h"
#include "onlinemanager/IMeetingTunnel.h"
#include "onlinemanager/IPaasOnline.h"
#include "onlinemanager/SerializationOwner.h"
#include "onlinemanager/Service.h"
#include "onlinemanager/UserOnlineImp.h"

#include <atomic>
#include <map>
#include <memory>
#include <string>

namespace onlinemanager
{

/// The online session over the PaaS connection. The session handles the connection's logins and logouts, its tunnel
/// handles groups and reconnections. The session receives the reconnection events of both tunnels and passes them to
/// the host.
class PaasOnlineImp : public OwnedService<IPaasOnline, IPaasOnlineNotify>,
                      public ConnectionListener,
                      public IReconnectionNotify,
                      private SerializationOwner
{
public:
    /// The meeting tunnel over the session's connection. There a meeting is a group.
    class ZolTunnel : public NotifyingService<IMeetingTunnel, IMeetingTunnelNotify>, public ConnectionListener
    {
    public:
        ZolTunnel() = default;
        virtual ~ZolTunnel() = default;

        bool JoinMeeting(const JoinData& data) override;
        bool LeaveMeeting() override;

        void OnJoinGroupResult(avcore::ZolPortErrCode code) override;
        void OnLeaveGroupResult(avcore::ZolPortErrCode code) override;
        int32_t OnReconnectStart() override;
        void OnReconnectSucess() override;
        void OnReconnectFail(avcore::ZolPortErrCode code, const char* text) override;
        void OnGroupUserJoined(const char* userId) override;
        void OnGroupUserLeaved(const char* userId) override;

    private:
        friend class PaasOnlineImp;

        int32_t StopReconnect(PaasOnlineImp& session);

        WBASELIB::WRelaxed<PaasOnlineImp*> m_session = nullptr; ///< from `InitModel` to `UninitModel`
        std::atomic<bool> m_join_pending{false};
        const TunnelType m_tunnel_type = TUNNEL_TYPE_PAAS;
    };

    /// `connection` is the manager's field: every call uses the connection that the field holds at that time. `outer`
    /// is the host's HTTP object; with null the session refuses HTTP and HTTPS servers.
    PaasOnlineImp(avcore::IZolConnection*& connection, IUnknown* outer);

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
    void OnLogouted(avcore::ZolPortErrCode code) override;

    // Without these the operations below would hide the platform's events of the same names.
    using ConnectionListener::OnReconnectFail;
    using ConnectionListener::OnReconnectStart;
    using ConnectionListener::OnReconnectSucess;
    void OnReadyReconnect(TunnelType type) override;
    void OnReconnectStart(TunnelType type) override;
    void OnReconnectSucess(TunnelType type) override;
    void OnReconnectFail(TunnelType type, ErrCode code) override;

    /// Removes the tunnel's listeners: `ReleaseService` removes those of the session itself only.
    void ForgetTunnelListeners();

private:
    enum LoginState : int32_t
    {
        LOGIN_STATE_LOGGED_OUT = 0,
        LOGIN_STATE_LOGGING_IN = 1, ///< or reconnecting
        LOGIN_STATE_LOGGED_IN = 2,
    };

    bool HasTransportFor(const std::string& server) const;
    bool IsLoggedIn();
    uint32_t UserId();
    void SetProperty(ConnectProperty key, const char* value);
    ServiceRef<UserOnlineImp> UserOnline();
    void TellUserOnline(UserOnlineImp& userOnline, bool loggedIn);
    void SendLoginState();

    ZolTunnel m_tunnel;
    avcore::IZolConnection*& m_zol_connection;
    avcore::IZolOnline* m_zol_online = nullptr; ///< platform threads read it, so every access is a relaxed atomic one
    WBASELIB::WRelaxed<LoginState> m_login_state = LOGIN_STATE_LOGGED_OUT;
    WBASELIB::WRelaxed<IReconnectionStrategy*> m_reconnection_strategy = nullptr;
    std::unique_ptr<HttpHelper> m_http_helper; ///< null when the host gave no HTTP object

    WBASELIB::WLock m_lock; ///< guards everything below
    LoginParam m_login_param;
    UserOnlineImp* m_user_online = nullptr; ///< owned
    std::map<ConnectProperty, std::string> m_connect_property;
};

} // namespace onlinemanager
