#include "tests/unit/platform/Device.h"

namespace
{

class InvitationTest : public PlatformTest
{
protected:
    InvitationTest()
    {
        inviter.Login("1");
        pc.Login("2", "pc");
        phone.Login("2", "phone");
        Settled();
    }

    unsigned Invite(const Lines& users)
    {
        unsigned id = 0;
        results = {};
        EXPECT_EQ(inviter.online->InviteUsers(MakeList(users), results, "code", "{invite}", &id), S_OK);
        return id;
    }

    Lines Results() const
    {
        Lines lines;
        for (const auto& pair : results)
        {
            lines.push_back(std::string(pair.first.c_str()) + '=' + pair.second.c_str());
        }
        return lines;
    }

    avcore::ZolTextPairList results;
    Device inviter{platform, journal, "I", true};
    Device pc{platform, journal, "P", true};
    Device phone{platform, journal, "H", true};
};

TEST_F(InvitationTest, EveryTerminalOfAnInviteeIsToldAndOneAnswerEndsItForTheOthers)
{
    EXPECT_EQ(Invite({"2"}), 1U);
    EXPECT_EQ(Results(), (Lines{"2=0"}));
    Lines lines = Settled();
    std::sort(lines.begin(), lines.end());
    EXPECT_EQ(lines, (Lines{"H InviteIncome 1 #1 code {invite}", "P InviteIncome 1 #1 code {invite}"}));
    EXPECT_EQ(phone.online->AcceptInvite("1", 1, "{yes}"), S_OK);
    EXPECT_EQ(Settled(), (Lines{"I InviteAccepted 2 #1 {yes}", "P InviteCanceled 1 #1 2"}));
    EXPECT_EQ(pc.online->AcceptInvite("1", 1, "{late}"), E_INVALIDARG);
    EXPECT_EQ(Settled(), Lines());
}

TEST_F(InvitationTest, ADeclinedInvitationIsToldWithItsMessage)
{
    Invite({"2"});
    Settled();
    EXPECT_EQ(pc.online->RejectInvite("1", 1, "{no}"), S_OK);
    EXPECT_EQ(Settled(), (Lines{"I InviteRejected 2 #1 1 {no}", "H InviteCanceled 1 #1 2"}));
    EXPECT_EQ(pc.online->RejectInvite("1", 1, "{no}"), E_INVALIDARG);
    EXPECT_EQ(pc.online->AcceptInvite("1", 1, "{yes}"), E_INVALIDARG);
}

TEST_F(InvitationTest, AnAcceptedInvitationMayStillBeDeclinedOrWithdrawn)
{
    Invite({"2"});
    Settled();
    pc.online->AcceptInvite("1", 1, "{yes}");
    EXPECT_EQ(pc.online->AcceptInvite("1", 1, "{yes}"), E_INVALIDARG) << "once is enough";
    Settled();
    EXPECT_EQ(pc.online->RejectInvite("1", 1, "{no}"), S_OK);
    EXPECT_EQ(Settled(), (Lines{"I InviteRejected 2 #1 1 {no}"}));

    Invite({"2"});
    Settled();
    pc.online->AcceptInvite("1", 2, "{yes}");
    Settled();
    EXPECT_EQ(inviter.online->CancelInvite(MakeList({"2"}), results, 2), S_OK);
    EXPECT_EQ(Settled(), (Lines{"P InviteCanceled 1 #2 1"}));
}

TEST_F(InvitationTest, AWithdrawalReachesEveryTerminalOnce)
{
    Invite({"2"});
    Settled();
    results = {};
    EXPECT_EQ(inviter.online->CancelInvite(MakeList({}), results, 1), S_OK);
    EXPECT_EQ(Results(), (Lines{"2=0"}));
    Lines lines = Settled();
    std::sort(lines.begin(), lines.end());
    EXPECT_EQ(lines, (Lines{"H InviteCanceled 1 #1 1", "P InviteCanceled 1 #1 1"}));
    EXPECT_EQ(inviter.online->CancelInvite(MakeList({}), results, 1), S_OK);
    EXPECT_EQ(Settled(), Lines());
    EXPECT_EQ(pc.online->AcceptInvite("1", 1, "{late}"), E_INVALIDARG);
}

TEST_F(InvitationTest, AWithdrawalFromSomeLeavesTheOthers)
{
    Device third(platform, journal, "T", true);
    third.Login("3");
    Settled();
    Invite({"2", "3"});
    Settled();
    results = {};
    EXPECT_EQ(inviter.online->CancelInvite(MakeList({"3", "4"}), results, 1), S_OK);
    EXPECT_EQ(Results(), (Lines{"3=0", "4=38"}));
    EXPECT_EQ(Settled(), (Lines{"T InviteCanceled 1 #1 1"}));
    EXPECT_EQ(pc.online->AcceptInvite("1", 1, "{yes}"), S_OK);
    EXPECT_EQ(inviter.online->CancelInvite(MakeList({""}), results, 1), E_INVALIDARG)
        << "not the same as an empty list";
}

TEST_F(InvitationTest, OfflineInviteesAreToldToTheInviter)
{
    unsigned request = 0;
    inviter.online->RefreshAllUsersStatus(&request);
    Settled();
    EXPECT_EQ(Invite({"2", "4711", "5"}), 1U);
    EXPECT_EQ(Results(), (Lines{"2=0", "4711=31", "5=31"}));
    Lines lines = Settled();
    std::sort(lines.begin(), lines.end());
    EXPECT_EQ(lines, (Lines{"H InviteIncome 1 #1 code {invite}", "I InviteRejected 4711 #1 2 ",
                            "I InviteRejected 5 #1 2 ", "P InviteIncome 1 #1 code {invite}"}));
}

TEST_F(InvitationTest, UnknownIdsFail)
{
    EXPECT_EQ(inviter.online->CancelInvite(MakeList({}), results, 7), E_INVALIDARG);
    EXPECT_EQ(inviter.online->CancelInvite(MakeList({"2"}), results, 0), E_INVALIDARG);
    EXPECT_EQ(pc.online->AcceptInvite("1", 7, "{}"), E_INVALIDARG);
    EXPECT_EQ(pc.online->RejectInvite("1", 7, "{}"), E_INVALIDARG);
    Invite({"2"});
    Settled();
    EXPECT_EQ(pc.online->AcceptInvite("3", 1, "{}"), E_INVALIDARG) << "not that inviter's";
    EXPECT_EQ(pc.online->AcceptInvite("", 1, "{}"), E_INVALIDARG);
    EXPECT_EQ(Settled(), Lines());
}

TEST_F(InvitationTest, ArgumentsAreChecked)
{
    unsigned id = 0;
    EXPECT_EQ(inviter.online->InviteUsers(MakeList({"2"}), results, nullptr, "{}", &id), E_POINTER);
    EXPECT_EQ(inviter.online->InviteUsers(MakeList({"2"}), results, "1", nullptr, &id), E_POINTER);
    EXPECT_EQ(inviter.online->InviteUsers(MakeList({"2"}), results, "1", "{}", nullptr), E_POINTER);
    EXPECT_EQ(inviter.online->InviteUsers(MakeList({}), results, "1", "{}", &id), E_INVALIDARG);
    EXPECT_EQ(inviter.online->InviteUsers(MakeList({""}), results, "1", "{}", &id), E_INVALIDARG);
    EXPECT_EQ(pc.online->AcceptInvite(nullptr, 1, "{}"), E_POINTER);
    EXPECT_EQ(pc.online->RejectInvite("1", 1, nullptr), E_POINTER);
    EXPECT_EQ(id, 0U);
    EXPECT_EQ(results.size(), 0U);
}

TEST_F(InvitationTest, IdsAreUniqueAmongInviters)
{
    EXPECT_EQ(Invite({"2"}), 1U);
    unsigned id = 0;
    pc.online->InviteUsers(MakeList({"1"}), results, "c", "{}", &id);
    EXPECT_EQ(id, 2U);
    EXPECT_EQ(Invite({"2"}), 3U);
}

TEST_F(InvitationTest, AnswersAfterALogoutFailAndTheInvitationIsForgotten)
{
    Invite({"2"});
    Settled();
    pc.connection->Logout();
    EXPECT_LT(pc.online->AcceptInvite("1", 1, "{}"), 0);
    Settled();
    pc.Login("2", "pc");
    Settled();
    EXPECT_EQ(pc.online->AcceptInvite("1", 1, "{}"), E_INVALIDARG);
}

TEST_F(InvitationTest, AnInviterThatIsBackGetsTheAnswerToAnEarlierInvitation)
{
    Invite({"2"});
    inviter.connection->Logout();
    Settled();
    inviter.Login("1");
    Settled();
    pc.online->AcceptInvite("1", 1, "{yes}");
    Lines lines = Settled();
    std::erase(lines, "H InviteCanceled 1 #1 2");
    EXPECT_EQ(lines, (Lines{"I InviteAccepted 2 #1 {yes}"}));
}

TEST_F(InvitationTest, AnInviterThatIsAwayLosesNothingElse)
{
    Invite({"2"});
    inviter.connection->Logout();
    Settled();
    EXPECT_EQ(pc.online->AcceptInvite("1", 1, "{yes}"), S_OK);
    EXPECT_EQ(Settled(), (Lines{"H InviteCanceled 1 #1 2"}));
    inviter.Login("1");
    EXPECT_EQ(Settled(), (Lines{"I LoginResult 0", "P Terminal 1 pc 1  ext of pc", "H Terminal 1 pc 1  ext of pc"}));
}

TEST_F(InvitationTest, AnAnswerGivenWhileTheConnectionIsLostGoesOutWhenItIsBack)
{
    Invite({"2"});
    Settled();
    platform::PlatformOptions options = QuickOptions();
    options.answerDelay = std::chrono::milliseconds(100);
    platform.SetOptions(options);
    EXPECT_EQ(pc.online->AcceptInvite("1", 1, "{yes}"), S_OK);
    platform.GetFaults().DropConnections("2", "pc", platform::Outage::Forever());
    platform.Settle();
    platform.GetFaults().EndOutages();
    EXPECT_TRUE(journal.WaitFor("P ReconnectSucess"));
    EXPECT_TRUE(journal.WaitFor("I InviteAccepted 2 #1 {yes}"));
}

TEST_F(InvitationTest, DoubleDeliveriesAreToldOnce)
{
    platform.GetFaults().DuplicateDeliveries(true);
    Invite({"2"});
    Settled();
    pc.online->AcceptInvite("1", 1, "{yes}");
    EXPECT_EQ(Settled(), (Lines{"I InviteAccepted 2 #1 {yes}", "H InviteCanceled 1 #1 2"}));
    pc.online->RejectInvite("1", 1, "{no}");
    EXPECT_EQ(Settled(), (Lines{"I InviteRejected 2 #1 1 {no}"}));
}

TEST_F(InvitationTest, AnAnswerFromInsideTheInvitationIsFine)
{
    pc.inside["InviteIncome"] = [this] { EXPECT_EQ(pc.online->AcceptInvite("1", 1, "{at once}"), S_OK); };
    Invite({"2"});
    EXPECT_TRUE(journal.WaitFor("I InviteAccepted 2 #1 {at once}"));
}

TEST_F(InvitationTest, TextsAreCarriedAsTheyAre)
{
    const std::string odd = "\"\\\n\x01\xFF\xC3(";
    unsigned id = 0;
    inviter.online->InviteUsers(MakeList({"2"}), results, odd.c_str(), odd.c_str(), &id);
    const Lines lines = Settled();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "P InviteIncome 1 #1 " + odd + ' ' + odd), 1);
    pc.online->RejectInvite("1", id, odd.c_str());
    const Lines answers = Settled();
    EXPECT_EQ(std::count(answers.begin(), answers.end(), "I InviteRejected 2 #1 1 " + odd), 1);
}

} // namespace
