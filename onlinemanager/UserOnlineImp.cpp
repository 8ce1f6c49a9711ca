#include "onlinemanager/UserOnlineImp.h"

#include "commonutil/OrbLogUtil.h"
#include "commonutil/StringUtil.h"

#include <algorithm>

namespace onlinemanager
{

using commonutil::TextOrEmpty;
using commonutil::ToAString;
using WBASELIB::WAutoLock;

namespace
{

constexpr size_t kInviteBatch = 20; // invitees in one call of the platform

bool IsLastPage(int pageCount, int pageIndex)
{
    return int64_t{pageIndex} + 1 == pageCount;
}

} // namespace

size_t ConvertUintVectorToStrVector(const std::vector<unsigned>& ids, avcore::ZolTextList* out)
{
    if (out == nullptr)
    {
        return 0;
    }
    for (const unsigned id : ids)
    {
        out->push_back(avcore::ZolText(ToAString(id).c_str()));
    }
    return out->size();
}

UserOnlineImp::UserOnlineImp(avcore::IZolOnline*& online) : m_zol_online(online)
{
    CheckSerialization();
    m_status_manager = std::make_shared<UserStatusManager>(m_serialization);
}

void UserOnlineImp::Free()
{
    delete this;
}

bool UserOnlineImp::InitModel()
{
    ORB_LOG("%s()", "InitModel");
    if (avcore::IZolOnline* const online = Online())
    {
        online->AddListener(this);
    }
    return true;
}

bool UserOnlineImp::UninitModel()
{
    ORB_LOG("%s()", "UninitModel");
    if (avcore::IZolOnline* const online = Online())
    {
        online->RemoveListener(this);
    }
    return true;
}

void UserOnlineImp::Detach()
{
    m_detached = true;
}

avcore::IZolOnline* UserOnlineImp::Online() const
{
    return m_detached ? nullptr : WBASELIB::RelaxedLoad(m_zol_online);
}

bool UserOnlineImp::CheckLoggedIn(const char* operation) const
{
    if (m_self_user_id == 0)
    {
        ORB_LOG("%s call failed, current not logged in.", operation);
        return false;
    }
    return true;
}

bool UserOnlineImp::QueryUserStatus(const std::vector<unsigned>& ids, std::function<void(const UserOnlineInfo&)> cb)
{
    if (!cb)
    {
        return false;
    }
    const std::shared_ptr<UserStatusManager> statusManager = m_status_manager;
    return statusManager->Query(ids, std::move(cb));
}

bool UserOnlineImp::RefreshCompanyUserStatus(unsigned* requestId)
{
    avcore::IZolOnline* const online = Online();
    if (online == nullptr || requestId == nullptr || !CheckLoggedIn("RefreshCompanyUserStatus"))
    {
        return false;
    }
    unsigned id = 0;
    const HRESULT hr = online->RefreshAllUsersStatus(&id);
    if (id != 0)
    {
        *requestId = id;
        const WAutoLock guard(&m_lock);
        m_refresh_requests.insert(id);
    }
    if (hr < 0)
    {
        ORB_LOG("RefreshCompanyUsrsStatus failed, ret(0x%x).", static_cast<unsigned>(hr));
        return false;
    }
    return true;
}

bool UserOnlineImp::RefreshUserStatus(const std::vector<unsigned>& ids, unsigned* requestId)
{
    avcore::IZolOnline* const online = Online();
    if (online == nullptr || requestId == nullptr || !CheckLoggedIn("RefreshUserStatus"))
    {
        return false;
    }
    if (ids.empty())
    {
        ORB_LOG("RefreshUserStatus failed, user list is empty.");
        return false;
    }
    avcore::ZolTextList texts;
    ConvertUintVectorToStrVector(ids, &texts);
    // The id is not stored, on purpose: the end of a partial refresh is reported by OnUserStatusChanged only.
    const HRESULT hr = online->RefreshUsersStatus(texts, requestId);
    if (hr < 0)
    {
        ORB_LOG("RefreshUserStatus failed, ret(0x%x).", static_cast<unsigned>(hr));
        return false;
    }
    return true;
}

bool UserOnlineImp::SetSelfCustomInfo(const std::string& info)
{
    ORB_LOG("SetSelfCustomInfo, info=%s.", info.c_str());
    avcore::IZolOnline* const online = Online();
    if (online == nullptr || !CheckLoggedIn("SetSelfCustomInfo"))
    {
        return false;
    }
    {
        const WAutoLock guard(&m_lock);
        m_self_custom_info = info;
    }
    const HRESULT hr = online->SetUserCustomInfo(info.c_str());
    if (hr < 0)
    {
        ORB_LOG("SetSelfCustomInfo failed, ret(0x%x).", static_cast<unsigned>(hr));
        return false;
    }
    return true;
}

bool UserOnlineImp::GetSelfCustomInfo(char* buffer, unsigned size)
{
    if (buffer == nullptr || size == 0)
    {
        return false;
    }
    const WAutoLock guard(&m_lock);
    // Without a terminator when the text fills the buffer, on purpose: hosts pass fields that need none.
    commonutil::CopyPadded(buffer, size, m_self_custom_info);
    return true;
}

void UserOnlineImp::LoginResultNotify(avcore::ZolPortErrCode code)
{
    avcore::IZolOnline* const online = Online();
    if (code != avcore::ZOL_PORT_SUCCESS || online == nullptr)
    {
        return;
    }
    unsigned id = 0;
    if (online->RefreshAllUsersStatus(&id) < 0)
    {
        ORB_LOG("First refresh company user status failed.");
    }
}

void UserOnlineImp::LogoutedNotify()
{
    m_status_manager->Clear();
}

void UserOnlineImp::ReconnectStartNotify() {}

void UserOnlineImp::ReconnectSucessNotify()
{
    avcore::IZolOnline* const online = Online();
    unsigned id = 0;
    if (online != nullptr && online->RefreshAllUsersStatus(&id) < 0)
    {
        ORB_LOG("Reconnected refresh company user status failed.");
    }
}

void UserOnlineImp::OnRefreshUserStatusFinished(avcore::ZolPortErrCode code, unsigned requestId,
                                                const WBASELIB::Vector<avcore::ZolUserInfo>& users, int page_count,
                                                int page_index)
{
    const ServiceRef self(this);
    const bool isLast = IsLastPage(page_count, page_index);
    if (code == avcore::ZOL_PORT_SUCCESS)
    {
        m_status_manager->Cache(users);
        if (isLast)
        {
            const std::vector<unsigned> changed = m_status_manager->ResetByCache();
            Broadcast(&IUserOnlineNotify::OnUserStatusChanged, changed);
        }
    }
    if (!isLast)
    {
        return;
    }
    {
        const WAutoLock guard(&m_lock);
        if (m_refresh_requests.erase(requestId) == 0)
        {
            return;
        }
    }
    Broadcast(&IUserOnlineNotify::OnUserStatusRefreshed, requestId, code);
}

void UserOnlineImp::OnUserTerminalStateChanged(const char* userId, const avcore::ZolUserTerminalInfo& info)
{
    unsigned id = 0;
    if (!commonutil::ReadUserId(userId, &id))
    {
        return;
    }
    const ServiceRef self(this);
    ORB_LOG("%s(), userid=%s, status=%d, terminal=%s, custom=%s.", "OnUserTerminalStateChanged", userId, info.status,
            TextOrEmpty(info.terminal), TextOrEmpty(info.custom));
    if (m_status_manager->Add(id, info))
    {
        const std::vector<unsigned> changed{id};
        Broadcast(&IUserOnlineNotify::OnUserStatusChanged, changed);
    }
}

bool UserOnlineImp::InviteUsers(const std::vector<unsigned>& ids, const InviteData& data, unsigned* inviteId)
{
    avcore::IZolOnline* const online = Online();
    if (online == nullptr || inviteId == nullptr || !CheckLoggedIn("InviteUsers"))
    {
        return false;
    }
    if (ids.empty())
    {
        ORB_LOG("InviteUsers failed, user list is empty.");
        return false;
    }
    const ServiceRef self(this);
    const unsigned selfUserId = m_self_user_id;
    std::vector<unsigned> others = ids;
    const bool selfInvited = std::erase(others, selfUserId) != 0;
    if (!others.empty() && !SendInvitation(*online, others, data, inviteId))
    {
        return false;
    }
    if (selfInvited)
    {
        const unsigned firstId = *inviteId;
        Broadcast(&IUserOnlineNotify::OnInviteIncome, selfUserId, firstId, data);
    }
    return true;
}

bool UserOnlineImp::SendInvitation(avcore::IZolOnline& online, const std::vector<unsigned>& ids, const InviteData& data,
                                   unsigned* inviteId)
{
    unsigned firstId = 0;
    const std::string code = ToAString(data.inviteCode);
    const std::string json = m_serialization->FormatInviteUserMsg(data);
    std::wstring sentIds;
    for (size_t begin = 0; begin < ids.size(); begin += kInviteBatch)
    {
        const size_t end = std::min(begin + kInviteBatch, ids.size());
        avcore::ZolTextList batch;
        for (size_t index = begin; index < end; ++index)
        {
            batch.push_back(avcore::ZolText(ToAString(ids[index]).c_str()));
        }
        avcore::ZolTextPairList results;
        unsigned batchId = 0;
        const HRESULT hr = online.InviteUsers(batch, results, code.c_str(), json.c_str(), &batchId);
        if (hr < 0)
        {
            ORB_LOG("InviteUsers failed, ret(0x%x), inviterId=%u.", static_cast<unsigned>(hr),
                    static_cast<unsigned>(m_self_user_id));
            return false;
        }
        if (firstId == 0)
        {
            firstId = batchId;
        }
        sentIds += std::to_wstring(batchId) + L",";
        const WAutoLock guard(&m_lock);
        m_invite_ids.emplace(batchId, firstId);
    }
    *inviteId = firstId;
    ORB_LOG(L"UserOnlineImp::InviteUsers(), totalUser=%u, code=%u, inviteId=%s", static_cast<unsigned>(ids.size()),
            data.inviteCode, sentIds.c_str());
    return true;
}

unsigned UserOnlineImp::CorrectInviteID(unsigned inviteId)
{
    const WAutoLock guard(&m_lock);
    // An unknown id enters the table as 0, on purpose: later answers to the same invitation are then reported with 0
    // too.
    return m_invite_ids[inviteId];
}

bool UserOnlineImp::AbandonInvite(unsigned inviteId, const std::vector<unsigned>& ids)
{
    avcore::IZolOnline* const online = Online();
    if (online == nullptr || !CheckLoggedIn("AbandonInvite"))
    {
        return false;
    }
    avcore::ZolTextList texts;
    ConvertUintVectorToStrVector(ids, &texts);
    avcore::ZolTextPairList results;
    const HRESULT hr = online->CancelInvite(texts, results, inviteId);
    if (hr < 0)
    {
        ORB_LOG("AbandonInvite failed, ret(0x%x).", static_cast<unsigned>(hr));
        return false;
    }
    return true;
}

bool UserOnlineImp::AcceptInvite(unsigned userId, unsigned inviteId, bool isAccept)
{
    avcore::IZolOnline* const online = Online();
    if (online == nullptr || !CheckLoggedIn("AcceptInvite"))
    {
        return false;
    }
    ORB_LOG("AcceptInvite, userId=%u, inviteId=%u, isAccept=%d.", userId, inviteId, isAccept ? 1 : 0);
    const std::string user = ToAString(userId);
    HRESULT hr = S_OK;
    if (isAccept)
    {
        // The invitation stays in the table, so that its withdrawal is still reported.
        hr = online->AcceptInvite(user.c_str(), inviteId,
                                  m_serialization->FormatAcceptInviteMsg(m_terminal_type).c_str());
    }
    else
    {
        EraseIncomingInvite(inviteId);
        hr = online->RejectInvite(
            user.c_str(), inviteId,
            m_serialization->FormatRejectInviteMsg(m_terminal_type, REJECT_INVITATION_DECLINED).c_str());
    }
    if (hr < 0)
    {
        ORB_LOG("AcceptInvite failed, ret(0x%x).", static_cast<unsigned>(hr));
        return false;
    }
    return true;
}

bool UserOnlineImp::RejectAllInvite(RejectInvitationReason reason, const std::vector<unsigned>& excludeInviteIds)
{
    ORB_LOG("RejectAllInvite, reason=0x%x, exclude_size=%u.", static_cast<unsigned>(reason),
            static_cast<unsigned>(excludeInviteIds.size()));
    if (Online() == nullptr || !CheckLoggedIn("RejectAllInvite"))
    {
        return false;
    }
    const ServiceRef self(this);
    const std::string json = m_serialization->FormatRejectInviteMsg(m_terminal_type, static_cast<int>(reason));
    const auto abandoned = static_cast<InviteAbandonedReason>(INVITE_ABANDONED_REJECTED + uint32_t{reason});
    std::string rejectedIds;
    unsigned inviteId = 0;
    unsigned userId = 0;
    while (TakeFirstIncomingInvite(&inviteId, &userId))
    {
        // An excluded invitation leaves the table too, on purpose: AcceptInvite does not read the table.
        if (std::find(excludeInviteIds.begin(), excludeInviteIds.end(), inviteId) != excludeInviteIds.end())
        {
            continue;
        }
        if (avcore::IZolOnline* const online = Online())
        {
            online->RejectInvite(ToAString(userId).c_str(), inviteId, json.c_str());
        }
        Broadcast(&IUserOnlineNotify::OnAbandonInvite, userId, inviteId, abandoned);
        rejectedIds += ToAString(inviteId) + ", ";
    }
    if (!rejectedIds.empty())
    {
        ORB_LOG("Reject invite IDs=%s.", rejectedIds.c_str());
    }
    return true;
}

/// Removes the invitation before the listeners are called: a call from inside the notification then does not reject it
/// again.
bool UserOnlineImp::TakeFirstIncomingInvite(unsigned* inviteId, unsigned* userId)
{
    const WAutoLock guard(&m_lock);
    const auto first = m_incoming_invites.begin();
    if (first == m_incoming_invites.end())
    {
        return false;
    }
    *inviteId = first->first;
    *userId = first->second;
    m_incoming_invites.erase(first);
    return true;
}

bool UserOnlineImp::EraseIncomingInvite(unsigned inviteId)
{
    const WAutoLock guard(&m_lock);
    return m_incoming_invites.erase(inviteId) != 0;
}

void UserOnlineImp::OnInviteIncome(const char* userId, unsigned inviteId, const char* /*code*/, const char* msg)
{
    const ServiceRef self(this);
    const unsigned inviter = commonutil::UserIdOrZero(userId);
    ORB_LOG("UserOnlineImp::OnInviteIncome, userId=%u, inviteId=%u.", inviter, inviteId);
    ORB_LOG("msg=%s", TextOrEmpty(msg));
    {
        const WAutoLock guard(&m_lock);
        m_incoming_invites.emplace(inviteId, inviter);
    }
    InviteData data;
    m_serialization->ParseInviteUserMsg(TextOrEmpty(msg), &data);
    Broadcast(&IUserOnlineNotify::OnInviteIncome, inviter, inviteId, data);
}

void UserOnlineImp::OnInviteAccepted(const char* userId, unsigned inviteId, const char* /*msg*/)
{
    const ServiceRef self(this);
    const unsigned invitee = commonutil::UserIdOrZero(userId);
    m_notify_list.Deliver([=, this](IUserOnlineNotify& notify)
                          { notify.OnInviteAccepted(invitee, CorrectInviteID(inviteId)); });
}

void UserOnlineImp::OnInviteRejected(const char* userId, unsigned inviteId, avcore::ZolInviteRejectReason reason,
                                     const char* /*msg*/)
{
    const ServiceRef self(this);
    const unsigned invitee = commonutil::UserIdOrZero(userId);
    m_notify_list.Deliver([=, this](IUserOnlineNotify& notify)
                          { notify.OnInviteRejected(invitee, CorrectInviteID(inviteId), reason); });
}

void UserOnlineImp::OnInviteCanceled(const char* userId, unsigned inviteId, avcore::ZolInviteCancelReason reason)
{
    const ServiceRef self(this);
    const unsigned inviter = commonutil::UserIdOrZero(userId);
    ORB_LOG("UserOnlineImp::OnInviteCanceled, userId=%u, inviteId=%u, reason=%d.", inviter, inviteId,
            static_cast<int>(reason));
    if (EraseIncomingInvite(inviteId))
    {
        const auto abandoned = static_cast<InviteAbandonedReason>(reason);
        Broadcast(&IUserOnlineNotify::OnAbandonInvite, inviter, inviteId, abandoned);
    }
}

} // namespace onlinemanager
