#pragma once

#include "common/wbaselib/wrelaxed.h"
#include "onlinemanager/ConnectionListener.h"
#include "onlinemanager/IMeetingTunnel.h"
#include "onlinemanager/IReconnection.h"
#include "onlinemanager/Service.h"

namespace onlinemanager
{

/// The meeting tunnel over the older gateway connection. There a meeting is a login, and there are no groups.
class GwConnectionImp : public OwnedService<IMeetingTunnel, IMeetingTunnelNotify>, public ConnectionListener
{
public:
    /// `connection` is the manager's field: every call uses the connection that the field holds at that time.
    /// `reconnection_notify` learns of reconnections and may be null.
    GwConnectionImp(avcore::IZolConnection*& connection, IReconnectionNotify* reconnection_notify);

    bool JoinMeeting(const JoinData& data) override;
    bool LeaveMeeting() override;

    // The slots of the virtual operations below follow those of the interface, in this order.
    virtual bool InitModel();
    virtual bool UninitModel();
    virtual ~GwConnectionImp() = default;

    void OnLoginResult(avcore::ZolPortErrCode code, const char* szConflictDeviceId, const char* szConflictCustomState,
                       const char* szConflictExtendInfo) override;
    void OnLogouted(avcore::ZolPortErrCode code) override;
    int32_t OnReconnectStart() override;
    void OnReconnectSucess() override;
    void OnReconnectFail(avcore::ZolPortErrCode code, const char* text) override;
    // The gateway has no groups and ignores the three group events. They are declared here because each keeps its slot.
    void OnJoinGroupResult(avcore::ZolPortErrCode /*code*/) override {}
    void OnLeaveGroupResult(avcore::ZolPortErrCode /*code*/) override {}
    void OnGroupUserJoined(const char* userId) override;
    void OnGroupUserLeaved(const char* userId) override;
    void OnGroupUserSync(const avcore::ZolTextList& /*users*/, const WBASELIB::Vector<avcore::ZolMediaInfo>& /*media*/,
                         bool /*complete*/) override
    {
    }

    /// Stops the reports of reconnections, because the session, which receives them, ends.
    void ForgetSession();

private:
    enum State : int32_t
    {
        STATE_OUT = 0,
        STATE_JOINING = 1, ///< or reconnecting
        STATE_IN_MEETING = 2,
    };

    avcore::IZolConnection*& m_zol_connection;
    WBASELIB::WRelaxed<IReconnectionNotify*> m_reconnection_notify;
    WBASELIB::WRelaxed<bool> m_join_pending = false;
    WBASELIB::WRelaxed<State> m_state = STATE_OUT;
    const TunnelType m_tunnel_type = TUNNEL_TYPE_GW;
};

} // namespace onlinemanager
