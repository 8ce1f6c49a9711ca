#pragma once

#include "onlinemanager/InviteData.h"
#include "onlinemanager/OnlineTypes.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace onlinehost
{

enum class EventKind
{
    LoginSuccess,
    Offline,
    ReadyReconnect,
    ReconnectStart,
    ReconnectSucess,
    ReconnectFail,
    JoinMeetingResult,
    LeaveMeetingResult,
    UserJoined,
    UserLeaved,
    UserStatusChanged,
    UserStatusRefreshed,
    InviteIncome,
    InviteAccepted,
    InviteRejected,
    InviteAbandoned,
    AVQualitySubscribed,
    AVQualityUnsubscribed,
};

/// One notification of the module, as it came in. Fields that its kind does not have keep their initial values.
struct Event
{
    EventKind kind{};
    onlinemanager::TunnelType tunnel = onlinemanager::TUNNEL_TYPE_NONE; ///< of reconnections and meetings
    int32_t code = 0;                                                   ///< result or platform code
    bool wasLoggedIn = false;                                           ///< of `Offline`: a login stood until then
    uint32_t reason = 0;                                                ///< of a declined or closed invitation
    uint32_t userId = 0;                    ///< the user who joined, left, invited or answered
    uint32_t requestId = 0;                 ///< of an invitation or a refresh
    std::vector<unsigned> userIds{};        ///< of `UserStatusChanged`
    onlinemanager::InviteData invitation{}; ///< of `InviteIncome`
    std::chrono::system_clock::time_point time = std::chrono::system_clock::now();
};

/// The kind's name in scripts and in JSON: "login", "user-joined", ... It never changes.
std::string_view EventName(EventKind kind);

/// The names of all kinds, in the order of `EventKind`.
std::vector<std::string> EventNames();

/// What a result code means, in words: "success", "logged in on another device"; "unknown code" for all others.
std::string_view CodeText(int32_t code);

/// The code with its meaning where it has one: "success", "36 (logged in on another device)", "17".
std::string CodeMeaning(int32_t code);

/// Why an invitee did not accept (`avcore::ZolInviteRejectReason`), in words: "the user is offline".
std::string_view RejectReasonText(uint32_t reason);

/// Why an invitation that came in is not open any more (`onlinemanager::InviteAbandonedReason`), in words: "withdrawn by the
/// inviter".
std::string_view AbandonReasonText(uint32_t reason);

/// The event in a few words, as the predicate of a sentence whose subject is the terminal: "went offline: success".
std::string Describe(const Event& event);

} // namespace onlinehost
