#pragma once

#include "onlinemanager/InviteData.h"
#include "onlinemanager/OnlineTypes.h"

#include <chrono>
#include <cstdint>
#include <string>
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
    uint32_t reason = 0;                                                ///< of a declined or withdrawn invitation
    uint32_t userId = 0;                                                ///< who did it
    uint32_t requestId = 0;                                             ///< of an invitation or a refresh
    std::vector<unsigned> userIds{};                                    ///< of `UserStatusChanged`
    onlinemanager::InviteData invitation{};                             ///< of `InviteIncome`
    std::chrono::system_clock::time_point time = std::chrono::system_clock::now();
};

/// What a result code means: "success", "36 (logged in on another device)", "17".
std::string CodeMeaning(int32_t code);

/// The event in a few words: "went offline: 36 (logged in on another device)".
std::string Describe(const Event& event);

} // namespace onlinehost
