#pragma once

#include "avcore/IZolConnection.h"
#include "common/wbaselib/wrelaxed.h"
#include "onlinemanager/IMeetingTunnel.h"
#include "onlinemanager/IReconnection.h"
#include "onlinemanager/NotifyList.h"
#include "onlinemanager/ServiceUse.h"

namespace onlinemanager
{

/// The meeting tunnel over the older gateway connection: a meeting is a login there, and there is no group step.
class GwConnectionImp : public IMeetingTunnel, public avcore::IZolConnectionListener
{
public:
    /// `connection` is the manager's field: what it holds at the time of a call is used. `reconnection_notify` learns of
    /// reconnections; null is allowed.
    GwConnectionImp(avcore::IZolConnection*& connection, IReconnectionNotify* reconnection_notify);

    GwConnectionImp(const GwConnectionImp&) = delete;
    GwConnectionImp& operator=(const GwConnectionImp&) = delete;

    void AddNotify(IMeetingTunnelNotify* notify) override;
    void RemoveNotify(IMeetingTunnelNotify* notify) override;
    void RemoveAllNotify() override;
    bool JoinMeeting(const JoinData& data) override;
    bool LeaveMeeting() override;

    virtual bool InitModel();
    virtual bool UninitModel();
    virtual ~GwConnectionImp();

    /// The session, which is told of reconnections, goes away.
    void ForgetSession();

    void OnLoginResult(avcore::ZolPortErrCode code, const char* szConflictDeviceId, const char* szConflictCustomState,
                       const char* szConflictExtendInfo) override;
    void OnLogouted(avcore::ZolPortErrCode code) override;
    int32_t OnReconnectStart() override;
    void OnReconnectSucess() override;
    void OnReconnectFail(avcore::ZolPortErrCode code, const char* text) override;
    void OnJoinGroupResult(avcore::ZolPortErrCode code) override;
    void OnLeaveGroupResult(avcore::ZolPortErrCode code) override;
    void OnGroupUserJoined(const char* userId) override;
    void OnGroupUserLeaved(const char* userId) override;
    void OnGroupUserSync(const avcore::ZolTextList& users, const WBASELIB::Vector<avcore::ZolMediaInfo>& media,
                         bool complete) override;

    /// Gives the storage back without running the destructor, as the component tears all its services down.
    void Free();

    ServiceUse m_use;

private:
    enum State : int32_t
    {
        STATE_OUT = 0,
        STATE_JOINING = 1, ///< reconnecting as well
        STATE_IN_MEETING = 2,
    };

    void DeliverJoinResult(ErrCode code);

    NotifyList<IMeetingTunnelNotify> m_notify_list;
    avcore::IZolConnection*& m_zol_connection;
    WBASELIB::WRelaxed<IReconnectionNotify*> m_reconnection_notify;
    WBASELIB::WRelaxed<bool> m_join_pending = false;
    WBASELIB::WRelaxed<State> m_state = STATE_OUT;
    const TunnelType m_tunnel_type = TUNNEL_TYPE_GW;
};

} // namespace onlinemanager
