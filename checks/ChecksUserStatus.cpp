#include "checks/Presence.h"
#include "checks/Stage.h"

namespace checks
{

namespace
{

/// A logged-in stage with the user service and its listener U.
struct StatusStage : Stage
{
    explicit StatusStage(CheckContext& context) : Stage(context, Scene::LoggedIn), listener(journal, "U")
    {
        users = Users();
        users->AddNotify(&listener);
    }

    void Event(const char* userId, const PageTerminal& terminal)
    {
        Connection().online.UserTerminalStateChanged(userId, terminal);
    }

    /// The users that were reported as changed since the last call, one text for each notification.
    std::vector<std::string> TakeChanges()
    {
        const std::string begin = "U.OnUserStatusChanged(";
        std::vector<std::string> changes;
        for (const JournalEntry& entry : journal.Take())
        {
            if (entry.text.starts_with(begin))
            {
                changes.push_back(entry.text.substr(begin.size(), entry.text.size() - begin.size() - 1));
            }
        }
        return changes;
    }

    void ExpectChanges(const std::vector<std::string>& expected, const char* what, Where where = Where::Here())
    {
        check.ExpectEqual(expected, TakeChanges(), what, where);
    }

    void ExpectKnown(const std::vector<unsigned>& ids, const std::vector<std::string>& expected,
                     Where where = Where::Here())
    {
        check.ExpectEqual(expected, Known(*users, ids), "the known records of the users", where);
    }

    UserNotify listener;
    onlinemanager::IUserOnline* users = nullptr;
};

} // namespace

CONTRACT_CHECK(UserStatus, AFirstEventMakesTheUserWithOneTerminalAndARepeatedOneChangesNothing,
               "The first is reported, the second is not.")
{
    StatusStage stage(check);
    const PageTerminal terminal{"pc", 1, "busy", "{\"tt\":3}"};
    stage.Event("7", terminal);
    stage.ExpectChanges({"[7]"}, "changes of the first event");
    stage.ExpectKnown({7}, {"7: status=1 [pc type=3 status=1 custom=busy]"});
    stage.Event("7", terminal);
    stage.ExpectChanges({}, "changes of the same event again");
}

CONTRACT_CHECK(UserStatus, AnEventThatChangesOnlyTheTerminalTypeReportsNothingAndKeepsTheStoredType,
               "Only status and custom text make a change; with such a change the type is stored too.")
{
    StatusStage stage(check);
    stage.Event("7", {"pc", 1, "busy", "{\"tt\":3}"});
    stage.TakeChanges();
    stage.Event("7", {"pc", 1, "busy", "{\"tt\":4}"});
    stage.ExpectChanges({}, "changes");
    stage.ExpectKnown({7}, {"7: status=1 [pc type=3 status=1 custom=busy]"});
    stage.Event("7", {"pc", 1, "free", "{\"tt\":4}"});
    stage.ExpectChanges({"[7]"}, "changes with another text");
    stage.ExpectKnown({7}, {"7: status=1 [pc type=4 status=1 custom=free]"});
}

CONTRACT_CHECK(UserStatus, TerminalsKeepTheOrderOfTheirFirstReportAndNeverLeave,
               "A known terminal keeps its place, a new one is added at the end, an offline one stays.")
{
    StatusStage stage(check);
    stage.Event("7", {"pc", 1, "a", "{\"tt\":1}"});
    stage.Event("7", {"phone", 1, "b", "{\"tt\":2}"});
    stage.Event("7", {"pc", 0, "c", "{\"tt\":3}"});
    stage.ExpectChanges({"[7]", "[7]", "[7]"}, "changes");
    stage.ExpectKnown({7}, {"7: status=1 [pc type=3 status=0 custom=c] [phone type=2 status=1 custom=b]"});
    stage.Event("7", {"phone", 0, "b", "{\"tt\":2}"});
    stage.ExpectKnown({7}, {"7: status=0 [pc type=3 status=0 custom=c] [phone type=2 status=0 custom=b]"});
}

CONTRACT_CHECK(UserStatus, TerminalsAreToldApartByteByByte, "Letter case and length make a difference.")
{
    StatusStage stage(check);
    for (const char* const name : {"pc", "PC", "pc ", ""})
    {
        stage.Event("7", {name, 1, "", "{}"});
    }
    stage.ExpectKnown({7}, {"7: status=1 [pc type=0 status=1 custom=] [PC type=0 status=1 custom=] "
                            "[pc  type=0 status=1 custom=] [ type=0 status=1 custom=]"});
}

CONTRACT_CHECK(UserStatus, TheOnlineStatusIs1WithAnyTerminalOnlineElseThatOfTheLastTerminal,
               "1 and 0 give 1, 0 and 2 give 2, 2 and 0 give 0, no terminals give 0; for events and for pages.")
{
    const struct
    {
        std::vector<int32_t> states;
        unsigned status;
    } cases[] = {
        {{1, 0}, 1}, {{0, 1}, 1}, {{0, 2}, 2}, {{2, 0}, 0},        {{}, 0}, {{3, 1, 2}, 1}, {{1, 1}, 1},
        {{5}, 5},    {{0}, 0},    {{1}, 1},    {{-1}, 4294967295},
    };
    StatusStage stage(check);
    Page page;
    for (const auto& entry : cases)
    {
        PageUser& user = page.emplace_back(PageUser{std::to_string(page.size()), {}});
        for (const int32_t state : entry.states)
        {
            user.terminals.push_back({"t" + std::to_string(user.terminals.size()), state, "", "{}"});
        }
    }
    Refresh(stage.Connection(), page);
    for (unsigned index = 0; index < page.size(); ++index)
    {
        const unsigned byEvents = 1000 + index;
        for (const PageTerminal& terminal : page[index].terminals)
        {
            stage.Event(std::to_string(byEvents).c_str(), terminal);
        }
        stage.users->QueryUserStatus({index, byEvents},
                                     [&](const onlinemanager::UserOnlineInfo& user) {
                                         check.ExpectEqual(cases[index].status, user.online_status,
                                                           "status of user " + std::to_string(user.user_id));
                                     });
    }
}

CONTRACT_CHECK(UserStatus, TheDigestsAreThoseOfTheStandardLibrarysStringHash,
               "The digest covers name, status and custom text, and not the terminal's type.")
{
    // Computed from the definition by a separate program.
    const struct
    {
        PageTerminal terminal;
        uint64_t digest;
    } cases[] = {
        {{"", 0, "", "{}"}, 0xcbfb430d23042e6a},
        {{"pc", 1, "", "{}"}, 0x2f047da25587d1f0},
        {{"pc", 1, "busy", "{}"}, 0xd2ae4c4939541782},
        {{"pc", 1, "busy", "{\"tt\":3}"}, 0xd2ae4c4939541782},
        {{"phone-0815", 0, "away for lunch", "{}"}, 0xd98a9d6c9e24e01a},
        {{"pc", -1, "x", "{}"}, 0x656f7d783b1f38bc},
        {{"ëëëëëëëëë", 2, "12345678", "{}"}, 0xe7af394ea5541182},
    };
    StatusStage stage(check);
    Page page;
    for (const auto& entry : cases)
    {
        page.push_back({std::to_string(page.size()), {entry.terminal}});
    }
    Refresh(stage.Connection(), page);
    for (unsigned index = 0; index < page.size(); ++index)
    {
        const unsigned byEvent = 1000 + index;
        stage.Event(std::to_string(byEvent).c_str(), cases[index].terminal);
        check.ExpectEqual(cases[index].digest, DigestOf(*stage.users, index), "digest by page of " + page[index].id);
        check.ExpectEqual(cases[index].digest, DigestOf(*stage.users, byEvent), "digest by event of " + page[index].id);
    }
}

CONTRACT_CHECK(UserStatus, TheDigestDoesNotDependOnTheOrderAndEqualTerminalsCancelEachOtherOut,
               "Users with the same terminals in another order have equal digests; the same terminal twice gives 0.")
{
    const PageTerminal pc{"pc", 1, "busy", "{}"};
    const PageTerminal phone{"phone-0815", 0, "away for lunch", "{}"};
    StatusStage stage(check);
    Refresh(stage.Connection(),
            {{"1", {pc, phone}}, {"2", {phone, pc}}, {"3", {pc, pc}}, {"4", {}}, {"5", {pc, phone, phone}}});
    const uint64_t both = 0x0b24d125a770f798;
    check.ExpectEqual(both, DigestOf(*stage.users, 1), "digest of both");
    check.ExpectEqual(both, DigestOf(*stage.users, 2), "digest of both in the other order");
    check.ExpectEqual(0U, DigestOf(*stage.users, 3), "digest of a terminal twice");
    check.ExpectEqual(0U, DigestOf(*stage.users, 4), "digest of none");
    check.ExpectEqual(0xd2ae4c4939541782U, DigestOf(*stage.users, 5), "digest of one, and another twice");
}

CONTRACT_CHECK(UserStatus, ARefreshKeepsAnOnlineUserWithAnUnchangedDigestAndDoesNotReportIt,
               "The old record stays, so a changed terminal type is not stored.")
{
    StatusStage stage(check);
    Refresh(stage.Connection(), {{"7", {{"pc", 1, "busy", "{\"tt\":3}"}}}});
    stage.TakeChanges();
    Refresh(stage.Connection(), {{"7", {{"pc", 1, "busy", "{\"tt\":4}"}}}});
    stage.ExpectChanges({"[]"}, "changes");
    stage.ExpectKnown({7}, {"7: status=1 [pc type=3 status=1 custom=busy]"});
}

CONTRACT_CHECK(UserStatus, ARefreshReportsAnOnlineUserWithAnotherDigest, "The new record replaces the old one.")
{
    StatusStage stage(check);
    Refresh(stage.Connection(), {UserOnPc("7", 1, "busy")});
    stage.TakeChanges();
    Refresh(stage.Connection(), {UserOnPc("7", 1, "free")});
    stage.ExpectChanges({"[7]"}, "changes");
    stage.ExpectKnown({7}, {"7: status=1 [pc type=3 status=1 custom=free]"});
}

CONTRACT_CHECK(UserStatus, ARefreshReportsAUserWhoseStatusChangedFrom0To1AndBack,
               "Both changes are reported, and the new record is stored.")
{
    StatusStage stage(check);
    Refresh(stage.Connection(), {UserOnPc("7", 0)});
    stage.ExpectChanges({"[7]"}, "changes: an unknown user is one, offline or not");
    Refresh(stage.Connection(), {UserOnPc("7", 1)});
    stage.ExpectChanges({"[7]"}, "changes from 0 to 1");
    stage.ExpectKnown({7}, {"7: status=1 [pc type=3 status=1 custom=]"});
    Refresh(stage.Connection(), {UserOnPc("7", 0)});
    stage.ExpectChanges({"[7]"}, "changes from 1 to 0");
    stage.ExpectKnown({7}, {"7: status=0 [pc type=3 status=0 custom=]"});
}

CONTRACT_CHECK(UserStatus, ARefreshReportsOnlineUsersThatAreMissingInAscendingOrderAndForgetsThem,
               "They follow the users of the refresh; offline users are forgotten without a report.")
{
    StatusStage stage(check);
    Refresh(stage.Connection(), {UserOnPc("30", 1), UserOnPc("9", 1), UserOnPc("200", 1), UserOnPc("4", 0)});
    stage.ExpectChanges({"[30,9,200,4]"}, "changes: in the order of the refresh");
    Refresh(stage.Connection(), {UserOnPc("100", 1)});
    stage.ExpectChanges({"[100,9,30,200]"}, "changes");
    stage.ExpectKnown({4, 9, 30, 100, 200}, {
                                                "4: status=0",
                                                "9: status=0",
                                                "30: status=0",
                                                "100: status=1 [pc type=3 status=1 custom=]",
                                                "200: status=0",
                                            });
}

CONTRACT_CHECK(
    UserStatus, AUserOfflineBeforeAndAfterARefreshDropsOutWithoutReport,
    "This holds for an equal status other than 1, whatever else changed; the next refresh reports the user as new.")
{
    StatusStage stage(check);
    Refresh(stage.Connection(), {UserOnPc("7", 0, "a"), UserOnPc("8", 2, "a")});
    stage.TakeChanges();
    Refresh(stage.Connection(), {UserOnPc("7", 0, "b"), UserOnPc("8", 2, "a")});
    stage.ExpectChanges({"[]"}, "changes");
    stage.ExpectKnown({7, 8}, {"7: status=0", "8: status=0"});
    Refresh(stage.Connection(), {UserOnPc("7", 0, "b"), UserOnPc("8", 2, "a")});
    stage.ExpectChanges({"[7,8]"}, "changes of the third refresh");
    stage.ExpectKnown({7}, {"7: status=0 [pc type=3 status=0 custom=b]"});
}

CONTRACT_CHECK(UserStatus, ARefreshReportsAUserThatWentFromOneOfflineStatusToAnother, "Status 2 differs from status 0.")
{
    StatusStage stage(check);
    Refresh(stage.Connection(), {UserOnPc("8", 2)});
    stage.TakeChanges();
    Refresh(stage.Connection(), {UserOnPc("8", 0)});
    stage.ExpectChanges({"[8]"}, "changes");
    stage.ExpectKnown({8}, {"8: status=0 [pc type=3 status=0 custom=]"});
}

CONTRACT_CHECK(UserStatus, OfAUserTwiceInARefreshTheFirstRecordWinsAndTheIdIsReportedTwice,
               "For a new user and for a changed status; for an unchanged user only the second record counts.")
{
    StatusStage stage(check);
    Refresh(stage.Connection(), {UserOnPc("7", 1, "first"), UserOnPc("7", 1, "second")});
    stage.ExpectChanges({"[7,7]"}, "changes of a new user");
    stage.ExpectKnown({7}, {"7: status=1 [pc type=3 status=1 custom=first]"});

    Refresh(stage.Connection(), {UserOnPc("7", 1, "third"), UserOnPc("7", 1, "fourth")});
    stage.ExpectChanges({"[7,7]"}, "changes of a changed user");
    stage.ExpectKnown({7}, {"7: status=1 [pc type=3 status=1 custom=third]"});

    Refresh(stage.Connection(), {UserOnPc("7", 1, "third"), UserOnPc("7", 1, "fifth")});
    stage.ExpectChanges({"[7]"}, "changes of an unchanged user: none, then the old record is used up");
    stage.ExpectKnown({7}, {"7: status=1 [pc type=3 status=1 custom=third]"});
}

CONTRACT_CHECK(UserStatus, AUserOfflineBeforeAndTwiceInARefreshIsTakenOverByTheSecondRecord,
               "The first record, still offline, is not stored; the second record, online, is.")
{
    StatusStage stage(check);
    Refresh(stage.Connection(), {UserOnPc("7", 0)});
    stage.TakeChanges();
    Refresh(stage.Connection(), {UserOnPc("7", 0), UserOnPc("7", 1)});
    stage.ExpectChanges({"[7]"}, "changes");
    stage.ExpectKnown({7}, {"7: status=1 [pc type=3 status=1 custom=]"});
}

CONTRACT_CHECK(UserStatus, APageUserWhoseIdIsNoNumberIsCachedUnderId0,
               "Null, empty, a letter or a sign in front, and numbers out of range.")
{
    StatusStage stage(check);
    PageUser withoutId = UserOnPc("", 1, "null");
    withoutId.hasNullId = true;
    for (const PageUser& user : {withoutId, UserOnPc("", 1, "empty"), UserOnPc("u7", 1, "letter"),
                                 UserOnPc("-7", 1, "sign"), UserOnPc("99999999999999999999", 1, "long")})
    {
        Refresh(stage.Connection(), {user});
        stage.ExpectKnown({0}, {"0: status=1 [pc type=3 status=1 custom=" + user.terminals[0].custom + "]"});
        stage.ExpectChanges({"[0]"}, "changes");
    }
    Refresh(stage.Connection(), {UserOnPc("7up", 1, "digits first")});
    stage.ExpectKnown({7}, {"7: status=1 [pc type=3 status=1 custom=digits first]"});
}

CONTRACT_CHECK(
    UserStatus, AQueryCallsBackOncePerIdInOrderWithADefaultRecordForTheUnknown,
    "For 5, 7 the callback gets a default record and then the known one; an id that is asked twice is answered twice.")
{
    StatusStage stage(check);
    stage.Event("7", {"pc", 1, "", "{\"tt\":3}"});
    stage.ExpectKnown({5, 7}, {"5: status=0", "7: status=1 [pc type=3 status=1 custom=]"});
    stage.ExpectKnown({7, 5, 7}, {
                                     "7: status=1 [pc type=3 status=1 custom=]",
                                     "5: status=0",
                                     "7: status=1 [pc type=3 status=1 custom=]",
                                 });
    check.ExpectEqual(0U, DigestOf(*stage.users, 5), "digest of an unknown user");
    stage.ExpectKnown({}, {});
    check.ExpectEqual(true, stage.users->QueryUserStatus({}, [](const onlinemanager::UserOnlineInfo&) {}),
                      "a query for no users");
}

CONTRACT_CHECK(UserStatus, TheTerminalTypeIsReadFromTheExtensionText,
               "It is a number or the digits at the start of a text; every other value gives 0.")
{
    const struct
    {
        const char* ext;
        const char* type;
    } cases[] = {
        {"{\"tt\":3}", "3"},
        {"{\"tt\":\"12\"}", "12"},
        {"{\"tt\":\"3x\"}", "3"},
        {"{\"tt\":4294967295}", "4294967295"},
        {"{\"tt\":4294967296}", "0"},
        {"{\"tt\":\"a1\"}", "0"},
        {"{\"tt\":\"\"}", "0"},
        {"{\"tt\":\"99999999999\"}", "0"},
        {"{\"tt\":-2}", "0"},
        {"{\"tt\":3.5}", "0"},
        {"{\"tt\":null}", "0"},
        {"{\"tt\":[3]}", "0"},
        {"{\"TT\":3}", "0"},
        {"[]", "0"},
        {"3", "0"},
        {"", "0"},
        {"{\"tt\":3", "0"},
    };
    StatusStage stage(check);
    unsigned userId = 0;
    for (const auto& entry : cases)
    {
        ++userId;
        stage.Event(std::to_string(userId).c_str(), {"pc", 1, "", entry.ext});
        stage.ExpectKnown({userId},
                          {std::to_string(userId) + ": status=1 [pc type=" + entry.type + " status=1 custom=]"});
    }
}

} // namespace checks
