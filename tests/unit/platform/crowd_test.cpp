#include "platform/Crowd.h"
#include "tests/unit/platform/Device.h"

using platform::Crowd;
using platform::CrowdOptions;
using platform::CrowdScript;

namespace
{

class CrowdTest : public PlatformTest
{
protected:
    CrowdTest()
    {
        CrowdOptions options;
        options.appId = "app";
        options.companyId = "7";
        options.firstUserId = 10;
        options.count = 5;
        options.ext = "x";
        options.custom = "c";
        crowd = std::make_unique<Crowd>(platform, options);
        device.Login("1");
        Settled();
    }

    unsigned Invite(const Lines& users)
    {
        unsigned id = 0;
        avcore::ZolTextPairList results;
        EXPECT_EQ(device.online->InviteUsers(MakeList(users), results, "code", "{invite}", &id), S_OK);
        return id;
    }

    std::unique_ptr<Crowd> crowd;
    Device device{platform, journal, "A", true};
};

TEST_F(CrowdTest, MembersComeAndGo)
{
    crowd->ComeOnline(10);
    crowd->ComeOnline(10);
    crowd->ComeOnline(9);
    crowd->ComeOnline(15);
    EXPECT_EQ(Settled(), (Lines{"A Terminal 10 pc 1 c x"}));
    EXPECT_EQ(crowd->CountOnline(), 1U);
    crowd->SetCustomInfo(10, "busy");
    crowd->SetCustomInfo(11, "offline people have none");
    EXPECT_EQ(Settled(), (Lines{"A Terminal 10 pc 1 busy x"}));
    crowd->GoOffline(10);
    crowd->GoOffline(10);
    EXPECT_EQ(Settled(), (Lines{"A Terminal 10 pc 0 busy x"}));
    crowd->ComeOnline(10);
    crowd->Vanish(10);
    crowd->Vanish(10);
    EXPECT_EQ(Settled(), (Lines{"A Terminal 10 pc 1 c x", "A Terminal 10 pc 0 c x"}));
    EXPECT_EQ(crowd->CountOnline(), 0U);
}

TEST_F(CrowdTest, MembersMayHaveFurtherTerminals)
{
    EXPECT_FALSE(crowd->AddTerminal(10, "phone", "y")) << "offline";
    crowd->ComeOnline(10);
    EXPECT_TRUE(crowd->AddTerminal(10, "phone", "y"));
    EXPECT_FALSE(crowd->AddTerminal(10, "phone", "y"));
    EXPECT_FALSE(crowd->AddTerminal(10, "pc", "y"));
    EXPECT_FALSE(crowd->RemoveTerminal(10, "tv"));
    EXPECT_EQ(Settled(), (Lines{"A Terminal 10 pc 1 c x", "A Terminal 10 phone 1  y"}));
    EXPECT_TRUE(crowd->RemoveTerminal(10, "phone"));
    EXPECT_TRUE(crowd->AddTerminal(10, "tv", "z"));
    crowd->GoOffline(10);
    EXPECT_EQ(Settled(), (Lines{"A Terminal 10 phone 0  y", "A Terminal 10 tv 1  z", "A Terminal 10 pc 0 c x",
                                "A Terminal 10 tv 0  z"}));
}

TEST_F(CrowdTest, AnEndingCrowdGoesOffline)
{
    crowd->ComeOnline(10);
    Settled();
    crowd.reset();
    EXPECT_EQ(Settled(), (Lines{"A Terminal 10 pc 0 c x"}));
}

TEST_F(CrowdTest, MembersAnswerAsTheirScriptsSay)
{
    crowd->ComeOnline();
    CrowdScript script;
    script.answer = CrowdScript::Answer::Accept;
    script.joinGroupId = "g";
    crowd->SetScript(script);
    script.answer = CrowdScript::Answer::Decline;
    script.message = "{no}";
    crowd->SetScript(11, script);
    script.answer = CrowdScript::Answer::Ignore;
    crowd->SetScript(12, script);
    script.answer = CrowdScript::Answer::Accept;
    script.message.clear();
    script.joinGroupId.clear();
    script.after = std::chrono::milliseconds(30);
    crowd->SetScript(13, script);
    device.connection->JoinGroup("g");
    Settled();

    const std::string accepted = R"({"version":"1.0","method":"AcceptInvite","params":{"terminal":"1"}})";
    EXPECT_EQ(Invite({"10", "11", "12", "13"}), 1U);
    EXPECT_TRUE(journal.WaitFor("A InviteAccepted 13 #1 " + accepted));
    EXPECT_EQ(Settled(), (Lines{"A InviteAccepted 10 #1 " + accepted, "A InviteRejected 11 #1 1 {no}",
                                "A GroupUserJoined 10", "A InviteAccepted 13 #1 " + accepted}));
}

TEST_F(CrowdTest, MembersAcceptByDefault)
{
    crowd->ComeOnline(10);
    Settled();
    Invite({"10"});
    EXPECT_EQ(Settled(),
              (Lines{R"(A InviteAccepted 10 #1 {"version":"1.0","method":"AcceptInvite","params":{"terminal":"1"}})"}));
}

TEST_F(CrowdTest, InvitationsAndWithdrawalsAreReported)
{
    CrowdScript silent;
    silent.answer = CrowdScript::Answer::Ignore;
    crowd->SetScript(silent);
    crowd->ComeOnline(10);
    Settled();
    const auto write = [this](const char* what)
    {
        return [this, what](const Crowd::Invitation& invitation)
        {
            journal.Write(std::string(what) + ' ' + std::to_string(invitation.userId) + ' ' + invitation.inviterId +
                          ' ' + std::to_string(invitation.inviteId) + ' ' + invitation.code + ' ' + invitation.message);
        };
    };
    crowd->SetOnInvited(write("invited"));
    crowd->SetOnCanceled(write("canceled"));
    const unsigned id = Invite({"10"});
    EXPECT_EQ(Settled(), (Lines{"invited 10 1 1 code {invite}"}));
    avcore::ZolTextPairList results;
    EXPECT_EQ(device.online->CancelInvite(MakeList({}), results, id), S_OK);
    EXPECT_EQ(device.online->CancelInvite(MakeList({}), results, id), S_OK);
    EXPECT_EQ(Settled(), (Lines{"canceled 10 1 1  "}));
}

TEST_F(CrowdTest, AWithdrawnInvitationIsNotAnswered)
{
    crowd->ComeOnline(10);
    CrowdScript script;
    script.answer = CrowdScript::Answer::Accept;
    script.after = std::chrono::milliseconds(500);
    crowd->SetScript(script);
    Settled();
    const unsigned id = Invite({"10"});
    Settled();
    avcore::ZolTextPairList results;
    device.online->CancelInvite(MakeList({}), results, id);
    Settled();
    std::this_thread::sleep_for(std::chrono::milliseconds(700));
    EXPECT_EQ(Settled(), Lines());
}

TEST_F(CrowdTest, ACallbackMayEndItsCrowd)
{
    crowd->ComeOnline(10);
    Settled();
    crowd->SetOnInvited([this](const Crowd::Invitation&) { crowd.reset(); });
    Invite({"10"});
    EXPECT_EQ(Settled(), (Lines{"A Terminal 10 pc 0 c x"}));
}

} // namespace
