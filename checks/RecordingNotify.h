#pragma once

#include "checks/Journal.h"
#include "onlinemanager/IMeetingTunnel.h"
#include "onlinemanager/IPaasMdsClient.h"
#include "onlinemanager/IPaasOnline.h"
#include "onlinemanager/IUserOnline.h"

#include <functional>
#include <sstream>
#include <string>
#include <vector>

namespace checks
{

/// A listener of the host's. Journals what it is told under its name: A.OnOffline(36). The hook is called after that with
/// the same text behind the dot, on the thread of the notification; set it while no event can come.
template <typename Interface>
class RecordingNotify : public Interface
{
public:
    RecordingNotify(Journal& journal, std::string name) : m_journal(journal), m_name(std::move(name)) {}
    RecordingNotify(const RecordingNotify&) = delete;
    RecordingNotify& operator=(const RecordingNotify&) = delete;

    std::function<void(const std::string& event)> hook;

protected:
    template <typename... Parts>
    void Tell(const Parts&... parts)
    {
        std::ostringstream event;
        (event << ... << parts);
        m_journal.Add(m_name, ".", event.str());
        if (hook)
        {
            hook(event.str());
            // The check that waits for the end of a thread of the module's may then take down what the hook has used.
            m_journal.Synchronise();
        }
    }

private:
    Journal& m_journal;
    const std::string m_name;
};

class SessionNotify final : public RecordingNotify<onlinemanager::IPaasOnlineNotify>
{
public:
    using RecordingNotify::RecordingNotify;

    void OnReadyReconnect(onlinemanager::TunnelType type) override
    {
        Tell("OnReadyReconnect(", +type, ")");
    }
    void OnReconnectStart(onlinemanager::TunnelType type) override
    {
        Tell("OnReconnectStart(", +type, ")");
    }
    void OnReconnectSucess(onlinemanager::TunnelType type) override
    {
        Tell("OnReconnectSucess(", +type, ")");
    }
    void OnReconnectFail(onlinemanager::TunnelType type, onlinemanager::ErrCode code) override
    {
        Tell("OnReconnectFail(", +type, ", ", +code, ")");
    }
    void OnLoginSuccess() override
    {
        Tell("OnLoginSuccess()");
    }
    void OnOffline(onlinemanager::ErrCode code) override
    {
        Tell("OnOffline(", +code, ")");
    }
};

class TunnelNotify final : public RecordingNotify<onlinemanager::IMeetingTunnelNotify>
{
public:
    using RecordingNotify::RecordingNotify;

    void OnJoinMeetingResult(onlinemanager::ErrCode code) override
    {
        Tell("OnJoinMeetingResult(", +code, ")");
    }
    void OnLeaveMeetingResult(onlinemanager::ErrCode code) override
    {
        Tell("OnLeaveMeetingResult(", +code, ")");
    }
    void OnUserJoined(unsigned int userId) override
    {
        Tell("OnUserJoined(", userId, ")");
    }
    void OnUserLeaved(unsigned int userId) override
    {
        Tell("OnUserLeaved(", userId, ")");
    }
};

/// Every field of an invitation.
inline std::string TextOf(const onlinemanager::InviteData& data)
{
    std::ostringstream text;
    text << "{code=" << data.inviteCode << " time=" << data.roomCreateTime << " company=" << data.roomCompanyId
         << " force=" << data.isForce << " proxy=" << data.proxyUserId << " callout=" << data.calloutType
         << " meeting=" << data.meetingId << " user=" << data.userId << " name=\"" << data.userName << "\" terminal=\""
         << data.terminal << "\"}";
    return text.str();
}

class UserNotify final : public RecordingNotify<onlinemanager::IUserOnlineNotify>
{
public:
    using RecordingNotify::RecordingNotify;

    void OnUserStatusChanged(const std::vector<unsigned>& userIds) override
    {
        std::string list;
        for (const unsigned id : userIds)
        {
            list += (list.empty() ? "" : ",") + std::to_string(id);
        }
        Tell("OnUserStatusChanged([", list, "])");
    }
    void OnUserStatusRefreshed(unsigned requestId, avcore::ZolPortErrCode code) override
    {
        Tell("OnUserStatusRefreshed(", requestId, ", ", +code, ")");
    }
    void OnInviteIncome(unsigned userId, unsigned inviteId, const onlinemanager::InviteData& data) override
    {
        Tell("OnInviteIncome(", userId, ", ", inviteId, ", ", TextOf(data), ")");
    }
    void OnInviteAccepted(unsigned userId, unsigned inviteId) override
    {
        Tell("OnInviteAccepted(", userId, ", ", inviteId, ")");
    }
    void OnInviteRejected(unsigned userId, unsigned inviteId, avcore::ZolInviteRejectReason reason) override
    {
        Tell("OnInviteRejected(", userId, ", ", inviteId, ", ", +reason, ")");
    }
    void OnAbandonInvite(unsigned userId, unsigned inviteId, onlinemanager::InviteAbandonedReason reason) override
    {
        Tell("OnAbandonInvite(", userId, ", ", inviteId, ", ", +reason, ")");
    }
};

class MdsNotify final : public RecordingNotify<onlinemanager::IPaasMdsClientNotify>
{
public:
    using RecordingNotify::RecordingNotify;

    void OnSubscribeAVQualityInfo() override
    {
        Tell("OnSubscribeAVQualityInfo()");
    }
    void OnUnSubscribeAVQualityInfo() override
    {
        Tell("OnUnSubscribeAVQualityInfo()");
    }
};

} // namespace checks
