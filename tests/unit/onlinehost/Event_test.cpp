#include "onlinehost/Event.h"

#include "avcore/ZolTypes.h"
#include "onlinemanager/IUserOnline.h"

#include <gtest/gtest.h>

using onlinehost::Describe;
using onlinehost::Event;
using onlinehost::EventKind;

namespace
{

std::string Rejected(uint32_t reason)
{
    return Describe({.kind = EventKind::InviteRejected, .reason = reason, .userId = 8, .requestId = 3});
}

std::string Closed(uint32_t reason)
{
    return Describe({.kind = EventKind::InviteAbandoned, .reason = reason, .userId = 7, .requestId = 3});
}

} // namespace

TEST(Event, AnOfflineInviteeHasNotDeclined)
{
    EXPECT_EQ(Rejected(avcore::ZOL_INVITE_REJECT_OFFLINE),
              "learns that user 8 is offline and did not get invitation 3");
    EXPECT_EQ(Rejected(avcore::ZOL_INVITE_REJECT_DECLINED), "learns that user 8 declined invitation 3");
    EXPECT_EQ(Rejected(avcore::ZOL_INVITE_REJECT_UNKNOWN),
              "learns that user 8 did not accept invitation 3, reason 0 (unknown reason)");
    EXPECT_EQ(Rejected(99), "learns that user 8 did not accept invitation 3, reason 99 (unknown reason)");
}

TEST(Event, AClosedInvitationNamesTheSideThatClosedIt)
{
    EXPECT_EQ(Closed(avcore::ZOL_INVITE_CANCEL_BY_INVITER), "learns that user 7 withdrew invitation 3");
    EXPECT_EQ(Closed(avcore::ZOL_INVITE_CANCEL_ANSWERED_ELSEWHERE),
              "learns that another terminal answered invitation 3 from user 7");
    EXPECT_EQ(Closed(uint32_t{onlinemanager::INVITE_ABANDONED_REJECTED} + onlinemanager::REJECT_INVITATION_DECLINED),
              "declined invitation 3 from user 7");
    EXPECT_EQ(Closed(onlinemanager::INVITE_ABANDONED_REJECTED + 3), "declined invitation 3 from user 7, reason 3");
    EXPECT_EQ(Closed(0), "learns that invitation 3 from user 7 is closed, reason 0 (unknown reason)");
}

TEST(Event, AFailedLoginDoesNotGoOffline)
{
    Event event{.kind = EventKind::Offline, .code = avcore::ZOL_PORT_LOGIN_CONFLICT};
    EXPECT_EQ(Describe(event), "could not log in: 36 (logged in on another device)");
    event.wasLoggedIn = true;
    EXPECT_EQ(Describe(event), "went offline: 36 (logged in on another device)");
    EXPECT_EQ(Describe({.kind = EventKind::Offline, .code = 0}), "stopped logging in");
    EXPECT_EQ(Describe({.kind = EventKind::Offline, .code = avcore::ZOL_PORT_NOT_LOGGED_IN}), "is not logged in");
}

TEST(Event, AChangeNamesTheUsersAndNoUserIsNotAChange)
{
    EXPECT_EQ(Describe({.kind = EventKind::UserStatusChanged, .userIds = {7, 8}}), "sees 2 users change: 7, 8");
    EXPECT_EQ(Describe({.kind = EventKind::UserStatusChanged, .userIds = {10, 11, 5}}),
              "sees 3 users change: 5, 10, 11");
    EXPECT_EQ(Describe({.kind = EventKind::UserStatusChanged}), "learns that no user has changed");
}

TEST(Event, CodesAndReasonsHaveWords)
{
    EXPECT_EQ(onlinehost::CodeMeaning(0), "success");
    EXPECT_EQ(onlinehost::CodeMeaning(32), "32 (the token is not valid)");
    EXPECT_EQ(onlinehost::CodeMeaning(77), "77");
    EXPECT_EQ(onlinehost::CodeText(0), "success");
    EXPECT_EQ(onlinehost::CodeText(77), "unknown code");
    EXPECT_EQ(onlinehost::RejectReasonText(2), "the user is offline");
    EXPECT_EQ(onlinehost::AbandonReasonText(1), "withdrawn by the inviter");
    EXPECT_EQ(onlinehost::AbandonReasonText(0x111), "declined together with all others");
}
