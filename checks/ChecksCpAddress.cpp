#include "checks/Stage.h"

namespace checks
{

namespace
{

std::string Log(std::string_view text)
{
    return LogLine("PaasOnlineImp", text);
}

const std::string kEntry = Log("RequestCPAddress()");
const std::string kNoHelper = Log("Login online server address is HTTP protocel, but m_http_helper == nullptr.");

onlinemanager::LoginParam ParamFor(const std::string& server)
{
    onlinemanager::LoginParam param = Stage::Param();
    param.server = server;
    return param;
}

std::string ParamLine(const std::string& server)
{
    return Log("Paas request cp param: server=" + server + ", appid=app-1, token=token-1, companyid=1001.");
}

std::string Call(const std::string& server, const std::string& http)
{
    return "connection1.RequestCPAddress(\"" + server + "\", " + http +
           ", appid=\"app-1\", token=\"token-1\", companyid=\"1001\")";
}

/// A stage whose component got no HTTP object.
struct StageWithoutHttp : Stage
{
    explicit StageWithoutHttp(CheckContext& context) : Stage(context, Scene::Created)
    {
        check.Require(manager->Initialize(nullptr) == S_OK, "the component is initialised");
        journal.Clear();
    }
};

} // namespace

CONTRACT_CHECK(CpAddress, ARequestIsLoggedAndHandsFiveArgumentsToTheConnection,
               "Server, HTTP helper, appid, token and the company id as decimal text, after a line that logs them.")
{
    Stage stage(check);
    onlinemanager::IPaasOnline* const session = stage.Session();
    const std::string server = "http://cp.example/ask";
    check.ExpectEqual(true, session->RequestCPAddress(ParamFor(server)), "RequestCPAddress");
    stage.ExpectJournal({kEntry, ParamLine(server), Call(server, "http")});

    onlinemanager::LoginParam param = ParamFor(server);
    param.companyid = 4294967295;
    param.appid = "";
    param.token = "100%s";
    check.ExpectEqual(true, session->RequestCPAddress(param), "RequestCPAddress");
    stage.ExpectJournal({
        kEntry,
        Log("Paas request cp param: server=" + server + ", appid=, token=100%s, companyid=4294967295."),
        "connection1.RequestCPAddress(\"" + server + "\", http, appid=\"\", token=\"100%s\", companyid=\"4294967295\")",
    });
}

CONTRACT_CHECK(CpAddress, TheHelperIsTheOneThatLoginHandsOut,
               "Login and RequestCPAddress pass the same HTTP helper to the platform.")
{
    Stage stage(check);
    onlinemanager::IPaasOnline* const session = stage.Session();
    session->RequestCPAddress(ParamFor("https://cp.example"));
    const avcore::IZolHttp* const requested = stage.Connection().http;
    session->Login(ParamFor("https://cp.example"), false);
    check.Expect(requested != nullptr && requested == stage.Connection().http, "the same helper");
}

CONTRACT_CHECK(CpAddress, AServerWithTheTcpSchemeInCapitalsMakesNoPlatformCall,
               "It is a connection point already, so the result is true without a call of the platform.")
{
    Stage stage(check);
    onlinemanager::IPaasOnline* const session = stage.Session();
    for (const char* const server : {"TCP:online.example:1883", "tcp://online.example:1883", "tCp:h:1"})
    {
        check.ExpectEqual(true, session->RequestCPAddress(ParamFor(server)), server);
        stage.ExpectJournal({kEntry});
    }
}

CONTRACT_CHECK(CpAddress, TcpAnywhereInTheServerMakesNoPlatformCall,
               "The module searches the whole text, also of HTTP addresses, in any letter case.")
{
    Stage stage(check);
    onlinemanager::IPaasOnline* const session = stage.Session();
    for (const char* const server : {"bridge+Tcp:h:1", "https://cp.example/?via=TCP:h", "x;tcp:"})
    {
        check.ExpectEqual(true, session->RequestCPAddress(ParamFor(server)), server);
        stage.ExpectJournal({kEntry});
    }
    const std::string server = "tcp.example";
    check.ExpectEqual(true, session->RequestCPAddress(ParamFor(server)), "without the colon");
    stage.ExpectJournal({kEntry, ParamLine(server), Call(server, "http")});
}

CONTRACT_CHECK(CpAddress, AnHttpAddressWithoutAHelperIsRefusedBeforeTcpIsLookedFor,
               "An HTTP(S) prefix needs the helper even if tcp follows in the text.")
{
    StageWithoutHttp stage(check);
    onlinemanager::IPaasOnline* const session = stage.Session();
    for (const char* const server : {"http://cp.example", "HTTP://", "https://h/?via=tcp:h"})
    {
        check.ExpectEqual(false, session->RequestCPAddress(ParamFor(server)), server);
        stage.ExpectJournal({kEntry, kNoHelper});
    }
}

CONTRACT_CHECK(CpAddress, AnHttpsAddressInMixedCaseWithoutAHelperIsRefusedAndWithOneAsked,
               "The scheme is compared in any letter case.")
{
    const std::string server = "HttpS://cp.example";
    {
        StageWithoutHttp stage(check);
        onlinemanager::IPaasOnline* const session = stage.Session();
        check.ExpectEqual(false, session->RequestCPAddress(ParamFor(server)), "without a helper");
        stage.ExpectJournal({kEntry, kNoHelper});
    }
    Stage stage(check);
    onlinemanager::IPaasOnline* const session = stage.Session();
    check.ExpectEqual(true, session->RequestCPAddress(ParamFor(server)), "with a helper");
    stage.ExpectJournal({kEntry, ParamLine(server), Call(server, "http")});
}

CONTRACT_CHECK(CpAddress, AServerWithoutASchemeMakesThePlatformCallWithTheHelperAsItIs,
               "The helper may be null in this case.")
{
    const std::string server = "online.example:1883";
    {
        StageWithoutHttp stage(check);
        onlinemanager::IPaasOnline* const session = stage.Session();
        check.ExpectEqual(true, session->RequestCPAddress(ParamFor(server)), "without a helper");
        stage.ExpectJournal({kEntry, ParamLine(server), Call(server, "null")});
        const std::string almost = "http:/cp.example";
        check.ExpectEqual(true, session->RequestCPAddress(ParamFor(almost)), "one slash is no HTTP address");
        stage.ExpectJournal({kEntry, ParamLine(almost), Call(almost, "null")});
    }
    Stage stage(check);
    onlinemanager::IPaasOnline* const session = stage.Session();
    check.ExpectEqual(true, session->RequestCPAddress(ParamFor(server)), "with a helper");
    stage.ExpectJournal({kEntry, ParamLine(server), Call(server, "http")});
}

CONTRACT_CHECK(CpAddress, UserId0IsRefusedBeforeAnySchemeTest,
               "The result is false, without the line about the missing helper, and also for a tcp address.")
{
    StageWithoutHttp stage(check);
    onlinemanager::IPaasOnline* const session = stage.Session();
    for (const char* const server : {"https://cp.example", "tcp:h:1", "online.example"})
    {
        onlinemanager::LoginParam param = ParamFor(server);
        param.userid = 0;
        check.ExpectEqual(false, session->RequestCPAddress(param), server);
        stage.ExpectJournal({kEntry});
    }
}

CONTRACT_CHECK(CpAddress, AnEmptyServerIsRefused, "The result is false, and only the entry line is logged.")
{
    Stage stage(check);
    onlinemanager::IPaasOnline* const session = stage.Session();
    check.ExpectEqual(false, session->RequestCPAddress(ParamFor("")), "RequestCPAddress");
    stage.ExpectJournal({kEntry});
}

CONTRACT_CHECK(CpAddress, ANegativeResultOfTheConnectionIsLoggedAndGivesFalse,
               "The line shows the code in hexadecimal; a positive code is success.")
{
    Stage stage(check);
    onlinemanager::IPaasOnline* const session = stage.Session();
    const std::string server = "https://cp.example";
    stage.Connection().SetResult("RequestCPAddress", E_FAIL);
    check.ExpectEqual(false, session->RequestCPAddress(ParamFor(server)), "RequestCPAddress");
    stage.ExpectJournal(
        {kEntry, ParamLine(server), Call(server, "http"), Log("request cp address failed, ret(0x80004005).")});
    stage.Connection().SetResult("RequestCPAddress", 1);
    check.ExpectEqual(true, session->RequestCPAddress(ParamFor(server)), "RequestCPAddress with a positive code");
    stage.ExpectJournal({kEntry, ParamLine(server), Call(server, "http")});
}

CONTRACT_CHECK(CpAddress, NoStateOfTheSessionChangesWhateverTheOutcome,
               "It starts no login, keeps no parameters for Relogin, and leaves a login unchanged.")
{
    {
        Stage stage(check);
        onlinemanager::IPaasOnline* const session = stage.Session();
        session->RequestCPAddress(ParamFor("https://cp.example"));
        stage.Connection().SetResult("RequestCPAddress", E_FAIL);
        session->RequestCPAddress(ParamFor("https://cp.example"));
        stage.journal.Clear();
        check.ExpectEqual(false, session->Relogin(false), "Relogin");
        char value[8];
        const auto online = session->GetConnectProperty(onlinemanager::CONNECT_PROPERTY_ONLINE, value, sizeof(value));
        check.ExpectEqual(0, online.status, "status of property 0");
        check.ExpectEqual(0, online.needed_size, "size of property 0");
        stage.ExpectJournal({});
    }
    Stage stage(check, Scene::LoggedIn);
    onlinemanager::IPaasOnline* const session = stage.Session();
    onlinemanager::LoginParam other = ParamFor("https://cp.example");
    other.userid = 7;
    session->RequestCPAddress(other);
    check.ExpectEqual(true, session->Relogin(false), "still logged in");
    stage.Connection().Logouted(0);
    stage.journal.Clear();
    session->Relogin(false);
    check.Expect(stage.journal.Count("userid=\"52011\"") == 1, "the parameters of the login are the ones of the login");
}

} // namespace checks
