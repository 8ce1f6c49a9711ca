#include "checks/Stage.h"

namespace checks
{

namespace
{

std::string Log(std::string_view text)
{
    return LogLine("PaasTMsgImp", text);
}

const std::string kInit = Log("InitModel()");
const std::string kGetComponent = "connection1.GetComponent(IZolTMsg)";

/// The host's notify interface has no operation, so any call would use a slot that does not exist.
class EmptyNotify final : public onlinemanager::IPaasTMsgNotify
{
};

} // namespace

CONTRACT_CHECK(TMsg, InitModelTwiceRegistersNothingMore, "The second call returns true and only logs.")
{
    Stage stage(check);
    onlinemanager::IPaasTMsg* const tmsg = stage.TMsg();
    check.ExpectEqual(true, tmsg->InitModel(&stage.factory), "InitModel");
    check.ExpectEqual(true, tmsg->InitModel(nullptr), "InitModel without a factory");
    stage.ExpectJournal({kInit, kInit});
}

CONTRACT_CHECK(TMsg, UninitModelUnregistersAndForgetsTheComponentWithoutReleasingIt,
               "It logs nothing; a second call does nothing, and InitModel fetches the component again.")
{
    Stage stage(check);
    onlinemanager::IPaasTMsg* const tmsg = stage.TMsg();
    check.ExpectEqual(true, tmsg->UninitModel(), "UninitModel");
    stage.ExpectJournal({"tmsg1.RemoveListener(listener1)"});
    check.ExpectEqual(true, tmsg->UninitModel(), "UninitModel once more");
    stage.ExpectJournal({});
    check.ExpectEqual(true, tmsg->InitModel(nullptr), "InitModel");
    stage.ExpectJournal({kInit, kGetComponent, "tmsg1.AddListener(listener1)"});
}

CONTRACT_CHECK(TMsg, UninitModelWithoutInitModelReturnsTrueAndDoesNothingElse,
               "The service has no component, so there is nothing to unregister.")
{
    Stage stage(check, Scene::Created);
    stage.platform.onNewConnection = [](RecordingConnection& connection)
    { connection.SetResult("GetComponent IZolTMsg", E_FAIL); };
    check.Require(stage.manager->Initialize(nullptr) == S_OK, "the component is initialised");
    onlinemanager::IPaasTMsg* const tmsg = stage.TMsg();
    check.ExpectEqual(true, tmsg->UninitModel(), "UninitModel");
    stage.ExpectJournal({});
}

CONTRACT_CHECK(TMsg, ARefusedComponentIsLoggedAndInitModelMayBeCalledAgain,
               "The first result is false, the second true.")
{
    Stage stage(check, Scene::Created);
    stage.platform.onNewConnection = [](RecordingConnection& connection)
    { connection.SetResult("GetComponent IZolTMsg", E_NOINTERFACE); };
    check.Require(stage.manager->Initialize(nullptr) == S_OK, "the component is initialised");
    onlinemanager::IPaasTMsg* const tmsg = stage.TMsg();
    check.ExpectEqual(false, tmsg->InitModel(nullptr), "InitModel");
    stage.ExpectJournal({kInit, kGetComponent, Log("PaasTMsgImp::InitModel Get Zol TMsg Component Fail.")});
    stage.Connection().SetResult("GetComponent IZolTMsg", 1);
    check.ExpectEqual(true, tmsg->InitModel(nullptr), "InitModel with a positive code");
    stage.ExpectJournal({kInit, kGetComponent, "tmsg1.AddListener(listener1)"});
}

CONTRACT_CHECK(TMsg, MessagesAreLoggedAndEndThere,
               "User and group messages have their own log texts; no listener is called.")
{
    Stage stage(check);
    stage.Connection().tmsg.UserMsgIncome("52012", 7, "{\"a\":1}");
    stage.Connection().tmsg.GroupMsgIncome("room", 8, "100%s");
    stage.ExpectJournal({
        "[platform] " + Log("PaasTMsgImp::OnUserMsgIncome srcUserId:52012 msgId:7 msg:{\"a\":1}."),
        "[platform] " + Log("PaasTMsgImp::OnGroupMsgIncome srcUserId:room msgId:8 msg:100%s."),
    });
}

CONTRACT_CHECK(TMsg, AMessageIdOf4294967295IsLoggedAsMinus1, "Both log texts print the id as a signed number.")
{
    Stage stage(check);
    stage.Connection().tmsg.UserMsgIncome("1", 4294967295, "");
    stage.Connection().tmsg.GroupMsgIncome("1", 2147483648, "");
    stage.ExpectJournal({
        Log("PaasTMsgImp::OnUserMsgIncome srcUserId:1 msgId:-1 msg:."),
        Log("PaasTMsgImp::OnGroupMsgIncome srcUserId:1 msgId:-2147483648 msg:."),
    });
}

CONTRACT_CHECK(TMsg, AnIncomingMessageCallsNoRegisteredNotify, "The service only logs messages.")
{
    Stage stage(check);
    onlinemanager::IPaasTMsg* const tmsg = stage.TMsg();
    // An object without operations: a call of any slot would use memory that is not a function table.
    EmptyNotify first;
    EmptyNotify second;
    tmsg->AddNotify(&first);
    tmsg->AddNotify(&second);
    tmsg->AddNotify(nullptr);
    tmsg->RemoveNotify(&second);
    tmsg->RemoveNotify(nullptr);
    stage.Connection().tmsg.UserMsgIncome("1", 2, "text");
    stage.ExpectJournal({Log("PaasTMsgImp::OnUserMsgIncome srcUserId:1 msgId:2 msg:text.")});
    tmsg->RemoveAllNotify();
}

CONTRACT_CHECK(TMsg, MessagesThatAreNotJsonOrHugeOrNullAreOnlyLogged, "The service does not read them.")
{
    Stage stage(check);
    const std::string huge(100000, '[');
    for (const char* const message : {static_cast<const char*>(nullptr), "", "\xFF\xFE", huge.c_str()})
    {
        stage.Connection().tmsg.UserMsgIncome(nullptr, 1, message);
        stage.Connection().tmsg.GroupMsgIncome("", 1, message);
    }
    check.ExpectEqual(0U, stage.journal.Count("exception"), "exceptions");
    check.ExpectEqual(8U, stage.journal.Count("MsgIncome srcUserId: msgId:1 msg:"), "lines");
}

CONTRACT_CHECK(TMsg, TheChannelNeedsNoLogin, "Messages are logged whether or not a user is logged in.")
{
    Stage stage(check);
    stage.Connection().Logouted(0);
    stage.journal.Clear();
    stage.Connection().tmsg.UserMsgIncome("1", 2, "text");
    stage.ExpectJournal({Log("PaasTMsgImp::OnUserMsgIncome srcUserId:1 msgId:2 msg:text.")});
}

} // namespace checks
