#include "platform/session/CpAddress.h"
#include "tests/unit/platform/Device.h"

#include <atomic>
#include <stdexcept>
#include <thread>

using namespace platform;

namespace
{

/// Answers a request, or waits until it is closed.
class FakeHttp : public avcore::IZolHttp
{
public:
    std::string HttpGet(const char* url) override
    {
        std::unique_lock lock(m_mutex);
        urls.emplace_back(url);
        m_changed.notify_all();
        if (throws)
        {
            throw std::runtime_error("no");
        }
        if (answers)
        {
            return answer;
        }
        m_changed.wait(lock, [this, url] { return m_closed == url; });
        m_closed.clear();
        return {};
    }
    std::string HttpPost(const char*, const char*) override
    {
        ADD_FAILURE() << "nothing is posted";
        return {};
    }
    int32_t HttpClose(const char* url) override
    {
        const std::lock_guard lock(m_mutex);
        ++closes;
        // The first closing comes too early, as it may with a helper that does not know of the request yet.
        if (closes > 1)
        {
            m_closed = url;
            m_changed.notify_all();
        }
        return 0;
    }

    void WaitForRequest()
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return !urls.empty(); });
    }

    std::string answer;
    bool answers = true;
    bool throws = false;
    Lines urls;
    int closes = 0;

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::string m_closed;
};

class CpAddressTest : public PlatformTest
{
protected:
    CpAddressTest()
    {
        // A report under way may outlast the test, so the function shares what it writes to.
        platform.SetDiagnostic(
            [diagnostics = m_diagnostics](std::string_view text)
            {
                const std::lock_guard lock(diagnostics->mutex);
                diagnostics->reports.emplace_back(text);
            });
    }

    HRESULT Request(Device& device, avcore::IZolHttp* client, const char* server = "https://example.com")
    {
        return device.connection->RequestCPAddress(server, client, "app", "to ken", "7");
    }

    Lines Reports()
    {
        const std::lock_guard lock(m_diagnostics->mutex);
        return std::exchange(m_diagnostics->reports, {});
    }

    FakeHttp http;

private:
    struct Diagnostics
    {
        std::mutex mutex;
        Lines reports;
    };

    const std::shared_ptr<Diagnostics> m_diagnostics = std::make_shared<Diagnostics>();
};

TEST(CpUrlTest, NamesTheApplicationTheCompanyAndTheToken)
{
    const auto make = [](const char* server) { return MakeCpUrl({server, "a&b", "t/1", "7"}); };
    const std::string parameters = "appid=a%26b&companyid=7&token=t%2F1";
    EXPECT_EQ(make("https://h"), "https://h/cp?" + parameters);
    EXPECT_EQ(make("https://h/"), "https://h/cp?" + parameters);
    EXPECT_EQ(make("HTTP://h:81/own/path"), "HTTP://h:81/own/path?" + parameters);
    EXPECT_EQ(make("https://h/x?y=1"), "https://h/x?y=1&" + parameters);
    EXPECT_EQ(make("https://h/x?"), "https://h/x?" + parameters);
    EXPECT_EQ(make("https://h/x?y=1&"), "https://h/x?y=1&" + parameters);
    EXPECT_EQ(make("https://h#part"), "https://h/cp?" + parameters);
}

TEST(CpUrlTest, AnHttpServerIsKnownInAnyCase)
{
    EXPECT_TRUE(IsHttpServer("http://h"));
    EXPECT_TRUE(IsHttpServer("HtTpS://h"));
    EXPECT_FALSE(IsHttpServer("http:/h"));
    EXPECT_FALSE(IsHttpServer("tcp://h"));
    EXPECT_FALSE(IsHttpServer("h"));
    EXPECT_FALSE(IsHttpServer(""));
}

TEST(CpAnswerTest, IsReadOrRefusedWithAReason)
{
    const auto parse = [](const std::string& body) { return ParseCpAnswer(body, 1000); };
    EXPECT_EQ(parse(R"({"code":0,"address":"tcp:h:1"})").result, S_OK);
    EXPECT_EQ(parse(R"( {"more":[1],"address":"tcp:h:1","code":0} )").address, "tcp:h:1");
    EXPECT_EQ(parse("").result, kCpNoAnswer);
    EXPECT_EQ(parse(std::string(1001, ' ')).result, kCpTooLong);
    EXPECT_EQ(parse(R"({"code":401,"message":"token expired"})").result, kCpRefused);
    EXPECT_EQ(parse(R"({"code":401,"message":"token expired"})").text,
              "the server refuses with code 401: token expired");
    EXPECT_EQ(parse(R"({"code":-1,"message":7})").result, kCpRefused);
    for (const char* body : {"<html>", "[]", "7", "null", "{}", R"({"code":"0","address":"a"})", R"({"code":0})",
                             R"({"code":0,"address":""})", R"({"code":0,"address":7})", R"({"code":0,"address":"a")",
                             R"({"code":0,"address":"a"} x)"})
    {
        EXPECT_EQ(parse(body).result, kCpNotUnderstood) << body;
        EXPECT_FALSE(parse(body).text.empty());
    }
    EXPECT_EQ(ParseCpAnswer("{\"code\":0,\"address\":\"" + std::string(2000, 'a') + "\"}", 10'000).result,
              kCpNotUnderstood);
    EXPECT_EQ(ParseCpAnswer(std::string(1'000'000, '['), 2'000'000).result, kCpNotUnderstood);
    const std::string nested = std::string(300'000, '[') + std::string(300'000, ']');
    EXPECT_EQ(ParseCpAnswer(R"({"code":0,"address":"a","x":)" + nested + "}", 2'000'000).result, S_OK);
}

TEST_F(CpAddressTest, AServerThatIsNotHttpIsItsOwnConnectionPoint)
{
    Device device(platform, journal, "A");
    EXPECT_EQ(Request(device, nullptr, "cp.example"), S_OK);
    EXPECT_EQ(Request(device, &http, "cp.example"), S_OK);
    EXPECT_TRUE(http.urls.empty());
}

TEST_F(CpAddressTest, ArgumentsAreChecked)
{
    Device device(platform, journal, "A");
    EXPECT_EQ(device.connection->RequestCPAddress(nullptr, &http, "a", "t", "7"), E_POINTER);
    EXPECT_EQ(device.connection->RequestCPAddress("http://h", &http, nullptr, "t", "7"), E_POINTER);
    EXPECT_EQ(device.connection->RequestCPAddress("http://h", &http, "a", nullptr, "7"), E_POINTER);
    EXPECT_EQ(device.connection->RequestCPAddress("http://h", &http, "a", "t", nullptr), E_POINTER);
    EXPECT_EQ(device.connection->RequestCPAddress("", &http, "a", "t", "7"), E_INVALIDARG);
    EXPECT_EQ(Request(device, nullptr), kCpNoHttp);
    EXPECT_EQ(Reports(), (Lines{"connection point of https://example.com: there is no HTTP object to ask with"}));
    EXPECT_TRUE(http.urls.empty());
}

TEST_F(CpAddressTest, ALoginGoesToTheAddressThatWasFetchedBefore)
{
    Device device(platform, journal, "A");
    http.answer = R"({"code":0,"address":"tcp:10.0.0.5:8883"})";
    EXPECT_EQ(Request(device, &http), S_OK);
    EXPECT_EQ(http.urls, (Lines{"https://example.com/cp?appid=app&companyid=7&token=to%20ken"}));
    EXPECT_EQ(Reports(), (Lines{"connection point of https://example.com is tcp:10.0.0.5:8883"}));
    Device::LoginArguments arguments;
    arguments.server = "https://example.com";
    device.Login(arguments);
    EXPECT_TRUE(journal.WaitFor("A LoginResult 0"));
    EXPECT_EQ(http.urls.size(), 1U) << "and no second request, so none needs an HTTP object";
    ASSERT_EQ(platform.Sessions().size(), 1U);
    EXPECT_EQ(platform.Sessions()[0].connectionPoint, "tcp:10.0.0.5:8883");
}

TEST_F(CpAddressTest, ALoginFetchesTheAddressItselfOffTheHostsThread)
{
    Device device(platform, journal, "A");
    http.answer = R"({"code":0,"address":"tcp:10.0.0.6:8883"})";
    Device::LoginArguments arguments;
    arguments.server = "https://example.com";
    arguments.http = &http;
    device.Login(arguments);
    EXPECT_TRUE(journal.WaitFor("A LoginResult 0"));
    EXPECT_EQ(http.urls, (Lines{"https://example.com/cp?appid=app&companyid=7&token=token"}));
    EXPECT_EQ(platform.Sessions()[0].connectionPoint, "tcp:10.0.0.6:8883");
}

TEST_F(CpAddressTest, AnAddressOfAnotherServerIsNotUsedAndOneThatFailsIsForgotten)
{
    Device device(platform, journal, "A");
    http.answer = R"({"code":0,"address":"old"})";
    EXPECT_EQ(Request(device, &http), S_OK);
    Device::LoginArguments arguments;
    arguments.server = "https://example.org";
    arguments.http = &http;
    device.Login(arguments);
    EXPECT_TRUE(journal.WaitFor("A LoginResult 0"));
    EXPECT_EQ(http.urls.size(), 2U);
    device.connection->Logout();
    Settled();

    platform.GetFaults().SetUnreachable("old", true);
    device.Login(arguments);
    EXPECT_EQ(Settled(), (Lines{"A LoginResult 33"}));
    http.answer = R"({"code":0,"address":"new"})";
    device.Login(arguments);
    EXPECT_TRUE(journal.WaitFor("A LoginResult 0"));
    EXPECT_EQ(http.urls.size(), 3U);
    EXPECT_EQ(platform.Sessions()[0].connectionPoint, "new");
}

TEST_F(CpAddressTest, ABadAnswerFailsTheRequestAndTheLogin)
{
    Device device(platform, journal, "A");
    http.answer = "<html>404</html>";
    EXPECT_EQ(Request(device, &http), kCpNotUnderstood);
    EXPECT_EQ(Reports(), (Lines{"connection point of https://example.com: the answer is not a JSON object"}));
    http.answer.clear();
    EXPECT_EQ(Request(device, &http), kCpNoAnswer);
    http.answer = std::string(70'000, ' ');
    EXPECT_EQ(Request(device, &http), kCpTooLong);
    http.throws = true;
    EXPECT_EQ(Request(device, &http), kCpNoAnswer);
    Device::LoginArguments arguments;
    arguments.server = "https://example.com";
    arguments.http = &http;
    device.Login(arguments);
    EXPECT_TRUE(journal.WaitFor("A LoginResult 35"));
    arguments.http = nullptr;
    device.Login(arguments);
    EXPECT_EQ(Settled(), (Lines{"A LoginResult 35", "A LoginResult 35"}));
}

TEST_F(CpAddressTest, AnAnswerThatDoesNotComeInTimeIsClosed)
{
    PlatformOptions options = QuickOptions();
    options.httpTimeLimit = std::chrono::milliseconds(30);
    platform.SetOptions(options);
    Device device(platform, journal, "A");
    http.answers = false;
    EXPECT_EQ(Request(device, &http), kCpTimeLimit);
    EXPECT_GE(http.closes, 2);
    EXPECT_EQ(Reports(), (Lines{"connection point of https://example.com: no answer within 30 ms"}));
}

TEST_F(CpAddressTest, TheHttpObjectIsNotUsedAnyMoreWhenTheListenersAreGone)
{
    Device device(platform, journal, "A");
    auto shortLived = std::make_unique<FakeHttp>();
    shortLived->answers = false;
    Device::LoginArguments arguments;
    arguments.server = "https://example.com";
    arguments.http = shortLived.get();
    device.Login(arguments);
    shortLived->WaitForRequest();
    EXPECT_EQ(device.connection->RemoveListener(&device), S_OK);
    shortLived.reset();
    Settled();

    // The same when the listeners are gone before the login sends its request.
    PlatformOptions options = QuickOptions();
    options.answerDelay = std::chrono::milliseconds(20);
    platform.SetOptions(options);
    device.connection->AddListener(&device);
    shortLived = std::make_unique<FakeHttp>();
    arguments.http = shortLived.get();
    device.Login(arguments);
    device.connection->RemoveListener(&device);
    shortLived.reset();
    Settled();
}

TEST_F(CpAddressTest, ALogoutEndsTheRequestOfALogin)
{
    Device device(platform, journal, "A");
    http.answers = false;
    Device::LoginArguments arguments;
    arguments.server = "https://example.com";
    arguments.http = &http;
    device.Login(arguments);
    http.WaitForRequest();
    EXPECT_EQ(device.connection->Logout(), S_OK);
    EXPECT_TRUE(journal.WaitFor("A Logouted 0"));
    device.Release();
    EXPECT_EQ(Settled(), (Lines{"A Logouted 0"}));
}

TEST_F(CpAddressTest, ThePlatformEndsDuringARequest)
{
    http.answers = false;
    auto shortLived = std::make_unique<Platform>(QuickOptions());
    Device device(*shortLived, journal, "A");
    Device::LoginArguments arguments;
    arguments.server = "https://example.com";
    arguments.http = &http;
    device.Login(arguments);
    http.WaitForRequest();
    shortLived.reset();
    EXPECT_EQ(journal.Take(), Lines());
}

} // namespace
