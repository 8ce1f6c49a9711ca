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

/// A listener of the host. It writes each notification under its name, as A.OnOffline(36), and then calls the hook on
/// the same thread with the text after the dot. A check may set the hook only while no notification can come.
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
    void Record(const Parts&... parts)
    {
        std::ostringstream event;
        (event << ... << parts);
        m_journal.Add(m_name, ".", event.str());
        if (hook)
        {
            hook(event.str());
        }
        // A check that waits for the end of a thread of the module may afterwards destroy this listener and what the hook
        // has used.
        m_journal.Synchronise();
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
        Record("OnReadyReconnect(", +type, ")");
    }
    void OnReconnectStart(onlinemanager::TunnelType type) override
    {
        Record("OnReconnectStart(", +type, ")");
    }
    void OnReconnectSucess(onlinemanager::TunnelType type) override
    {
        Record("OnReconnectSucess(", +type, ")");
    }
    void OnReconnectFail(onlinemanager::TunnelType type, onlinemanager::ErrCode code) override
    {
        Record("OnReconnectFail(", +type, ", ", +code, ")");
    }
    void OnLoginSuccess() override
    {
        Record("OnLoginSuccess()");
    }
    void OnOffline(onlinemanager::ErrCode code) override
    {
        Record("OnOffline(", +code, ")");
    }
};

class TunnelNotify final : public RecordingNotify<onlinemanager::IMeetingTunnelNotify>
{
public:
    using RecordingNotify::RecordingNotify;

    void OnJoinMeetingResult(onlinemanager::ErrCode code) override
    {
        Record("OnJoinMeetingResult(", +code, ")");
    }
    void OnLeaveMeetingResult(onlinemanager::ErrCode code) override
    {
        Record("OnLeaveMeetingResult(", +code, ")");
    }
    void OnUserJoined(unsigned int userId) override
    {
        Record("OnUserJoined(", userId, ")");
    }
    void OnUserLeaved(unsigned int userId) override
    {
        Record("OnUserLeaved(", userId, ")");
    }
};

/// Every field of an invitation as text.
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
        Record("OnUserStatusChanged([", list, "])");
    }
    void OnUserStatusRefreshed(unsigned requestId, avcore::ZolPortErrCode code) override
    {
        Record("OnUserStatusRefreshed(", requestId, ", ", +code, ")");
    }
    void OnInviteIncome(unsigned userId, unsigned inviteId, const onlinemanager::InviteData& data) override
    {
        Record("OnInviteIncome(", userId, ", ", inviteId, ", ", TextOf(data), ")");
    }
    void OnInviteAccepted(unsigned userId, unsigned inviteId) override
    {
        Record("OnInviteAccepted(", userId, ", ", inviteId, ")");
    }
    void OnInviteRejected(unsigned userId, unsigned inviteId, avcore::ZolInviteRejectReason reason) override
    {
        Record("OnInviteRejected(", userId, ", ", inviteId, ", ", +reason, ")");
    }
    void OnAbandonInvite(unsigned userId, unsigned inviteId, onlinemanager::InviteAbandonedReason reason) override
    {
        Record("OnAbandonInvite(", userId, ", ", inviteId, ", ", +reason, ")");
    }
};

class MdsNotify final : public RecordingNotify<onlinemanager::IPaasMdsClientNotify>
{
public:
    using RecordingNotify::RecordingNotify;

    void OnSubscribeAVQualityInfo() override
    {
        Record("OnSubscribeAVQualityInfo()");
    }
    void OnUnSubscribeAVQualityInfo() override
    {
        Record("OnUnSubscribeAVQualityInfo()");
    }
};

} // namespace checks
