#include "checks/Stage.h"

#include <cstring>

namespace checks
{

namespace
{

using onlinemanager::CONNECT_PROPERTY_CONFLICT_CUSTOM_STATE;
using onlinemanager::CONNECT_PROPERTY_CONFLICT_DEVICE_ID;
using onlinemanager::CONNECT_PROPERTY_ONLINE;
using onlinemanager::ConnectProperty;
using onlinemanager::LoginParam;

std::string Session(const std::string& text)
{
    return LogLine("PaasOnlineImp", text);
}

/// The lines of a login with the usual parameters, up to the platform's call, which gets `http` ("http" or "null").
std::vector<std::string> LoginLines(const std::string& server = "tcp:online.example:1883",
                                    const std::string& http = "null", bool force = false)
{
    const std::string forced = force ? "1" : "0";
    return {
        Session("Login()"),
        Session("Paas login param: server=" + server + ", appid=app-1, token=token-1."),
        Session("Paas login param: deviceid=device-1, companyid=1001, userid=52011."),
        Session("Paas login param: mutex=pc, ext={\"tt\":3}."),
        Session("Paas login param: force=" + forced + ", registeruser=1."),
        "connection1.Login(\"" + server + "\", " + http +
            ", appid=\"app-1\", token=\"token-1\", deviceid=\"device-1\", companyid=\"1001\", userid=\"52011\", "
            "mutex=\"pc\", ext=\"{\"tt\":3}\", force=" +
            forced + ", registeruser=1)",
    };
}

LoginParam ParamFor(const std::string& server)
{
    LoginParam param = Stage::Param();
    param.server = server;
    return param;
}

/// The text of a property; "absent" if the key has none.
std::string Property(onlinemanager::IPaasOnline* session, ConnectProperty key)
{
    char buffer[200] = {};
    const auto result = session->GetConnectProperty(key, buffer, sizeof(buffer));
    return result.status == 1 ? buffer : "absent";
}

/// A session with the listener A.
struct Online
{
    explicit Online(CheckContext& check, Scene scene = Scene::Initialized)
        : stage(check, scene),
          connection(stage.Connection()),
          session(stage.Session())
    {
        session->AddNotify(&listener);
    }

    ~Online()
    {
        session->RemoveAllNotify();
    }

    Stage stage;
    RecordingConnection& connection;
    onlinemanager::IPaasOnline* session;
    SessionNotify listener{stage.journal, "A"};
};

} // namespace

CONTRACT_CHECK(Login, LoginPassesEveryParameterToThePlatform,
               "Four lines with parameters, then the platform's Login with its eleven arguments.")
{
    Online online(check);
    check.ExpectEqual(true, online.session->Login(Stage::Param(), false), "Login");
    online.stage.ExpectJournal(LoginLines());
    check.ExpectEqual(true, online.session->Login(Stage::Param(), true), "Login with force");
    online.stage.ExpectJournal(LoginLines("tcp:online.example:1883", "null", true));
}

CONTRACT_CHECK(Login, NumbersTravelAsUnsignedDecimalText, "The largest user and company ids keep their value.")
{
    Online online(check);
    LoginParam param = Stage::Param();
    param.userid = 4294967295U;
    param.companyid = 4294967294U;
    param.registeruser = false;
    param.terminal = static_cast<quenda::TerminalType>(4294967295U);
    check.ExpectEqual(true, online.session->Login(param, false), "Login");
    check.ExpectEqual(1,
                      online.stage.journal.Count("companyid=\"4294967294\", userid=\"4294967295\", mutex=\"pc\", "
                                                 "ext=\"{\"tt\":4294967295}\", force=0, registeruser=0)"),
                      "calls of the platform with these numbers");
}

CONTRACT_CHECK(Login, EmptyTextsArePassedAsEmptyTexts, "Only the user and the server must be set.")
{
    Online online(check);
    LoginParam param;
    param.userid = 1;
    param.server = "server";
    check.ExpectEqual(true, online.session->Login(param, false), "Login");
    check.ExpectEqual(1,
                      online.stage.journal.Count(
                          "connection1.Login(\"server\", null, appid=\"\", token=\"\", deviceid=\"\", companyid=\"0\", "
                          "userid=\"1\", mutex=\"\", ext=\"{\"tt\":0}\", force=0, registeruser=0)"),
                      "calls of the platform");
}

CONTRACT_CHECK(Login, UserId0OrAnEmptyServerLogsOnlyTheEntry, "Login returns false after its \"Login()\" line.")
{
    Online online(check);
    LoginParam user0 = Stage::Param();
    user0.userid = 0;
    check.ExpectEqual(false, online.session->Login(user0, false), "Login of user 0");
    check.ExpectEqual(false, online.session->Login(ParamFor(""), true), "Login without a server");
    online.stage.ExpectJournal({Session("Login()"), Session("Login()")});
}

CONTRACT_CHECK(
    Login, ASchemeInCapitalsWithoutAHelperIsRefused,
    "HTTP and HTTPS addresses in any letter case need the host's HTTP object; without it the platform is not called.")
{
    Stage stage(check, Scene::Created);
    stage.manager->Initialize(nullptr);
    onlinemanager::IPaasOnline* const session = stage.Session();
    for (const char* const server : {"HTTPS://online.example", "http://online.example", "hTtPs://", "HTTP://x"})
    {
        check.ExpectEqual(false, session->Login(ParamFor(server), false), server);
        stage.ExpectJournal({
            Session("Login()"),
            Session("Login online server address is HTTP protocel, but m_http_helper == nullptr."),
        });
    }
}

CONTRACT_CHECK(Login, ATcpServerIsAcceptedWithoutAHelper,
               "Addresses that do not begin with an HTTP scheme are passed with a null helper.")
{
    Stage stage(check, Scene::Created);
    stage.manager->Initialize(nullptr);
    onlinemanager::IPaasOnline* const session = stage.Session();
    for (const char* const server :
         {"tcp:online.example:1883", "online.example", "http:/x", "https:", "xhttp://x", "tcp:http://x", " https://x"})
    {
        check.ExpectEqual(true, session->Login(ParamFor(server), false), server);
        stage.ExpectJournal(LoginLines(server));
    }
}

CONTRACT_CHECK(Login, AnHttpServerIsPassedWithTheHelper,
               "The platform gets the HTTP helper with an HTTP or HTTPS address in any letter case.")
{
    Online online(check);
    for (const char* const server : {"https://online.example", "HTTP://online.example", "hTtPs://", "http://"})
    {
        check.ExpectEqual(true, online.session->Login(ParamFor(server), false), server);
        online.stage.ExpectJournal(LoginLines(server, "http"));
    }
}

CONTRACT_CHECK(Login, AnyOtherServerIsPassedWithoutTheHelper,
               "The platform gets null with every other server text, although the session has a helper.")
{
    Online online(check);
    for (const char* const server : {"tcp:online.example:1883", "TCP:http://x", "online.example", "http:/x",
                                     "https:", "xhttp://x", " https://x", "tls:online.example"})
    {
        check.ExpectEqual(true, online.session->Login(ParamFor(server), false), server);
        online.stage.ExpectJournal(LoginLines(server));
    }
}

CONTRACT_CHECK(Login, AnyServerTextIsPassedToThePlatform, "Any text that is not empty is passed unchanged.")
{
    Online online(check);
    for (const std::string& server : {std::string("%s%n"), std::string("\xFF\xFE"), std::string(100000, 'x')})
    {
        check.ExpectEqual(true, online.session->Login(ParamFor(server), false), "Login");
        online.stage.ExpectJournal(LoginLines(server));
    }
}

CONTRACT_CHECK(Login, ARefusalOfThePlatformIsLoggedWithItsCode,
               "A negative result gives false, and the state stays \"logging in\" until an event changes it.")
{
    Online online(check);
    online.connection.SetResult("Login", E_FAIL);
    check.ExpectEqual(false, online.session->Login(Stage::Param(), false), "Login");
    std::vector<std::string> lines = LoginLines();
    lines.push_back(Session("Login PaaS failed, ret(0x80004005)."));
    online.stage.ExpectJournal(lines);
    check.ExpectEqual(false, online.session->Relogin(false), "Relogin while the login counts as under way");
    check.ExpectEqual(true, online.session->Logout(), "Logout of it");
    online.stage.ExpectJournal({Session("Logout()"), "connection1.Logout()"});
    online.connection.SetResult("Login", S_OK);
    online.connection.LoginResult(7);
    check.ExpectEqual(true, online.session->Relogin(false), "Relogin after the result");
}

CONTRACT_CHECK(Login, APositiveResultOfThePlatformIsSuccess, "Only negative results are failures.")
{
    Online online(check);
    online.connection.SetResult("Login", 1);
    check.ExpectEqual(true, online.session->Login(Stage::Param(), false), "Login");
    online.stage.ExpectJournal(LoginLines());
}

CONTRACT_CHECK(Login, TheStateIsLoggingInBeforeThePlatformIsCalled,
               "A host that calls the session from inside the platform's Login finds a login under way.")
{
    Online online(check);
    bool relogin = true;
    online.connection.SetHook("Login", [&] { relogin = online.session->Relogin(false); });
    online.session->Login(Stage::Param(), false);
    check.ExpectEqual(false, relogin, "Relogin from inside the platform's login");
}

CONTRACT_CHECK(Login, ASuccessIsToldAndThenTheUsersAreRefreshed,
               "OnLoginSuccess comes on the platform's thread before the first company refresh starts.")
{
    Online online(check);
    online.session->Login(Stage::Param(), false);
    online.stage.journal.Clear();
    online.connection.LoginResult(0);
    online.stage.ExpectJournal({
        "[platform] " + Session("OnLoginResult(), errCode=0."),
        "[platform] A.OnLoginSuccess()",
        "[platform] online1.RefreshAllUsersStatus() -> 101",
    });
    check.ExpectEqual("true", Property(online.session, CONNECT_PROPERTY_ONLINE), "property 0");
}

CONTRACT_CHECK(Login, DuringOnLoginSuccessTheSessionIsLoggedInAndTheUserServiceNotYet,
               "State and property are set before the listeners are called; the user service is set afterwards.")
{
    Online online(check);
    onlinemanager::IUserOnline* const users = online.stage.Users();
    online.session->Login(Stage::Param(), false);
    online.stage.journal.Clear();
    online.listener.hook = [&](const std::string&)
    {
        check.ExpectEqual(true, online.session->Relogin(false), "Relogin inside");
        check.ExpectEqual("true", Property(online.session, CONNECT_PROPERTY_ONLINE), "property 0 inside");
        unsigned request = 0;
        check.ExpectEqual(false, users->RefreshCompanyUserStatus(&request), "refresh inside");
    };
    online.connection.LoginResult(0);
    online.stage.ExpectJournal({
        Session("OnLoginResult(), errCode=0."),
        "A.OnLoginSuccess()",
        LogLine("UserOnlineImp", "RefreshCompanyUserStatus call failed, current not logged in."),
        "online1.RefreshAllUsersStatus() -> 101",
    });
    online.listener.hook = nullptr;
}

CONTRACT_CHECK(
    Login, AFailureIsToldWithItsCodeUnchanged,
    "OnOffline has the platform's code, property 0 is false, nothing is refreshed, and a new login is possible.")
{
    Online online(check);
    for (const int code : {30, 1, -5, 50002})
    {
        online.session->Login(Stage::Param(), false);
        online.stage.journal.Clear();
        online.connection.LoginResult(code);
        const std::string number = std::to_string(code);
        online.stage.ExpectJournal({
            Session("OnLoginResult(), errCode=" + number + "."),
            "[platform] A.OnOffline(" + number + ")",
        });
        check.ExpectEqual("false", Property(online.session, CONNECT_PROPERTY_ONLINE), "property 0");
        check.ExpectEqual("absent", Property(online.session, CONNECT_PROPERTY_CONFLICT_DEVICE_ID), "property 2");
    }
}

CONTRACT_CHECK(
    Login, ALoginRefusedWithCode36LeavesTheOtherDevicesDetails,
    "Three lines are logged, keys 1 and 2 are set, OnOffline(36) follows; a later logout with 36 is reported as 50002.")
{
    Online online(check);
    online.session->Login(Stage::Param(), false);
    online.stage.journal.Clear();
    online.connection.LoginResult(36, "device-2", "in a meeting", "{\"tt\":4}");
    online.stage.ExpectJournal({
        Session("OnLoginResult(), errCode=36."),
        Session("OnLoginResult(), szConflictDeviceId=device-2."),
        Session("OnLoginResult(), szConflictCustomState=in a meeting."),
        Session("OnLoginResult(), szConflictExtendInfo={\"tt\":4}."),
        "A.OnOffline(36)",
    });
    check.ExpectEqual("false", Property(online.session, CONNECT_PROPERTY_ONLINE), "property 0");
    check.ExpectEqual("in a meeting", Property(online.session, CONNECT_PROPERTY_CONFLICT_CUSTOM_STATE), "property 1");
    check.ExpectEqual("device-2", Property(online.session, CONNECT_PROPERTY_CONFLICT_DEVICE_ID), "property 2");

    online.stage.LogIn();
    online.connection.Logouted(36);
    online.stage.ExpectJournal({Session("OnLogouted(), errCode=36."), "A.OnOffline(50002)"});
    check.ExpectEqual("device-2", Property(online.session, CONNECT_PROPERTY_CONFLICT_DEVICE_ID),
                      "property 2, which a logout leaves alone");
}

CONTRACT_CHECK(Login, ConflictDetailsStandBeforeTheListenersAreTold,
               "A host can read the other device's id from inside OnOffline(36).")
{
    Online online(check);
    online.session->Login(Stage::Param(), false);
    std::string device;
    online.listener.hook = [&](const std::string&)
    { device = Property(online.session, CONNECT_PROPERTY_CONFLICT_DEVICE_ID); };
    online.connection.LoginResult(36, "device-2", "", "");
    check.ExpectEqual("device-2", device, "property 2 inside OnOffline");
    online.listener.hook = nullptr;
}

CONTRACT_CHECK(Login, NullConflictDetailsAreLoggedAsEmpty, "Each of the three texts may be null.")
{
    Online online(check);
    online.session->Login(Stage::Param(), false);
    online.stage.journal.Clear();
    online.connection.LoginResult(36, nullptr, nullptr, nullptr);
    online.stage.ExpectJournal({
        Session("OnLoginResult(), errCode=36."),
        Session("OnLoginResult(), szConflictDeviceId=."),
        Session("OnLoginResult(), szConflictCustomState=."),
        Session("OnLoginResult(), szConflictExtendInfo=."),
        "A.OnOffline(36)",
    });
}

CONTRACT_CHECK(Login, DetailsWithAnotherCodeAreNeitherLoggedNorStored, "Only code 36 means a conflict.")
{
    Online online(check);
    online.session->Login(Stage::Param(), false);
    online.stage.journal.Clear();
    online.connection.LoginResult(37, "device-2", "state", "ext");
    online.stage.ExpectJournal({Session("OnLoginResult(), errCode=37."), "A.OnOffline(37)"});
    check.ExpectEqual("absent", Property(online.session, CONNECT_PROPERTY_CONFLICT_CUSTOM_STATE), "property 1");
    check.ExpectEqual("absent", Property(online.session, CONNECT_PROPERTY_CONFLICT_DEVICE_ID), "property 2");
}

CONTRACT_CHECK(Login, ALogoutEventIsToldWithItsCode,
               "OnLogouted logs, sets property 0 to false, and OnOffline has the code; only 36 becomes 50002.")
{
    Online online(check);
    for (const int code : {0, 30, 35, 37})
    {
        online.stage.LogIn();
        online.connection.Logouted(code);
        const std::string number = std::to_string(code);
        online.stage.ExpectJournal({
            "[platform] " + Session("OnLogouted(), errCode=" + number + "."),
            "[platform] A.OnOffline(" + number + ")",
        });
        check.ExpectEqual("false", Property(online.session, CONNECT_PROPERTY_ONLINE), "property 0");
    }
}

CONTRACT_CHECK(Login, ALogoutEventReachesTheUserServiceBeforeTheListeners,
               "Inside OnOffline no user is known and no user is logged in.")
{
    Online online(check, Scene::LoggedIn);
    onlinemanager::IUserOnline* const users = online.stage.Users();
    online.connection.online.UserTerminalStateChanged("7", {"t", 1, "c", "{}"});
    online.stage.journal.Clear();
    online.listener.hook = [&](const std::string&)
    {
        users->QueryUserStatus({7}, [&](const onlinemanager::UserOnlineInfo& info)
                               { check.ExpectEqual(0, info.terminals.size(), "terminals known of user 7"); });
        check.ExpectEqual(false, users->SetSelfCustomInfo("text"), "SetSelfCustomInfo inside");
    };
    online.connection.Logouted(0);
    online.stage.ExpectJournal({
        Session("OnLogouted(), errCode=0."),
        "A.OnOffline(0)",
        LogLine("UserOnlineImp", "SetSelfCustomInfo, info=text."),
        LogLine("UserOnlineImp", "SetSelfCustomInfo call failed, current not logged in."),
    });
    online.listener.hook = nullptr;
}

CONTRACT_CHECK(Login, ALogoutIsAskedOfThePlatform, "Logout itself changes no state; the event OnLogouted does.")
{
    Online online(check, Scene::LoggedIn);
    check.ExpectEqual(true, online.session->Logout(), "Logout");
    online.stage.ExpectJournal({Session("Logout()"), "connection1.Logout()"});
    check.ExpectEqual(true, online.session->Relogin(false), "Relogin before the event, still logged in");
    check.ExpectEqual("true", Property(online.session, CONNECT_PROPERTY_ONLINE), "property 0 before the event");
    online.connection.Logouted(0);
    check.ExpectEqual("false", Property(online.session, CONNECT_PROPERTY_ONLINE), "property 0 after the event");
}

CONTRACT_CHECK(Login, ALogoutWithoutALoginReturnsTrueAndLogsALine,
               "Before a login and after a logout the platform is not called.")
{
    Online online(check);
    check.ExpectEqual(true, online.session->Logout(), "Logout before a login");
    online.stage.LogIn();
    online.connection.Logouted(0);
    online.stage.journal.Clear();
    check.ExpectEqual(true, online.session->Logout(), "Logout after a logout");
    online.stage.ExpectJournal({
        Session("Logout()"),
        Session("PaasOnlineImp::Logout is not logged in."),
    });
}

CONTRACT_CHECK(Login, ALogoutMayOvertakeALogin, "While a login is under way, Logout calls the platform too.")
{
    Online online(check);
    online.session->Login(Stage::Param(), false);
    online.stage.journal.Clear();
    check.ExpectEqual(true, online.session->Logout(), "Logout");
    online.stage.ExpectJournal({Session("Logout()"), "connection1.Logout()"});
}

CONTRACT_CHECK(Login, AFailedLogoutIsLogged, "A negative result of the platform gives false.")
{
    Online online(check, Scene::LoggedIn);
    online.connection.SetResult("Logout", E_FAIL);
    check.ExpectEqual(false, online.session->Logout(), "Logout");
    online.stage.ExpectJournal({Session("Logout()"), "connection1.Logout()", Session("Logout failed.")});
    check.ExpectEqual(true, online.session->Relogin(false), "Relogin, still logged in");
    online.connection.SetResult("Logout", 1);
    check.ExpectEqual(true, online.session->Logout(), "Logout with a positive result");
}

CONTRACT_CHECK(Login, ReloginBeforeAnyLoginIsFalse, "There are no stored parameters yet.")
{
    Online online(check);
    check.ExpectEqual(false, online.session->Relogin(true), "Relogin");
    online.session->Login(ParamFor(""), false);
    online.stage.journal.Clear();
    check.ExpectEqual(false, online.session->Relogin(true), "Relogin after a refused login");
    online.stage.ExpectJournal({});
}

CONTRACT_CHECK(Login, ReloginLogsInWithTheCopiedParameters,
               "While logged out it logs in with the last parameters and the given force.")
{
    Online online(check);
    {
        LoginParam gone = Stage::Param();
        online.session->Login(gone, false);
        gone.server.assign(gone.server.size(), '#');
        gone.userid = 9;
    }
    online.connection.LoginResult(7);
    online.stage.journal.Clear();
    check.ExpectEqual(true, online.session->Relogin(true), "Relogin");
    online.stage.ExpectJournal(LoginLines("tcp:online.example:1883", "null", true));
}

CONTRACT_CHECK(Login, ReloginWhileLoggingInIsFalseAndWhileLoggedInTrue, "Neither starts a login.")
{
    Online online(check);
    online.session->Login(Stage::Param(), false);
    online.stage.journal.Clear();
    check.ExpectEqual(false, online.session->Relogin(true), "Relogin while logging in");
    online.connection.LoginResult(0);
    online.stage.journal.Clear();
    check.ExpectEqual(true, online.session->Relogin(true), "Relogin while logged in");
    online.stage.ExpectJournal({});
}

CONTRACT_CHECK(Login, AReloginFromInsideOnOfflineLogsInAgain,
               "The state is \"logged out\" when the listeners are called.")
{
    Online online(check, Scene::LoggedIn);
    online.listener.hook = [&](const std::string&)
    { check.ExpectEqual(true, online.session->Relogin(false), "Relogin inside"); };
    online.connection.Logouted(36);
    check.ExpectEqual(1, online.stage.journal.Count("connection1.Login("), "logins at the platform");
    online.listener.hook = nullptr;
}

CONTRACT_CHECK(Login, EventsOfAMeetingDoNotReachTheSessionsListeners,
               "Joins, leaves and users of a group call no listener of the session.")
{
    Online online(check, Scene::LoggedIn);
    online.connection.JoinGroupResult(0);
    online.connection.LeaveGroupResult(0);
    online.connection.GroupUserJoined("7");
    online.connection.GroupUserLeaved("7");
    online.connection.GroupUserSync({"7", "8"});
    check.ExpectEqual(0, online.stage.journal.Count("A."), "notifications of the session");
}

CONTRACT_CHECK(Login, APropertyIsAbsentBeforeItWasWritten, "Key 0 before any login gives status 0 and size 0.")
{
    Online online(check);
    char buffer[8] = "unused";
    for (const int key : {0, 1, 2, 3, -1})
    {
        const auto result =
            online.session->GetConnectProperty(static_cast<ConnectProperty>(key), buffer, sizeof(buffer));
        check.ExpectEqual(0, result.status, "status of key " + std::to_string(key));
        check.ExpectEqual(0, result.needed_size, "needed size of key " + std::to_string(key));
    }
    check.ExpectEqual("unused", std::string(buffer), "the buffer");
    online.stage.ExpectJournal({});
}

CONTRACT_CHECK(Login, APropertyNeedsRoomForItsTerminator,
               "\"true\" into 4 bytes gives (0, 5), into 5 bytes (1, 0) and the text; a larger buffer changes nothing.")
{
    Online online(check, Scene::LoggedIn);
    char buffer[8];
    for (const int size : {1, 4})
    {
        std::memset(buffer, 'x', sizeof(buffer));
        const auto result = online.session->GetConnectProperty(CONNECT_PROPERTY_ONLINE, buffer, size);
        check.ExpectEqual(0, result.status, "status with " + std::to_string(size) + " bytes");
        check.ExpectEqual(5, result.needed_size, "needed size");
    }
    for (const int size : {5, 6})
    {
        std::memset(buffer, 'x', sizeof(buffer));
        const auto result = online.session->GetConnectProperty(CONNECT_PROPERTY_ONLINE, buffer, size);
        check.ExpectEqual(1, result.status, "status with " + std::to_string(size) + " bytes");
        check.ExpectEqual(0, result.needed_size, "needed size");
        check.Expect(std::memcmp(buffer, "true", 5) == 0, "the text and its terminator are copied");
        check.ExpectEqual('\0', buffer[size - 1], "the last byte of the buffer");
        check.ExpectEqual('x', buffer[6], "the byte behind the buffer");
    }
}

CONTRACT_CHECK(Login, APropertyNeedsABuffer, "A null buffer or a size of 0 gives status 0 and size 0.")
{
    Online online(check, Scene::LoggedIn);
    char buffer[8];
    const auto without = online.session->GetConnectProperty(CONNECT_PROPERTY_ONLINE, nullptr, 8);
    const auto empty = online.session->GetConnectProperty(CONNECT_PROPERTY_ONLINE, buffer, 0);
    check.Expect(without.status == 0 && without.needed_size == 0, "(0, 0) without a buffer");
    check.Expect(empty.status == 0 && empty.needed_size == 0, "(0, 0) with a size of 0");
}

CONTRACT_CHECK(Login, TheUserServiceIsHandedOutOnce,
               "GetUserOnline returns the same service each time; a null output returns 0x80004005 and logs a line.")
{
    Online online(check);
    onlinemanager::IUserOnline* first = nullptr;
    onlinemanager::IUserOnline* second = nullptr;
    check.ExpectEqual(0, online.session->GetUserOnline(&first), "GetUserOnline");
    check.ExpectEqual(0, online.session->GetUserOnline(&second), "GetUserOnline once more");
    check.Expect(first != nullptr && first == second, "the service is the same");
    check.ExpectEqual(E_FAIL, online.session->GetUserOnline(nullptr), "GetUserOnline(null)");
    online.stage.ExpectJournal({Session("PaasOnlineImp::GetUserOnline param error.")});
}

CONTRACT_CHECK(Login, WithoutAnOnlineComponentThereIsNoUserService,
               "GetUserOnline returns 0x80004005 and logs a line; login and logout work without the service.")
{
    Stage stage(check, Scene::Created);
    stage.platform.onNewConnection = [](RecordingConnection& connection)
    { connection.SetResult("GetComponent IZolOnline", E_NOINTERFACE); };
    stage.manager->Initialize(nullptr);
    onlinemanager::IPaasOnline* const session = stage.Session();
    onlinemanager::IUserOnline* users = nullptr;
    check.ExpectEqual(E_FAIL, session->GetUserOnline(&users), "GetUserOnline");
    stage.ExpectJournal({Session("PaasOnlineImp::GetUserOnline m_user_online = nullptr.")});

    SessionNotify listener(stage.journal, "A");
    session->AddNotify(&listener);
    session->Login(Stage::Param(), false);
    stage.journal.Clear();
    stage.Connection().LoginResult(0);
    stage.Connection().Logouted(0);
    stage.Connection().LoginResult(5);
    stage.ExpectJournal({
        Session("OnLoginResult(), errCode=0."),
        "A.OnLoginSuccess()",
        Session("OnLogouted(), errCode=0."),
        "A.OnOffline(0)",
        Session("OnLoginResult(), errCode=5."),
        "A.OnOffline(5)",
    });
    session->RemoveAllNotify();
}

CONTRACT_CHECK(Login, AFirstRefreshThatFailsIsLogged, "The user stays logged in.")
{
    Online online(check);
    online.connection.online.SetResult("RefreshAllUsersStatus", E_FAIL);
    online.session->Login(Stage::Param(), false);
    online.stage.journal.Clear();
    online.connection.LoginResult(0);
    online.stage.ExpectJournal({
        Session("OnLoginResult(), errCode=0."),
        "A.OnLoginSuccess()",
        "online1.RefreshAllUsersStatus() -> 101",
        LogLine("UserOnlineImp", "First refresh company user status failed."),
    });
}

CONTRACT_CHECK(Login, TheSessionsTunnelNeedsAnOutput, "A null output returns 0x80004005 and logs a line.")
{
    Online online(check);
    check.ExpectEqual(E_FAIL, online.session->GetMeetingTunnel(nullptr), "GetMeetingTunnel(null)");
    online.stage.ExpectJournal({
        Session("GetMeetingTunnel()"),
        Session("PaasOnlineImp::GetMeetingTunnel param error."),
    });
}

CONTRACT_CHECK(Login, ASecondInitModelRegistersAgainAndKeepsTheUserService,
               "It returns true and does not ask for components that it has.")
{
    Online online(check);
    onlinemanager::IUserOnline* const before = online.stage.Users();
    check.ExpectEqual(true, online.session->InitModel(&online.stage.factory), "InitModel");
    online.stage.ExpectJournal({
        Session("InitModel()"),
        "connection1.AddListener(listener1)",
        "connection1.AddListener(listener2)",
    });
    check.ExpectEqual(before, online.stage.Users(), "the user service");
}

CONTRACT_CHECK(Login, UninitModelLeavesThePlatformAndLogsOut,
               "Both listeners are removed, then the user service, then comes the logout; a later InitModel makes a "
               "new user service.")
{
    Online online(check, Scene::LoggedIn);
    check.ExpectEqual(true, online.session->UninitModel(), "UninitModel");
    online.stage.ExpectJournal({
        "connection1.RemoveListener(listener1)",
        "connection1.RemoveListener(listener2)",
        LogLine("UserOnlineImp", "UninitModel()"),
        "online1.RemoveListener(listener1)",
        Session("Logout()"),
        "connection1.Logout()",
    });
    onlinemanager::IUserOnline* users = nullptr;
    check.ExpectEqual(E_FAIL, online.session->GetUserOnline(&users), "GetUserOnline");
    online.stage.journal.Clear();
    check.ExpectEqual(true, online.session->InitModel(nullptr), "InitModel");
    check.ExpectEqual(1, online.stage.journal.Count("connection1.GetComponent(IZolOnline)"), "queries for presence");
    check.ExpectEqual(0, online.session->GetUserOnline(&users), "GetUserOnline");
}

} // namespace checks
