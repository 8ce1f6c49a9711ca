#pragma once

#include "avcore/IZolOnline.h"
#include "common/wbaselib/wlock.h"
#include "common/wbaselib/wrelaxed.h"
#include "onlinemanager/IUserOnline.h"
#include "onlinemanager/SerializationOwner.h"
#include "onlinemanager/Service.h"
#include "onlinemanager/UserStatusManager.h"

#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace onlinemanager
{

/// Appends the decimal text of each id to `*out` and returns the number of entries in `*out`; 0 for a null `out`.
size_t ConvertUintVectorToStrVector(const std::vector<unsigned>& ids, avcore::ZolTextList* out);

/// Presence and invitations over the platform's online component. The session makes and owns it, and reports logins to
/// it.
class UserOnlineImp : public OwnedService<IUserOnline, IUserOnlineNotify>,
                      public avcore::IZolOnlineListener,
                      private SerializationOwner
{
public:
    /// `online` is the session's field: every call uses the component that the field holds at that time.
    explicit UserOnlineImp(avcore::IZolOnline*& online);

    bool QueryUserStatus(const std::vector<unsigned>& ids, std::function<void(const UserOnlineInfo&)> cb) override;
    bool RefreshCompanyUserStatus(unsigned* requestId) override;
    bool RefreshUserStatus(const std::vector<unsigned>& ids, unsigned* requestId) override;
    bool SetSelfCustomInfo(const std::string& info) override;
    bool GetSelfCustomInfo(char* buffer, unsigned size) override;
    bool InviteUsers(const std::vector<unsigned>& ids, const InviteData& data, unsigned* inviteId) override;
    bool AcceptInvite(unsigned userId, unsigned inviteId, bool isAccept) override;
    bool RejectAllInvite(RejectInvitationReason reason, const std::vector<unsigned>& excludeInviteIds) override;
    bool AbandonInvite(unsigned inviteId, const std::vector<unsigned>& ids) override;

    virtual ~UserOnlineImp() = default;

    // The session calls these. Before the first two it writes `m_self_user_id` and `m_terminal_type`, except when its
    // strategy has stopped a reconnection.
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

    /// From now on the service does not read the session's field, which may not exist any more.
    void Detach();

    /// The id by which the host knows a sent invitation. Maps an unknown id to 0 from now on.
    unsigned CorrectInviteID(unsigned inviteId);

    void Free();

    // Only the session writes these two.
    WBASELIB::WRelaxed<quenda::TerminalType> m_terminal_type = quenda::TERMINAL_TYPE_UNKNOWN;
    WBASELIB::WRelaxed<unsigned> m_self_user_id = 0; ///< 0 = not logged in

private:
    avcore::IZolOnline* Online() const;
    bool CheckLoggedIn(const char* operation) const;
    bool SendInvitation(avcore::IZolOnline& online, const std::vector<unsigned>& ids, const InviteData& data,
                        unsigned* inviteId);
    bool TakeFirstIncomingInvite(unsigned* inviteId, unsigned* userId);
    bool EraseIncomingInvite(unsigned inviteId);

    avcore::IZolOnline*& m_zol_online;
    WBASELIB::WRelaxed<bool> m_detached = false;
    std::shared_ptr<UserStatusManager> m_status_manager;

    WBASELIB::WLock m_lock; ///< guards everything below
    std::string m_self_custom_info;
    std::unordered_set<unsigned> m_refresh_requests;           ///< company refreshes of the host that have not ended
    std::unordered_map<unsigned, unsigned> m_invite_ids;       ///< sent: id of each batch -> id of the first batch
    std::unordered_map<unsigned, unsigned> m_incoming_invites; ///< received and not answered: id -> inviter
};

} // namespace onlinemanager
