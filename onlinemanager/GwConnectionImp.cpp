#include "onlinemanager/GwConnectionImp.h"

#include "commonutil/OrbLogUtil.h"
#include "commonutil/StringUtil.h"
#include "onlinemanager/JoinDataReference.h"

namespace onlinemanager
{

namespace
{

/// False when the text is not a number above 0. The gateway has no user 0.
bool ReadGatewayUser(const char* text, unsigned* userId)
{
    return commonutil::ReadUserId(text, userId) && *userId != 0;
}

} // namespace

GwConnectionImp::GwConnectionImp(avcore::IZolConnection*& connection, IReconnectionNotify* reconnection_notify)
    : m_zol_connection(connection),
      m_reconnection_notify(reconnection_notify)
{
}

bool GwConnectionImp::InitModel()
{
    ORB_LOG("%s()", "InitModel");
    if (m_zol_connection != nullptr)
    {
        m_zol_connection->AddListener(this);
        ORB_LOG("GwConnectionImp Register zol connection listen successed.");
    }
    return true;
}

bool GwConnectionImp::UninitModel()
{
    ORB_LOG("%s()", "UninitModel");
    if (m_zol_connection != nullptr)
    {
        m_zol_connection->RemoveListener(this);
        ORB_LOG("GwConnectionImp Unregister zol connection listen successed.");
    }
    return true;
}

void GwConnectionImp::ForgetSession()
{
    m_reconnection_notify = nullptr;
}

bool GwConnectionImp::JoinMeeting(const JoinData& data)
{
    ORB_LOG("%s()", "JoinMeeting");
    if (m_zol_connection == nullptr)
    {
        ORB_LOG("GwConnectionImp::JoinMeeting m_zol_connection = nullptr.");
        return false;
    }
    if (IsAbsent(data))
    {
        ORB_LOG("GwConnectionImp::JoinMeeting param error.");
        return false;
    }
    const std::string userId = commonutil::ToAString(data.user_id);
    if (m_zol_connection->LoginOldGw(data.guid, userId.c_str(), data.gw_param32, data.gw_param16, data.gw_param64) < 0)
    {
        ORB_LOG("GwConnectionImp::JoinMeeting LoginOldGw failed.");
        return false;
    }
    m_join_pending = true;
    m_state = STATE_JOINING;
    return true;
}

bool GwConnectionImp::LeaveMeeting()
{
    ORB_LOG("%s()", "LeaveMeeting");
    if (m_zol_connection == nullptr)
    {
        ORB_LOG("GwConnectionImp::LeaveMeeting m_zol_connection = nullptr.");
        return false;
    }
    m_state = STATE_OUT;
    if (m_zol_connection->Logout() < 0)
    {
        ORB_LOG("GwConnectionImp::LeaveMeeting Logout failed.");
        return false;
    }
    m_join_pending = false;
    return true;
}

void GwConnectionImp::OnLoginResult(avcore::ZolPortErrCode code, const char* /*szConflictDeviceId*/,
                                    const char* /*szConflictCustomState*/, const char* /*szConflictExtendInfo*/)
{
    const ServiceRef self(this);
    ORB_LOG("GwConnectionImp::OnJoinMeeting, errCode=%d.", static_cast<int>(code));
    m_join_pending = false;
    m_state = code == avcore::ZOL_PORT_SUCCESS ? STATE_IN_MEETING : STATE_OUT;
    Broadcast(&IMeetingTunnelNotify::OnJoinMeetingResult, static_cast<ErrCode>(code));
}

void GwConnectionImp::OnLogouted(avcore::ZolPortErrCode code)
{
    const ServiceRef self(this);
    // The garbled class name is a part of the text, on purpose: log filters look for it.
    ORB_LOG("GwConnectierrCodeonImp::OnLeaveMeeting, errCode=%d.", static_cast<int>(code));
    m_state = STATE_OUT;
    Broadcast(&IMeetingTunnelNotify::OnLeaveMeetingResult, static_cast<ErrCode>(code));
}

int32_t GwConnectionImp::OnReconnectStart()
{
    const ServiceRef self(this);
    if (m_join_pending)
    {
        m_join_pending = false;
        ORB_LOG("%s, join result notify", "OnReconnectStart");
        Broadcast(&IMeetingTunnelNotify::OnJoinMeetingResult, ERR_JOIN_ABORTED_BY_RECONNECT);
    }
    const State state = m_state;
    if (state == STATE_OUT)
    {
        return avcore::ZOL_RECONNECT_STOP;
    }
    if (state == STATE_IN_MEETING)
    {
        ORB_LOG("%s()", "OnReconnectStart");
        m_state = STATE_JOINING;
        if (IReconnectionNotify* const notify = m_reconnection_notify)
        {
            notify->OnReadyReconnect(m_tunnel_type);
        }
    }
    if (IReconnectionNotify* const notify = m_reconnection_notify)
    {
        notify->OnReconnectStart(m_tunnel_type);
    }
    return avcore::ZOL_RECONNECT_GO_ON;
}

void GwConnectionImp::OnReconnectSucess()
{
    const ServiceRef self(this);
    ORB_LOG("%s()", "OnReconnectSucess");
    m_state = STATE_IN_MEETING;
    if (IReconnectionNotify* const notify = m_reconnection_notify)
    {
        notify->OnReconnectSucess(m_tunnel_type);
    }
}

void GwConnectionImp::OnReconnectFail(avcore::ZolPortErrCode code, const char* /*text*/)
{
    const ServiceRef self(this);
    if (IReconnectionNotify* const notify = m_reconnection_notify)
    {
        notify->OnReconnectFail(m_tunnel_type, static_cast<ErrCode>(code));
    }
}

void GwConnectionImp::OnGroupUserJoined(const char* userId)
{
    const ServiceRef self(this);
    unsigned user = 0;
    if (!ReadGatewayUser(userId, &user))
    {
        ORB_LOG("GwConnectionImp::OnGroupUserJoined param error.");
        return;
    }
    Broadcast(&IMeetingTunnelNotify::OnUserJoined, user);
}

void GwConnectionImp::OnGroupUserLeaved(const char* userId)
{
    const ServiceRef self(this);
    unsigned user = 0;
    if (!ReadGatewayUser(userId, &user))
    {
        ORB_LOG("GwConnectionImp::OnGroupUserLeaved param error.");
        return;
    }
    Broadcast(&IMeetingTunnelNotify::OnUserLeaved, user);
}

} // namespace onlinemanager
