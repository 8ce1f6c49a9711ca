#include "checks/Stage.h"

namespace checks
{

namespace
{

std::string Log(std::string_view text)
{
    return LogLine("PaasMdsClientImp", text);
}

std::string Command(const std::string& command, const std::string& subType)
{
    return "{\"message\":{\"command\":\"" + command + "\",\"data\":{\"subType\":\"" + subType + "\"}}}";
}

std::string Line(const std::string& message)
{
    return Log("PaasTMsgImp::OnMdsMsgData msg:" + message + ".");
}

const std::string kSubscribe = "subscribe_av_quality";
const std::string kUnsubscribe = "unsubscribe_av_quality";
const std::string kStart = "[platform] M.OnSubscribeAVQualityInfo()";
const std::string kStop = "[platform] M.OnUnSubscribeAVQualityInfo()";
const std::string kGetComponent = "connection1.GetComponent(IZolMdsClient)";
const std::string kRegister = "mds1.AddListener(listener1)";
const std::string kNoComponent = Log("PaasMdsClientImp::SendAVQualityInfo Get ZolMdsClient Component Fail.");

std::shared_ptr<onlinemanager::AVQualityInfo> SomeInfo()
{
    return std::make_shared<onlinemanager::AVQualityInfo>();
}

/// A stage whose client is registered at the platform, and its listener M.
struct MdsStage : Stage
{
    explicit MdsStage(CheckContext& context) : Stage(context), listener(journal, "M")
    {
        mds = Mds();
        mds->AddNotify(&listener);
        mds->InitMdsClient();
        journal.Clear();
    }

    void Message(const std::string& message)
    {
        Connection().mds.MsgData(message.c_str());
    }

    /// A command and the expected notifications.
    void ExpectCommand(const std::string& command, const std::string& subType,
                       const std::vector<std::string>& notifications, Where where = Where::Here())
    {
        Message(Command(command, subType));
        std::vector<std::string> expected{Line(Command(command, subType))};
        expected.insert(expected.end(), notifications.begin(), notifications.end());
        ExpectJournal(expected, where);
    }

    /// The kinds of the reports that one send produces, in order.
    void ExpectReports(const std::vector<std::string>& expected, Where where = Where::Here())
    {
        check.ExpectEqual(true, mds->SendAVQualityInfo(SomeInfo()), "SendAVQualityInfo", where);
        std::vector<std::string> kinds;
        for (const JournalEntry& entry : journal.Take())
        {
            const size_t begin = entry.text.find("\"subType\":\"");
            kinds.push_back(begin == std::string::npos
                                ? entry.text
                                : entry.text.substr(begin + 11, entry.text.find('"', begin + 11) - begin - 11));
        }
        check.ExpectEqual(expected, kinds, "reports", where);
    }

    MdsNotify listener;
    onlinemanager::IPaasMdsClient* mds = nullptr;
};

} // namespace

CONTRACT_CHECK(MdsClient, TheComponentIsFetchedOnFirstUseAndOnce, "The first send asks for it; InitModel does not.")
{
    Stage stage(check);
    onlinemanager::IPaasMdsClient* const mds = stage.Mds();
    check.ExpectEqual(true, mds->InitModel(nullptr), "InitModel");
    stage.ExpectJournal({Log("InitModel()")});
    check.ExpectEqual(true, mds->SendAVQualityInfo(SomeInfo()), "the first send");
    stage.ExpectJournal({kGetComponent, kRegister});
    check.ExpectEqual(true, mds->SendAVQualityInfo(SomeInfo()), "the second send");
    stage.ExpectJournal({});
}

CONTRACT_CHECK(MdsClient, BeforeAnySubscriptionASendSendsNothingAndReturnsTrue, "Nothing is subscribed.")
{
    MdsStage stage(check);
    stage.ExpectReports({});
}

CONTRACT_CHECK(MdsClient, InitMdsClientFetchesAndRegistersAfresh,
               "It fetches and registers each time, without unregistering; the result is always true.")
{
    MdsStage stage(check);
    check.ExpectEqual(true, stage.mds->InitMdsClient(), "InitMdsClient");
    stage.ExpectJournal({kGetComponent, kRegister});
    stage.Connection().SetResult("GetComponent IZolMdsClient", E_FAIL);
    check.ExpectEqual(true, stage.mds->InitMdsClient(), "InitMdsClient that is refused");
    stage.ExpectJournal({kGetComponent, kNoComponent});
}

CONTRACT_CHECK(MdsClient, ARefusedComponentIsLoggedUnderTheSendersNameAndEverySendTriesAgain,
               "The result is false until the platform has one.")
{
    Stage stage(check);
    onlinemanager::IPaasMdsClient* const mds = stage.Mds();
    stage.Connection().SetResult("GetComponent IZolMdsClient", E_NOINTERFACE);
    for (int attempt = 0; attempt < 2; ++attempt)
    {
        check.ExpectEqual(false, mds->SendAVQualityInfo(SomeInfo()), "SendAVQualityInfo");
        stage.ExpectJournal({kGetComponent, kNoComponent});
    }
    stage.Connection().SetResult("GetComponent IZolMdsClient", 1);
    check.ExpectEqual(true, mds->SendAVQualityInfo(SomeInfo()), "SendAVQualityInfo with a positive code");
    stage.ExpectJournal({kGetComponent, kRegister});
}

CONTRACT_CHECK(MdsClient, AComponentThatIsNullCountsAsRefused,
               "A success code with a null pointer counts as a failure.")
{
    Stage stage(check);
    onlinemanager::IPaasMdsClient* const mds = stage.Mds();
    stage.Connection().handsOutNull = true;
    check.ExpectEqual(false, mds->SendAVQualityInfo(SomeInfo()), "SendAVQualityInfo");
    stage.ExpectJournal({kGetComponent, kNoComponent});
}

CONTRACT_CHECK(MdsClient, OverviewThenDetailIsToldTwiceAndEachSendMakesTwoReportsOverviewFirst,
               "OnSubscribeAVQualityInfo is called once for each command.")
{
    MdsStage stage(check);
    stage.ExpectCommand(kSubscribe, "overview", {kStart});
    stage.ExpectReports({"overview"});
    stage.ExpectCommand(kSubscribe, "detail", {kStart});
    stage.ExpectReports({"overview", "detail"});
    stage.ExpectReports({"overview", "detail"});
}

CONTRACT_CHECK(MdsClient, AllSubscribesAndUnsubscribesBoth, "Whether nothing or one kind was subscribed before.")
{
    MdsStage stage(check);
    stage.ExpectCommand(kSubscribe, "all", {kStart});
    stage.ExpectReports({"overview", "detail"});
    stage.ExpectCommand(kUnsubscribe, "all", {kStop});
    stage.ExpectReports({});
    stage.ExpectCommand(kSubscribe, "detail", {kStart});
    stage.ExpectReports({"detail"});
    stage.ExpectCommand(kUnsubscribe, "all", {kStop});
    stage.ExpectReports({});
}

CONTRACT_CHECK(MdsClient, UnsubscribingTheOverviewWhileTheDetailIsSubscribedTellsNothing,
               "A later command for the detail calls OnUnSubscribeAVQualityInfo.")
{
    MdsStage stage(check);
    stage.ExpectCommand(kSubscribe, "all", {kStart});
    stage.ExpectCommand(kUnsubscribe, "overview", {});
    stage.ExpectReports({"detail"});
    stage.ExpectCommand(kUnsubscribe, "detail", {kStop});
    stage.ExpectReports({});
}

CONTRACT_CHECK(MdsClient, EveryCommandIsToldEvenWhenNothingChanged,
               "Each subscription while one exists, and each unsubscription while none exists.")
{
    MdsStage stage(check);
    stage.ExpectCommand(kUnsubscribe, "all", {kStop});
    stage.ExpectCommand(kUnsubscribe, "overview", {kStop});
    stage.ExpectCommand(kSubscribe, "overview", {kStart});
    stage.ExpectCommand(kSubscribe, "overview", {kStart});
}

CONTRACT_CHECK(MdsClient, AnUnknownSubTypeWhileNothingIsSubscribedTellsNothingOfASubscription,
               "For \"video\", no sub-type and other spellings; an unsubscription is still reported.")
{
    MdsStage stage(check);
    for (const char* const subType : {"video", "", "Overview", "ALL", "all ", "detail,overview"})
    {
        stage.ExpectCommand(kSubscribe, subType, {});
        stage.ExpectReports({});
        stage.ExpectCommand(kUnsubscribe, subType, {kStop});
    }
}

CONTRACT_CHECK(MdsClient, AnUnknownSubTypeWhileSomethingIsSubscribedChangesNothing,
               "A subscription is reported again, an unsubscription is not.")
{
    MdsStage stage(check);
    stage.ExpectCommand(kSubscribe, "detail", {kStart});
    stage.ExpectCommand(kSubscribe, "video", {kStart});
    stage.ExpectCommand(kUnsubscribe, "video", {});
    stage.ExpectReports({"detail"});
}

CONTRACT_CHECK(MdsClient, CommandsOfAnyOtherSpellingAreIgnored, "The whole text must match exactly.")
{
    MdsStage stage(check);
    stage.ExpectCommand(kSubscribe, "detail", {kStart});
    for (const char* const command :
         {"Subscribe_av_quality", "SUBSCRIBE_AV_QUALITY", "subscribe_av_qualit", "subscribe_av_quality ",
          " subscribe_av_quality", "subscribe_av_quality2", "subscribe-av-quality", "subscribe", "",
          "Unsubscribe_av_quality", "unsubscribe_av_qualit", "unsubscribe_av_quality\\u0000", "unsubscribe",
          "un_subscribe_av_quality", "unsubscribe_av_quality\\n"})
    {
        stage.ExpectCommand(command, "all", {});
        stage.ExpectReports({"detail"});
    }
}

CONTRACT_CHECK(MdsClient, EveryMessageIsLoggedUnderTheOtherClasssNameAndWhatIsUnreadableIsIgnored,
               "Members are read only at their place in the message.")
{
    MdsStage stage(check);
    for (const char* const message : {
             "",
             "nonsense",
             "[]",
             "7",
             "{}",
             "{\"message\":null}",
             "{\"message\":\"subscribe_av_quality\"}",
             "{\"message\":[{\"command\":\"subscribe_av_quality\"}]}",
             "{\"message\":{}}",
             "{\"message\":{\"command\":7,\"data\":{\"subType\":\"all\"}}}",
             "{\"message\":{\"command\":null,\"data\":{\"subType\":\"all\"}}}",
             "{\"message\":{\"command\":[\"subscribe_av_quality\"],\"data\":{\"subType\":\"all\"}}}",
             "{\"message\":{\"Command\":\"subscribe_av_quality\",\"data\":{\"subType\":\"all\"}}}",
             "{\"command\":\"subscribe_av_quality\",\"data\":{\"subType\":\"all\"}}",
             "{\"message\":{\"command\":\"subscribe_av_quality\",\"data\":{\"subType\":\"all\"}}",
             "{\"message\":{\"command\":\"subscribe_av_quality\"}}",
             "{\"message\":{\"command\":\"subscribe_av_quality\",\"subType\":\"all\"}}",
             "{\"message\":{\"command\":\"subscribe_av_quality\",\"data\":\"all\"}}",
             "{\"message\":{\"command\":\"subscribe_av_quality\",\"data\":[\"all\"]}}",
             "{\"message\":{\"command\":\"subscribe_av_quality\",\"data\":{\"subType\":1}}}",
             "{\"message\":{\"command\":\"subscribe_av_quality\",\"data\":{\"subType\":[\"all\"]}}}",
             "{\"message\":{\"command\":\"subscribe_av_quality\",\"data\":{\"subtype\":\"all\"}}}",
         })
    {
        stage.Message(message);
        stage.ExpectJournal({Line(message)});
        stage.ExpectReports({});
    }
}

CONTRACT_CHECK(MdsClient, MembersThatAreNotLookedForDoNotMatter,
               "The order of the members, other members and white space do not matter.")
{
    MdsStage stage(check);
    const std::string message = " { \"x\" : 1, \"message\" : { \"data\" : { \"a\":[], \"subType\" : \"overview\" } ,\n"
                                "\"command\" : \"subscribe_av_quality\" } } ";
    stage.Message(message);
    stage.ExpectJournal({Line(message), kStart});
    stage.ExpectReports({"overview"});
}

CONTRACT_CHECK(MdsClient, ANullMessageIsIgnoredAfterItsLine, "It is logged as an empty text.")
{
    MdsStage stage(check);
    stage.Connection().mds.MsgData(nullptr);
    stage.ExpectJournal({Line("")});
}

CONTRACT_CHECK(MdsClient, AFailedSendIsLoggedWithItsTextAndTheOtherReportIsSentAllTheSame, "The result is true.")
{
    MdsStage stage(check);
    stage.ExpectCommand(kSubscribe, "all", {kStart});
    stage.Connection().mds.SetResult("SendMdsData", E_FAIL);
    check.ExpectEqual(true, stage.mds->SendAVQualityInfo(SomeInfo()), "SendAVQualityInfo");
    std::vector<std::string> lines;
    for (const JournalEntry& entry : stage.journal.Take())
    {
        lines.push_back(entry.text);
    }
    check.Require(lines.size() == 4, "two reports, each with its line");
    for (const size_t report : {0U, 2U})
    {
        const std::string text = lines[report].substr(std::string("mds1.SendMdsData(").size());
        check.ExpectEqual(
            Log("PaasMdsClientImp::SendAVQualityInfo SendMdsData Fail.msg=" + text.substr(0, text.size() - 1) + "."),
            lines[report + 1], "the line behind the report");
    }
    check.Expect(lines[0].find("overview") != std::string::npos, "the overview comes first");
    stage.Connection().mds.SetResult("SendMdsData", 1);
    stage.ExpectReports({"overview", "detail"});
}

CONTRACT_CHECK(MdsClient, SubscriptionsSurviveInitMdsClientAndUninitModel,
               "They change only by commands; UninitModel forgets the component without a log line.")
{
    MdsStage stage(check);
    stage.ExpectCommand(kSubscribe, "detail", {kStart});
    stage.mds->InitMdsClient();
    stage.journal.Clear();
    stage.ExpectReports({"detail"});
    check.ExpectEqual(true, stage.mds->UninitModel(), "UninitModel");
    stage.ExpectJournal({});
    stage.ExpectReports({kGetComponent, kRegister, "detail"});
}

CONTRACT_CHECK(MdsClient, ListenersAreToldInOrderAndARemovedOneIsNot, "The notify list works as for every service.")
{
    MdsStage stage(check);
    MdsNotify second(stage.journal, "N");
    MdsNotify third(stage.journal, "O");
    stage.mds->AddNotify(&second);
    stage.mds->AddNotify(&third);
    stage.mds->RemoveNotify(&second);
    stage.ExpectCommand(kSubscribe, "all", {kStart, "O.OnSubscribeAVQualityInfo()"});
    stage.mds->RemoveAllNotify();
    stage.ExpectCommand(kUnsubscribe, "all", {});
}

CONTRACT_CHECK(MdsClient, AListenerNeedNotOverrideOnUnSubscribe, "OnUnSubscribeAVQualityInfo has an empty body.")
{
    class Starting final : public onlinemanager::IPaasMdsClientNotify
    {
        void OnSubscribeAVQualityInfo() override {}
    };
    MdsStage stage(check);
    Starting starting;
    stage.mds->RemoveAllNotify();
    stage.mds->AddNotify(&starting);
    stage.mds->AddNotify(&stage.listener);
    stage.ExpectCommand(kUnsubscribe, "all", {kStop});
}

CONTRACT_CHECK(MdsClient, ACommandAfterDestroyCallsNoListener,
               "The client is never unregistered, so the platform may send commands to it while the module is loaded.")
{
    Stage stage(check);
    MdsNotify listener(stage.journal, "M");
    stage.Mds()->AddNotify(&listener);
    stage.Mds()->InitMdsClient();
    check.ExpectEqual(0, stage.manager->Destroy(), "Destroy");
    check.ExpectEqual(1U, stage.Connection().mds.listeners.Count(), "listeners at the platform");
    for (const char* const command : {"subscribe_av_quality", "unsubscribe_av_quality"})
    {
        stage.journal.Clear();
        stage.Connection().mds.MsgData(Command(command, "all").c_str());
        stage.ExpectJournal({Line(Command(command, "all"))});
    }
}

} // namespace checks
