#include "host/shell/ShellReason.h"

#include <gtest/gtest.h>
#include <thread>

using host::ShellReason;

TEST(ShellReason, TheLastLineOfTheCallIsTheReasonWhateverItsWords)
{
    ShellReason reason;
    reason.Note("Login()");
    reason.Note("Paas login param: force=0, registeruser=0.");
    reason.Note("GwConnectionImp::JoinMeeting param error.");
    EXPECT_EQ(reason.Take(), "GwConnectionImp::JoinMeeting param error.");
    reason.Note("PaasMdsClientImp::SendAVQualityInfo Get ZolMdsClient Component Fail.");
    EXPECT_EQ(reason.Take(), "PaasMdsClientImp::SendAVQualityInfo Get ZolMdsClient Component Fail.");
}

TEST(ShellReason, ACallThatLogsOnlyItsBeginningGivesNone)
{
    ShellReason reason;
    for (const char* line :
         {"Login()", "SetSelfCustomInfo, info=the build has failed", "RejectAllInvite, reason=0x1, exclude"})
    {
        reason.Note("an older call failed");
        reason.Note(line);
        EXPECT_EQ(reason.Take(), "") << line;
    }
}

TEST(ShellReason, ARefusalIsNoBeginningThoughItNamesTheOperation)
{
    ShellReason reason;
    for (const char* line : {"InviteUsers failed, user list is empty.", "AcceptInvite failed, ret(0x80070057).",
                             "LeaveMeeting call failed, current not logged in.", "Logout failed."})
    {
        reason.Note("AcceptInvite, userId=7, inviteId=1, isAccept=1.");
        reason.Note(line);
        EXPECT_EQ(reason.Take(), line);
    }
}

TEST(ShellReason, LinesOfOtherThreadsDoNotCount)
{
    ShellReason reason;
    reason.Note("LeaveMeeting failed, ret(0x80004005).");
    std::thread([&reason] { reason.Note("First refresh company user status failed."); }).join();
    EXPECT_EQ(reason.Take(), "LeaveMeeting failed, ret(0x80004005).");
}

TEST(ShellReason, IsTakenOnceAndSafeToShow)
{
    ShellReason reason;
    reason.Note("no \x1b[2J");
    EXPECT_EQ(reason.Take(), "no \\x1B[2J");
    EXPECT_EQ(reason.Take(), "");
}
