#include "checks/Stage.h"

#include <numeric>

namespace checks
{

namespace
{

using onlinemanager::InviteData;
using onlinemanager::RejectInvitationReason;

constexpr unsigned kSelf = 52011; // the user who is logged in

std::string Log(std::string_view text)
{
    return LogLine("UserOnlineImp", text);
}

InviteData SomeInvitation()
{
    InviteData data;
    data.inviteCode = 7;
    data.roomCreateTime = (uint64_t{1} << 32) + 5;
    data.roomCompanyId = 1001;
    data.isForce = true;
    data.proxyUserId = 3;
    data.calloutType = 1;
    data.meetingId = 880012;
    data.userId = kSelf;
    data.userName = "Zoë";
    data.terminal = "pc";
    return data;
}

const std::string kJson = R"({"version":"1.0","method":"InviteUser","params":{"inviteCode":7,"roomCreateTime":5,)"
                          R"("roomCompanyId":1001,"proxyUserId":3,"calloutType":1,"meetingId":880012,"isForce":true,)"
                          R"("inviter":{"userId":52011,"userName":"Zo\u00EB","terminal":"pc"}}})";

/// The content that a listener gets for the invitation `kJson`, and for an unreadable one.
const std::string kParsed = "{code=7 time=5 company=1001 force=1 proxy=3 callout=1 meeting=880012 user=52011 "
                            "name=\"Zoë\" terminal=\"pc\"}";
const std::string kNothing =
    "{code=0 time=0 company=0 force=0 proxy=0 callout=0 meeting=0 user=0 name=\"\" terminal=\"\"}";

const std::string kAccept = R"({"version":"1.0","method":"AcceptInvite","params":{"terminal":"3"}})";

std::string Reject(unsigned mode)
{
    return R"({"version":"1.0","method":"RejectInvite","params":{"terminal":"3","mode":)" + std::to_string(mode) + "}}";
}

std::vector<unsigned> Users(unsigned first, unsigned count)
{
    std::vector<unsigned> ids(count);
    std::iota(ids.begin(), ids.end(), first);
    return ids;
}

std::string ListOf(unsigned first, unsigned count)
{
    std::string list;
    for (const unsigned id : Users(first, count))
    {
        list += (list.empty() ? "" : ",") + std::to_string(id);
    }
    return "[" + list + "]";
}

std::string Batch(const std::string& list, unsigned inviteId)
{
    return "online1.InviteUsers(" + list + ", results=0, code=\"7\", " + kJson + ", inviteId=0) -> " +
           std::to_string(inviteId);
}

std::string Sent(unsigned users, const std::string& ids)
{
    return Log("UserOnlineImp::InviteUsers(), totalUser=" + std::to_string(users) + ", code=7, inviteId=" + ids);
}

std::string IncomeLine(unsigned userId, unsigned inviteId)
{
    return Log("UserOnlineImp::OnInviteIncome, userId=" + std::to_string(userId) +
               ", inviteId=" + std::to_string(inviteId) + ".");
}

std::string CanceledLine(unsigned userId, unsigned inviteId, int reason)
{
    return Log("UserOnlineImp::OnInviteCanceled, userId=" + std::to_string(userId) +
               ", inviteId=" + std::to_string(inviteId) + ", reason=" + std::to_string(reason) + ".");
}

std::string AcceptLine(unsigned userId, unsigned inviteId, bool isAccept)
{
    return Log("AcceptInvite, userId=" + std::to_string(userId) + ", inviteId=" + std::to_string(inviteId) +
               ", isAccept=" + (isAccept ? "1" : "0") + ".");
}

constexpr auto kByInviter = avcore::ZOL_INVITE_CANCEL_BY_INVITER;

/// A stage with the user service of user 52011, terminal type 3, and its listener U.
struct InvitationStage : Stage
{
    explicit InvitationStage(CheckContext& context) : Stage(context, Scene::LoggedIn), listener(journal, "U")
    {
        users = Stage::Users();
        users->AddNotify(&listener);
    }

    RecordingOnline& Online()
    {
        return Connection().online;
    }

    /// Sends an invitation to the module and clears the journal.
    void Receive(const char* inviter, unsigned inviteId)
    {
        Online().InviteIncome(inviter, inviteId, "7", kJson.c_str());
        journal.Clear();
    }

    /// Whether a received invitation was open, which means that its withdrawal is reported. It is not open afterwards.
    bool TakeOpen(unsigned inviteId)
    {
        journal.Clear();
        Online().InviteCanceled("1", inviteId, kByInviter);
        const bool wasOpen = journal.Count("U.OnAbandonInvite(1, " + std::to_string(inviteId) + ", 1)") == 1;
        journal.Clear();
        return wasOpen;
    }

    UserNotify listener;
    onlinemanager::IUserOnline* users = nullptr;
};

} // namespace

CONTRACT_CHECK(Invitations, Inviting45UsersMakesThreeCallsWith20And20And5AndAnswersToAnyCarryTheFirstId,
               "The host gets the first call's invite id.")
{
    InvitationStage stage(check);
    unsigned id = 77;
    check.ExpectEqual(true, stage.users->InviteUsers(Users(101, 45), SomeInvitation(), &id), "InviteUsers");
    check.ExpectEqual(501U, id, "the invite id");
    stage.ExpectJournal({
        "[host] " + Batch(ListOf(101, 20), 501),
        Batch(ListOf(121, 20), 502),
        Batch(ListOf(141, 5), 503),
        Sent(45, "501,502,503,"),
    });
    stage.Online().InviteAccepted("101", 501, "{}");
    stage.Online().InviteRejected("125", 502, avcore::ZOL_INVITE_REJECT_DECLINED, "{}");
    stage.Online().InviteAccepted("145", 503, "{}");
    stage.ExpectJournal({
        "[platform] U.OnInviteAccepted(101, 501)",
        "[platform] U.OnInviteRejected(125, 501, 1)",
        "[platform] U.OnInviteAccepted(145, 501)",
    });
}

CONTRACT_CHECK(Invitations, BatchesEndAtTwentyInvitees, "19, 20, 21 and 40 users make 1, 1, 2 and 2 calls.")
{
    const struct
    {
        unsigned users;
        size_t calls;
    } cases[] = {{1, 1}, {19, 1}, {20, 1}, {21, 2}, {40, 2}, {41, 3}};
    InvitationStage stage(check);
    for (const auto& entry : cases)
    {
        unsigned id = 0;
        stage.users->InviteUsers(Users(1, entry.users), SomeInvitation(), &id);
        check.ExpectEqual(entry.calls, stage.journal.Count("online1.InviteUsers"),
                          "calls for " + std::to_string(entry.users) + " users");
        stage.journal.Clear();
    }
}

CONTRACT_CHECK(Invitations, InviteUsersKeepsOrderAndDuplicates, "The module sends the host's list unchanged.")
{
    InvitationStage stage(check);
    unsigned id = 0;
    stage.users->InviteUsers({9, 4294967295, 9, 0}, SomeInvitation(), &id);
    stage.ExpectJournal({Batch("[9,4294967295,9,0]", 501), Sent(4, "501,")});
}

CONTRACT_CHECK(Invitations, InviteUsersWithAnEmptyListIsRefusedWithItsLine, "The output is unchanged.")
{
    InvitationStage stage(check);
    unsigned id = 77;
    check.ExpectEqual(false, stage.users->InviteUsers({}, SomeInvitation(), &id), "InviteUsers");
    stage.ExpectJournal({Log("InviteUsers failed, user list is empty.")});
    check.ExpectEqual(77U, id, "the output");
}

CONTRACT_CHECK(Invitations, InvitingOnlyOneselfMakesNoPlatformCallLeavesTheIdAndIsTold,
               "Also if the own id is in the list several times; the listener gets the caller's id and data unchanged.")
{
    InvitationStage stage(check);
    unsigned id = 77;
    check.ExpectEqual(true, stage.users->InviteUsers({kSelf, kSelf}, SomeInvitation(), &id), "InviteUsers");
    check.ExpectEqual(77U, id, "the output");
    stage.ExpectJournal({
        "[host] U.OnInviteIncome(52011, 77, {code=7 time=4294967301 company=1001 force=1 proxy=3 callout=1 "
        "meeting=880012 user=52011 name=\"Zoë\" terminal=\"pc\"})",
    });
    check.Expect(!stage.TakeOpen(77), "it is not an open received invitation");
}

CONTRACT_CHECK(Invitations, InvitingOneselfTogetherWithOthersSendsTheOthersThenTells,
               "OnInviteIncome(self, first id, data) comes after the line and after the output is written.")
{
    InvitationStage stage(check);
    unsigned id = 77;
    unsigned seen = 0;
    stage.listener.hook = [&](const std::string&) { seen = id; };
    check.ExpectEqual(true, stage.users->InviteUsers({5, kSelf, 6, kSelf}, SomeInvitation(), &id), "InviteUsers");
    check.ExpectEqual(501U, seen, "the output at the notification");
    stage.ExpectJournal({
        Batch("[5,6]", 501),
        Sent(2, "501,"),
        "[host] U.OnInviteIncome(52011, 501, {code=7 time=4294967301 company=1001 force=1 proxy=3 callout=1 "
        "meeting=880012 user=52011 name=\"Zoë\" terminal=\"pc\"})",
    });
}

CONTRACT_CHECK(Invitations, OneselfDoesNotCountForTheBatches,
               "The own id is removed before the list is cut into batches: twenty others need one call.")
{
    InvitationStage stage(check);
    std::vector<unsigned> ids = Users(101, 20);
    ids.insert(ids.begin() + 10, kSelf);
    unsigned id = 0;
    stage.users->InviteUsers(ids, SomeInvitation(), &id);
    check.ExpectEqual(1U, stage.journal.Count(Batch(ListOf(101, 20), 501)), "calls");
    check.ExpectEqual(1U, stage.journal.Count("online1.InviteUsers"), "calls at all");
}

CONTRACT_CHECK(
    Invitations, AFailedBatchEndsTheInvitationWhileEarlierOnesStaySent,
    "The result is false with a line and without output or OnInviteIncome; answers to sent batches carry the first id.")
{
    InvitationStage stage(check);
    stage.Online().inviteResults = {0, E_FAIL};
    std::vector<unsigned> ids = Users(101, 45);
    ids.push_back(kSelf);
    unsigned id = 77;
    check.ExpectEqual(false, stage.users->InviteUsers(ids, SomeInvitation(), &id), "InviteUsers");
    check.ExpectEqual(77U, id, "the output");
    stage.ExpectJournal({
        Batch(ListOf(101, 20), 501),
        Batch(ListOf(121, 20), 502),
        Log("InviteUsers failed, ret(0x80004005), inviterId=52011."),
    });
    stage.Online().InviteAccepted("101", 501, "{}");
    stage.Online().InviteAccepted("121", 502, "{}");
    stage.ExpectJournal({"U.OnInviteAccepted(101, 501)", "U.OnInviteAccepted(121, 0)"});
}

CONTRACT_CHECK(Invitations, APositiveStatusOfThePlatformIsSuccess, "Only a negative status is a failure.")
{
    InvitationStage stage(check);
    for (const char* const operation : {"InviteUsers", "CancelInvite", "AcceptInvite", "RejectInvite"})
    {
        stage.Online().SetResult(operation, 1);
    }
    unsigned id = 0;
    check.ExpectEqual(true, stage.users->InviteUsers({5}, SomeInvitation(), &id), "InviteUsers");
    check.ExpectEqual(true, stage.users->AbandonInvite(id, {5}), "AbandonInvite");
    check.ExpectEqual(true, stage.users->AcceptInvite(5, 1, true), "AcceptInvite");
    check.ExpectEqual(true, stage.users->AcceptInvite(5, 1, false), "AcceptInvite, declining");
}

CONTRACT_CHECK(Invitations, APlatformIdOf0IsSkippedForTheFirstId, "The first id is the first one that is not 0.")
{
    InvitationStage stage(check);
    stage.Online().inviteIds = {0, 602, 603};
    unsigned id = 77;
    check.ExpectEqual(true, stage.users->InviteUsers(Users(101, 45), SomeInvitation(), &id), "InviteUsers");
    check.ExpectEqual(602U, id, "the invite id");
    check.ExpectEqual(1U, stage.journal.Count(Sent(45, "0,602,603,")), "lines");
    stage.journal.Clear();
    stage.Online().InviteAccepted("101", 603, "{}");
    stage.ExpectJournal({"U.OnInviteAccepted(101, 602)"});
}

CONTRACT_CHECK(Invitations, AnIdThatThePlatformGivesAgainKeepsItsFirstInvitation,
               "An existing entry of the table is not overwritten.")
{
    InvitationStage stage(check);
    stage.Online().inviteIds = {601, 602, 700, 602};
    unsigned first = 0;
    unsigned second = 0;
    stage.users->InviteUsers(Users(101, 25), SomeInvitation(), &first);
    stage.users->InviteUsers(Users(101, 25), SomeInvitation(), &second);
    check.ExpectEqual(700U, second, "id of the second invitation");
    stage.journal.Clear();
    stage.Online().InviteAccepted("101", 602, "{}");
    stage.ExpectJournal({"U.OnInviteAccepted(101, 601)"});
}

CONTRACT_CHECK(Invitations, AnAnswerToAnUnknownInvitationIsReportedWithId0,
               "This also holds after an invitation has got this id later.")
{
    InvitationStage stage(check);
    stage.Online().InviteAccepted("5", 501, "{}");
    stage.Online().InviteRejected("6", 999, avcore::ZOL_INVITE_REJECT_OFFLINE, "{}");
    stage.ExpectJournal({"U.OnInviteAccepted(5, 0)", "U.OnInviteRejected(6, 0, 2)"});
    unsigned id = 0;
    stage.users->InviteUsers({5}, SomeInvitation(), &id);
    check.ExpectEqual(501U, id, "id of the later invitation");
    stage.journal.Clear();
    stage.Online().InviteAccepted("5", 501, "{}");
    stage.ExpectJournal({"U.OnInviteAccepted(5, 0)"});
}

CONTRACT_CHECK(Invitations, AnAnswerWithoutAListenerTranslatesNothing,
               "An id is translated for each active listener, so an unknown id is not stored if there is none.")
{
    InvitationStage stage(check);
    stage.users->RemoveAllNotify();
    stage.Online().InviteAccepted("5", 501, "{}");
    stage.Online().InviteRejected("5", 501, avcore::ZOL_INVITE_REJECT_DECLINED, "{}");
    stage.users->AddNotify(&stage.listener);
    unsigned id = 0;
    stage.users->InviteUsers({5}, SomeInvitation(), &id);
    stage.journal.Clear();
    stage.Online().InviteAccepted("5", 501, "{}");
    stage.ExpectJournal({"U.OnInviteAccepted(5, 501)"});
}

CONTRACT_CHECK(Invitations, SentInvitationsAreRememberedAcrossALogout,
               "Answers that come after a logout are still translated.")
{
    InvitationStage stage(check);
    unsigned id = 0;
    stage.users->InviteUsers(Users(101, 25), SomeInvitation(), &id);
    stage.users->AbandonInvite(id, {});
    stage.Connection().Logouted(0);
    stage.journal.Clear();
    stage.Online().InviteAccepted("125", 502, "{}");
    stage.ExpectJournal({"U.OnInviteAccepted(125, 501)"});
}

CONTRACT_CHECK(Invitations, AnswersPassThePlatformsReasonUnchangedAndWriteNoLine, "Any value reaches the listeners.")
{
    InvitationStage stage(check);
    unsigned id = 0;
    stage.users->InviteUsers({5}, SomeInvitation(), &id);
    stage.journal.Clear();
    for (const int reason : {0, 17, 70000, -1})
    {
        stage.Online().InviteRejected("5", id, static_cast<avcore::ZolInviteRejectReason>(reason), nullptr);
        stage.ExpectJournal({"[platform] U.OnInviteRejected(5, 501, " + std::to_string(reason) + ")"});
    }
}

CONTRACT_CHECK(Invitations, AbandonInviteCancelsAtThePlatformWithTheHostsId,
               "Also for an empty list; no listener is called, and failures are logged with their code.")
{
    InvitationStage stage(check);
    check.ExpectEqual(true, stage.users->AbandonInvite(501, {9, 4294967295, 9}), "AbandonInvite");
    check.ExpectEqual(true, stage.users->AbandonInvite(0, {}), "AbandonInvite with an empty list");
    stage.ExpectJournal({
        "[host] online1.CancelInvite([9,4294967295,9], results=0, 501)",
        "online1.CancelInvite([], results=0, 0)",
    });
    stage.Online().SetResult("CancelInvite", E_FAIL);
    check.ExpectEqual(false, stage.users->AbandonInvite(501, {9}), "AbandonInvite");
    stage.ExpectJournal({"online1.CancelInvite([9], results=0, 501)", Log("AbandonInvite failed, ret(0x80004005).")});
}

CONTRACT_CHECK(Invitations, AnInvitationThatComesInIsLoggedAndToldWithItsContent,
               "The line shows user, invitation and message; the platform's code text is not used.")
{
    InvitationStage stage(check);
    stage.Online().InviteIncome("5", 901, "not the code", kJson.c_str());
    stage.ExpectJournal({
        IncomeLine(5, 901),
        Log("msg=" + kJson),
        "[platform] U.OnInviteIncome(5, 901, " + kParsed + ")",
    });
    check.Expect(stage.TakeOpen(901), "it is open");
}

CONTRACT_CHECK(Invitations, AnInvitationThatCannotBeReadIsToldWithoutContent,
               "The listener gets the fields that could be read.")
{
    InvitationStage stage(check);
    for (const char* const message :
         {"", "nonsense", "[]", "{\"method\":\"InviteUsers\",\"params\":{\"inviteCode\":1}}"})
    {
        stage.Online().InviteIncome("5", 901, nullptr, message);
        stage.ExpectJournal({
            IncomeLine(5, 901),
            Log("msg=" + std::string(message)),
            "U.OnInviteIncome(5, 901, " + kNothing + ")",
        });
    }
}

CONTRACT_CHECK(Invitations, ANullMessageIsLoggedAsEmptyAndReportedWithoutContent,
               "The listener gets an invitation with default content.")
{
    InvitationStage stage(check);
    stage.Online().InviteIncome("5", 901, nullptr, nullptr);
    stage.ExpectJournal({IncomeLine(5, 901), Log("msg="), "U.OnInviteIncome(5, 901, " + kNothing + ")"});
}

CONTRACT_CHECK(Invitations, UserIdsThatAreNoNumbersAreUser0InEveryEvent, "The event is handled like any other.")
{
    for (const char* const text : {static_cast<const char*>(nullptr), "", "u5", "-5", "99999999999999999999"})
    {
        InvitationStage stage(check);
        stage.Online().InviteIncome(text, 901, "7", "{}");
        stage.Online().InviteAccepted(text, 1, "{}");
        stage.Online().InviteRejected(text, 1, avcore::ZOL_INVITE_REJECT_DECLINED, "{}");
        stage.Online().InviteCanceled(text, 901, kByInviter);
        stage.ExpectJournal({
            IncomeLine(0, 901),
            Log("msg={}"),
            "U.OnInviteIncome(0, 901, " + kNothing + ")",
            "U.OnInviteAccepted(0, 0)",
            "U.OnInviteRejected(0, 0, 1)",
            CanceledLine(0, 901, 1),
            "U.OnAbandonInvite(0, 901, 1)",
        });
    }
}

CONTRACT_CHECK(Invitations, AnInviteIdThatComesInAgainKeepsItsFirstInviter,
               "Both are reported; RejectAllInvite answers the first inviter.")
{
    InvitationStage stage(check);
    stage.Receive("5", 901);
    stage.Online().InviteIncome("6", 901, "7", "{}");
    check.ExpectEqual(1U, stage.journal.Count("U.OnInviteIncome(6, 901"), "reported invitations");
    stage.journal.Clear();
    stage.users->RejectAllInvite(static_cast<RejectInvitationReason>(2), {});
    stage.ExpectJournal({
        Log("RejectAllInvite, reason=0x2, exclude_size=0."),
        "online1.RejectInvite(\"5\", 901, " + Reject(2) + ")",
        "U.OnAbandonInvite(5, 901, 258)",
        Log("Reject invite IDs=901, ."),
    });
}

CONTRACT_CHECK(Invitations, AcceptingSendsTheAcceptMessageAndLeavesTheInvitationOpen,
               "A later cancellation is still reported; accepting calls no listener.")
{
    InvitationStage stage(check);
    stage.Receive("5", 901);
    check.ExpectEqual(true, stage.users->AcceptInvite(5, 901, true), "AcceptInvite");
    stage.ExpectJournal({AcceptLine(5, 901, true), "[host] online1.AcceptInvite(\"5\", 901, " + kAccept + ")"});
    check.Expect(stage.TakeOpen(901), "it is still open");
}

CONTRACT_CHECK(Invitations, DecliningSendsTheRejectMessageWithReason17AndTellsNothing,
               "The invitation is closed before the platform is called.")
{
    InvitationStage stage(check);
    stage.Receive("5", 901);
    check.ExpectEqual(true, stage.users->AcceptInvite(5, 901, false), "AcceptInvite");
    stage.ExpectJournal({AcceptLine(5, 901, false), "[host] online1.RejectInvite(\"5\", 901, " + Reject(17) + ")"});
    check.Expect(!stage.TakeOpen(901), "it is not open any more");
}

CONTRACT_CHECK(Invitations, AcceptInviteDoesNotLookAtTheTable, "An unknown invitation is accepted like any other.")
{
    InvitationStage stage(check);
    check.ExpectEqual(true, stage.users->AcceptInvite(4294967295, 4294967295, true), "accepting");
    check.ExpectEqual(true, stage.users->AcceptInvite(0, 0, false), "declining");
    stage.ExpectJournal({
        AcceptLine(4294967295, 4294967295, true),
        "online1.AcceptInvite(\"4294967295\", 4294967295, " + kAccept + ")",
        AcceptLine(0, 0, false),
        "online1.RejectInvite(\"0\", 0, " + Reject(17) + ")",
    });
}

CONTRACT_CHECK(Invitations, AFailedAnswerIsLoggedWithItsCode,
               "Accepting and declining log the same text; a declined invitation is closed even then.")
{
    InvitationStage stage(check);
    stage.Online().SetResult("AcceptInvite", E_FAIL);
    stage.Online().SetResult("RejectInvite", E_INVALIDARG);
    stage.Receive("5", 901);
    check.ExpectEqual(false, stage.users->AcceptInvite(5, 901, true), "accepting");
    check.ExpectEqual(false, stage.users->AcceptInvite(5, 901, false), "declining");
    stage.ExpectJournal({
        AcceptLine(5, 901, true),
        "online1.AcceptInvite(\"5\", 901, " + kAccept + ")",
        Log("AcceptInvite failed, ret(0x80004005)."),
        AcceptLine(5, 901, false),
        "online1.RejectInvite(\"5\", 901, " + Reject(17) + ")",
        Log("AcceptInvite failed, ret(0x80070057)."),
    });
    check.Expect(!stage.TakeOpen(901), "it is not open any more");
}

CONTRACT_CHECK(Invitations, ACancellationOfAnOpenInvitationIsLoggedAndReportedWithThePlatformsReason,
               "It is reported once, because the invitation is then closed.")
{
    InvitationStage stage(check);
    stage.Receive("5", 901);
    stage.Online().InviteCanceled("5", 901, avcore::ZOL_INVITE_CANCEL_ANSWERED_ELSEWHERE);
    stage.ExpectJournal({CanceledLine(5, 901, 2), "[platform] U.OnAbandonInvite(5, 901, 2)"});
    stage.Online().InviteCanceled("5", 901, avcore::ZOL_INVITE_CANCEL_ANSWERED_ELSEWHERE);
    stage.ExpectJournal({CanceledLine(5, 901, 2)});
}

CONTRACT_CHECK(Invitations, ACancellationOfAnInvitationThatIsNotOpenIsLoggedAndNotReported,
               "It was declined before, or was never received.")
{
    InvitationStage stage(check);
    stage.Receive("5", 901);
    stage.users->AcceptInvite(5, 901, false);
    stage.journal.Clear();
    stage.Online().InviteCanceled("5", 901, kByInviter);
    stage.Online().InviteCanceled("5", 902, kByInviter);
    stage.ExpectJournal({CanceledLine(5, 901, 1), CanceledLine(5, 902, 1)});
}

CONTRACT_CHECK(Invitations, ACancellationNamesWhoCancelled,
               "The notification has the user of the event, not the user who had sent the invitation.")
{
    InvitationStage stage(check);
    stage.Receive("5", 901);
    stage.Online().InviteCanceled("6", 901, kByInviter);
    stage.ExpectJournal({CanceledLine(6, 901, 1), "U.OnAbandonInvite(6, 901, 1)"});
}

CONTRACT_CHECK(Invitations, RejectAllInviteRejectsAndReportsAllButTheExcludedAndForgetsThoseToo,
               "With 7 and 9 open and 7 excluded, 9 is rejected, reported with 0x100 plus the reason, and listed.")
{
    InvitationStage stage(check);
    stage.Receive("70", 7);
    stage.Receive("90", 9);
    check.ExpectEqual(true, stage.users->RejectAllInvite(static_cast<RejectInvitationReason>(5), {7}),
                      "RejectAllInvite");
    stage.ExpectJournal({
        Log("RejectAllInvite, reason=0x5, exclude_size=1."),
        "[host] online1.RejectInvite(\"90\", 9, " + Reject(5) + ")",
        "[host] U.OnAbandonInvite(90, 9, 261)",
        Log("Reject invite IDs=9, ."),
    });
    check.Expect(!stage.TakeOpen(7), "7 is closed");
    check.Expect(!stage.TakeOpen(9), "9 is not open any more");
    check.ExpectEqual(true, stage.users->AcceptInvite(70, 7, true), "7 can still be accepted");
}

CONTRACT_CHECK(Invitations, RejectAllInviteEmptiesTheTableWhateverThePlatformAnswers,
               "A rejection that the platform refuses is reported like any other, and the result is true.")
{
    InvitationStage stage(check);
    stage.Online().SetResult("RejectInvite", E_FAIL);
    for (unsigned id = 1; id <= 30; ++id)
    {
        stage.Receive("5", id);
    }
    check.ExpectEqual(true, stage.users->RejectAllInvite(static_cast<RejectInvitationReason>(0), {}),
                      "RejectAllInvite");
    check.ExpectEqual(30U, stage.journal.Count("online1.RejectInvite("), "rejections");
    check.ExpectEqual(30U, stage.journal.Count("U.OnAbandonInvite("), "reports");
    check.ExpectEqual(0U, stage.journal.Count("failed"), "reported failures");
    stage.journal.Clear();
    check.ExpectEqual(true, stage.users->RejectAllInvite(static_cast<RejectInvitationReason>(0), {}),
                      "RejectAllInvite once more");
    stage.ExpectJournal({Log("RejectAllInvite, reason=0x0, exclude_size=0.")});
}

CONTRACT_CHECK(Invitations, RejectAllInviteWithEverythingExcludedOnlyForgets,
               "Nothing is rejected, reported or listed, and the table is empty afterwards.")
{
    InvitationStage stage(check);
    stage.Receive("70", 7);
    stage.Receive("90", 9);
    check.ExpectEqual(true, stage.users->RejectAllInvite(static_cast<RejectInvitationReason>(5), {9, 7, 8, 7}),
                      "RejectAllInvite");
    stage.ExpectJournal({Log("RejectAllInvite, reason=0x5, exclude_size=4.")});
    check.Expect(!stage.TakeOpen(7) && !stage.TakeOpen(9), "both are closed");
}

CONTRACT_CHECK(Invitations, TheReasonOfRejectAllInviteIsAnyNumberOfTheHosts,
               "It is sent as an unsigned number and reported with 0x100 added.")
{
    InvitationStage stage(check);
    stage.Receive("5", 901);
    stage.users->RejectAllInvite(static_cast<RejectInvitationReason>(0xFFFFFFFF), {});
    stage.ExpectJournal({
        Log("RejectAllInvite, reason=0xffffffff, exclude_size=0."),
        "online1.RejectInvite(\"5\", 901, " + Reject(0xFFFFFFFF) + ")",
        "U.OnAbandonInvite(5, 901, 255)",
        Log("Reject invite IDs=901, ."),
    });
}

CONTRACT_CHECK(Invitations, ReceivedInvitationsStayOpenAcrossALogout,
               "Their cancellation is reported, and they can be rejected after the next login.")
{
    InvitationStage stage(check);
    stage.Receive("5", 901);
    stage.Receive("6", 902);
    stage.Connection().Logouted(0);
    stage.journal.Clear();
    stage.Online().InviteCanceled("5", 901, kByInviter);
    stage.ExpectJournal({CanceledLine(5, 901, 1), "U.OnAbandonInvite(5, 901, 1)"});
    stage.LogIn();
    stage.users->RejectAllInvite(static_cast<RejectInvitationReason>(5), {});
    check.ExpectEqual(1U, stage.journal.Count("U.OnAbandonInvite(6, 902, 261)"), "reports");
}

CONTRACT_CHECK(Invitations, TheAnswersCarryTheTerminalTypeOfTheLogin, "It is sent as the text of an unsigned number.")
{
    InvitationStage stage(check);
    onlinemanager::LoginParam param = Stage::Param();
    param.terminal = static_cast<quenda::TerminalType>(4294967295);
    stage.LogIn(param);
    stage.users->AcceptInvite(5, 901, true);
    stage.ExpectJournal({
        AcceptLine(5, 901, true),
        R"(online1.AcceptInvite("5", 901, {"version":"1.0","method":"AcceptInvite","params":)"
        R"({"terminal":"4294967295"}}))",
    });
}

CONTRACT_CHECK(Invitations, NamesOutsideAsciiTravelAsEscapesAndComeBack,
               "A character above U+FFFF is sent as a surrogate pair; quotes and control characters are escaped.")
{
    InvitationStage stage(check);
    InviteData data;
    data.userName = "Zoë \"Z\" \n 𝄞";
    unsigned id = 0;
    stage.users->InviteUsers({5}, data, &id);
    const std::string json = R"({"version":"1.0","method":"InviteUser","params":{"inviteCode":0,"roomCreateTime":0,)"
                             R"("roomCompanyId":0,"proxyUserId":0,"calloutType":0,"meetingId":0,"isForce":false,)"
                             R"("inviter":{"userId":0,"userName":"Zo\u00EB \"Z\" \n \uD834\uDD1E","terminal":""}}})";
    check.ExpectEqual(1U, stage.journal.Count(json), "invitations sent");
    stage.journal.Clear();
    stage.Online().InviteIncome("5", 901, "0", json.c_str());
    check.ExpectEqual(1U, stage.journal.Count("name=\"" + data.userName + "\""), "reported invitations");
}

} // namespace checks
