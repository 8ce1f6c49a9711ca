#pragma once

#include "avcore/IZolOnline.h"
#include "common/wbaselib/wlock.h"
#include "common/wbaselib/wrelaxed.h"
#include "onlinemanager/ISerialization.h"
#include "onlinemanager/IUserOnline.h"
#include "onlinemanager/NotifyList.h"
#include "onlinemanager/ServiceUse.h"
#include "onlinemanager/UserStatusManager.h"

#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace onlinemanager
{

/// Appends the decimal texts of `ids` to `*out` and returns the number of its entries; 0 for a null `out`.
size_t ConvertUintVectorToStrVector(const std::vector<unsigned>& ids, avcore::ZolTextList* out);

/// Presence and invitations over the platform's online component. Made, owned and told about logins by the session.
class UserOnlineImp : public IUserOnline, public avcore::IZolOnlineListener
{
public:
    /// `online` is the session's field: what it holds at the time of a call is used.
    explicit UserOnlineImp(avcore::IZolOnline*& online);

    UserOnlineImp(const UserOnlineImp&) = delete;
    UserOnlineImp& operator=(const UserOnlineImp&) = delete;

    void AddNotify(IUserOnlineNotify* notify) override;
    void RemoveNotify(IUserOnlineNotify* notify) override;
    void RemoveAllNotify() override;
    bool QueryUserStatus(const std::vector<unsigned>& ids, std::function<void(const UserOnlineInfo&)> cb) override;
    bool RefreshCompanyUserStatus(unsigned* requestId) override;
    bool RefreshUserStatus(const std::vector<unsigned>& ids, unsigned* requestId) override;
    bool SetSelfCustomInfo(const std::string& info) override;
    bool GetSelfCustomInfo(char* buffer, unsigned size) override;
    bool InviteUsers(const std::vector<unsigned>& ids, const InviteData& data, unsigned* inviteId) override;
    bool AcceptInvite(unsigned userId, unsigned inviteId, bool isAccept) override;
    bool RejectAllInvite(RejectInvitationReason reason, const std::vector<unsigned>& excludeInviteIds) override;
    bool AbandonInvite(unsigned inviteId, const std::vector<unsigned>& ids) override;

    virtual ~UserOnlineImp();

    /// Calls of the session. Before the first two it has written `m_self_user_id` and `m_terminal_type`.
    virtual void LoginResultNotify(avcore::ZolPortErrCode code);
    virtual void LogoutedNotify();
    virtual void ReconnectStartNotify();
    virtual void ReconnectSucessNotify();

    void OnRefreshUserStatusFinished(avcore::ZolPortErrCode code, unsigned requestId,
                                     const WBASELIB::Vector<avcore::ZolUserInfo>& users, int page_count,
                                     int page_index) override;
    void OnInviteIncome(const char* userId, unsigned inviteId, const char* code, const char* msg) override;
    void OnInviteAccepted(const char* userId, unsigned inviteId, const char* msg) override;
    void OnInviteRejected(const char* userId, unsigned inviteId, avcore::ZolInviteRejectReason reason,
                          const char* msg) override;
    void OnInviteCanceled(const char* userId, unsigned inviteId, avcore::ZolInviteCancelReason reason) override;
    void OnUserTerminalStateChanged(const char* userId, const avcore::ZolUserTerminalInfo& info) override;

    bool InitModel();
    bool UninitModel();

    /// The session's field, where the platform's presence is found, is not looked at any more: it may be gone.
    void Detach();

    /// The id that the host knows a sent invitation by. A stranger's id becomes known here, as 0.
    unsigned CorrectInviteID(unsigned inviteId);

    void Free();

    ServiceUse m_use;

    // Written by the session, which alone knows who is logged in.
    WBASELIB::WRelaxed<quenda::TerminalType> m_terminal_type = quenda::TERMINAL_TYPE_UNKNOWN;
    WBASELIB::WRelaxed<unsigned> m_self_user_id = 0; ///< 0 = not logged in

private:
    avcore::IZolOnline* Online() const;
    bool CheckLoggedIn(const char* operation) const;
    bool SendInvitation(avcore::IZolOnline& online, const std::vector<unsigned>& ids, const InviteData& data,
                        unsigned* inviteId);
    bool TakeFirstIncomingInvite(unsigned* inviteId, unsigned* userId);
    bool EraseIncomingInvite(unsigned inviteId);

    NotifyList<IUserOnlineNotify> m_notify_list;
    avcore::IZolOnline*& m_zol_online;
    WBASELIB::WRelaxed<bool> m_detached = false;
    const std::shared_ptr<ISerialization> m_serialization;
    const std::shared_ptr<UserStatusManager> m_status_manager;

    WBASELIB::WLock m_lock; ///< guards everything below
    std::string m_self_custom_info;
    std::unordered_set<unsigned> m_refresh_requests;           ///< company refreshes of the host that have not ended
    std::unordered_map<unsigned, unsigned> m_invite_ids;       ///< sent: id of each batch -> id of the first one
    std::unordered_map<unsigned, unsigned> m_incoming_invites; ///< received and open: id -> inviter
};

} // namespace onlinemanager
