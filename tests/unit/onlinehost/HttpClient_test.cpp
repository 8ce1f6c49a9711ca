#include "onlinehost/HttpClient.h"

#include "tests/support/HttpServer.h"
#include "tests/support/HttpsServer.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <mutex>
#include <netdb.h>
#include <set>
#include <thread>

using onlinehost::HttpClient;

namespace
{

constexpr char kSilentUrl[] = "http://name.silent/";

/// While it lives, the name resolver of this program does not answer for the name of `kSilentUrl`.
class SilentResolver
{
public:
    SilentResolver()
    {
        s_isSilent = true;
        s_inside = 0;
    }

    ~SilentResolver()
    {
        s_isSilent = false;
        while (s_inside != 0)
        {
            Sleep();
        }
    }

    SilentResolver(const SilentResolver&) = delete;
    SilentResolver& operator=(const SilentResolver&) = delete;

    static void WaitUntilAsked()
    {
        while (s_inside == 0)
        {
            Sleep();
        }
    }

    /// A thread is still inside the resolver.
    static bool IsAsked()
    {
        return s_inside != 0;
    }

    /// The resolver's part. Its limit lets a test fail that would hang otherwise.
    static void Hang()
    {
        ++s_inside;
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(15);
        while (s_isSilent && std::chrono::steady_clock::now() < limit)
        {
            Sleep();
        }
        --s_inside;
    }

private:
    static void Sleep()
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }

    static inline std::atomic<bool> s_isSilent{false};
    static inline std::atomic<int> s_inside{0};
};

} // namespace

/// Takes the place of the system's resolver in this program, and must be visible to the HTTP library for that.
extern "C" [[gnu::visibility("default")]] int getaddrinfo(const char* name, const char* service, const addrinfo* hints,
                                                          addrinfo** result)
{
    if (name != nullptr && std::strcmp(name, "name.silent") == 0)
    {
        SilentResolver::Hang();
        return EAI_AGAIN;
    }
    static const auto next = reinterpret_cast<decltype(&getaddrinfo)>(dlsym(RTLD_NEXT, "getaddrinfo"));
    return next(name, service, hints, result);
}

namespace
{

struct Completion
{
    unsigned int code = 0;
    std::string body;
    bool hasBody = false;
    bool isTerminated = false;
};

/// Records every event, and lets the test wait for completions.
class Listener : public IHttpResponseNotify
{
public:
    void OnHeaderRespond(unsigned int id, char* data, unsigned int len) override
    {
        Add("header " + std::to_string(id) + " " + std::string(data, len));
    }

    void OnDataRespond(unsigned int id, char* data, unsigned int len) override
    {
        const std::lock_guard lock(m_mutex);
        m_pieces.append(data, len);
        if (m_journal.empty() || !m_journal.back().starts_with("data"))
        {
            m_journal.push_back("data " + std::to_string(id));
        }
    }

    void OnCompleteRespond(unsigned int id, unsigned int code, char* data, unsigned int len) override
    {
        Add("complete " + std::to_string(id) + " " + std::to_string(code));
        const std::lock_guard lock(m_mutex);
        m_thread = std::this_thread::get_id();
        Completion completion{code, {}, data != nullptr};
        if (data != nullptr)
        {
            completion.body.assign(data, len);
            completion.isTerminated = data[len] == '\0';
        }
        m_completions.push_back(completion);
        m_completed.notify_all();
    }

    Completion Wait(size_t count = 1)
    {
        std::unique_lock lock(m_mutex);
        m_completed.wait(lock, [&] { return m_completions.size() >= count; });
        return m_completions[count - 1];
    }

    size_t Count() const
    {
        const std::lock_guard lock(m_mutex);
        return m_completions.size();
    }

    std::vector<std::string> Journal() const
    {
        const std::lock_guard lock(m_mutex);
        return m_journal;
    }

    std::string Pieces() const
    {
        const std::lock_guard lock(m_mutex);
        return m_pieces;
    }

    std::thread::id Thread() const
    {
        const std::lock_guard lock(m_mutex);
        return m_thread;
    }

private:
    void Add(std::string entry)
    {
        const std::lock_guard lock(m_mutex);
        m_journal.push_back(std::move(entry));
    }

    mutable std::mutex m_mutex;
    std::condition_variable m_completed;
    std::vector<std::string> m_journal;
    std::vector<Completion> m_completions;
    std::string m_pieces;
    std::thread::id m_thread;
};

HttpRequest MakeRequest(uint32_t method, const char* url, const char* body = "")
{
    return {method, 2, 1, 0, 0, 5, url, body};
}

uint32_t Get(HttpClient& client, const std::string& url, IHttpResponseNotify& listener)
{
    const HttpRequest request = MakeRequest(kHttpMethodGet, url.c_str());
    WBASELIB::TStringBase<char> text;
    return client.Request(&request, &listener, &text);
}

void ExpectFailed(const Completion& completion)
{
    EXPECT_EQ(completion.code, 0u);
    EXPECT_EQ(completion.body, "");
    EXPECT_FALSE(completion.hasBody);
}

/// Sends one request with a new client.
Completion GetOnce(const std::string& url, HttpClient::Options options = {})
{
    HttpClient client(std::move(options));
    Listener listener;
    Get(client, url, listener);
    return listener.Wait();
}

} // namespace

TEST(HttpClient, ReportsHeadThenDataThenCompletion)
{
    const HttpServer server([](const HttpExchange& exchange)
                            { exchange.Answer("200 OK", "text", "X-Name: value\r\n"); });
    HttpClient client({});
    Listener listener;
    const std::string id = std::to_string(Get(client, server.Url(), listener));
    const Completion completion = listener.Wait();
    EXPECT_EQ(completion.code, 200u);
    EXPECT_EQ(completion.body, "text");
    EXPECT_EQ(listener.Journal(),
              (std::vector<std::string>{"header " + id + " HTTP/1.1 200 OK", "header " + id + " Content-Length: 4",
                                        "header " + id + " Connection: close", "header " + id + " X-Name: value",
                                        "data " + id, "complete " + id + " 200"}));
}

TEST(HttpClient, TheBodyIsTerminatedBehindItsLength)
{
    const std::string body("a\0b", 3);
    const HttpServer server([&](const HttpExchange& exchange) { exchange.Answer("200 OK", body); });
    const Completion completion = GetOnce(server.Url());
    EXPECT_EQ(completion.body, body);
    EXPECT_TRUE(completion.isTerminated);
}

TEST(HttpClient, ALargeBodyComesInPiecesThatMakeTheWhole)
{
    std::string body;
    for (int i = 0; body.size() < 1'000'000; ++i)
    {
        body += std::to_string(i);
    }
    const HttpServer server([&](const HttpExchange& exchange) { exchange.Answer("200 OK", body); });
    HttpClient client({});
    Listener listener;
    Get(client, server.Url(), listener);
    EXPECT_TRUE(listener.Wait().body == body);
    EXPECT_TRUE(listener.Pieces() == body);
}

TEST(HttpClient, AnAnswerWithoutABodyCompletesAsWell)
{
    const HttpServer server([](const HttpExchange& exchange) { exchange.Answer("200 OK", ""); });
    const Completion completion = GetOnce(server.Url());
    EXPECT_EQ(completion.code, 200u);
    EXPECT_EQ(completion.body, "");
}

TEST(HttpClient, AnyStatusIsAnAnswer)
{
    const HttpServer server([](const HttpExchange& exchange) { exchange.Answer("404 Not Found", "why"); });
    const Completion completion = GetOnce(server.Url());
    EXPECT_EQ(completion.code, 404u);
    EXPECT_EQ(completion.body, "why");
}

TEST(HttpClient, PostSendsItsBody)
{
    const HttpServer server([](const HttpExchange& exchange) { exchange.Answer("200 OK", exchange.Request()); });
    HttpClient client({});
    Listener listener;
    const std::string url = server.Url("/post");
    std::string body = R"({"a":"\u20ac"})";
    const HttpRequest request = MakeRequest(kHttpMethodPost, url.c_str(), body.c_str());
    client.Request(&request, &listener, nullptr);
    const std::string sent = body;
    body.assign(body.size(), '?'); // the caller's texts may go as soon as Request has returned
    const std::string seen = listener.Wait().body;
    EXPECT_TRUE(seen.starts_with("POST /post HTTP/1.1\r\n")) << seen;
    EXPECT_TRUE(seen.ends_with("\r\n\r\n" + sent)) << seen;
    EXPECT_NE(seen.find("Content-Type: application/json\r\n"), std::string::npos) << seen;
}

TEST(HttpClient, RedirectionsAreFollowedAndOnlyTheLastAnswerIsReported)
{
    const HttpServer server(
        [](const HttpExchange& exchange)
        {
            if (exchange.Path() == "/from")
            {
                exchange.Answer("302 Found", "not this", "Location: /to\r\n");
            }
            else
            {
                exchange.Answer("200 OK", "this");
            }
        });
    HttpClient client({});
    Listener listener;
    const uint32_t id = Get(client, server.Url("/from"), listener);
    EXPECT_EQ(listener.Wait().body, "this");
    EXPECT_EQ(listener.Journal()[0], "header " + std::to_string(id) + " HTTP/1.1 200 OK");
}

TEST(HttpClient, EndlessRedirectionsFail)
{
    std::atomic<int> served{0};
    const HttpServer server(
        [&](const HttpExchange& exchange)
        {
            ++served;
            exchange.Answer("302 Found", "", "Location: /again\r\n");
        });
    ExpectFailed(GetOnce(server.Url()));
    EXPECT_EQ(served, 6);
}

TEST(HttpClient, ARedirectionToAnythingButHttpFails)
{
    const HttpServer server([](const HttpExchange& exchange)
                            { exchange.Answer("302 Found", "", "Location: file:///etc/passwd\r\n"); });
    ExpectFailed(GetOnce(server.Url()));
}

TEST(HttpClient, AnAnswerCutShortFails)
{
    const HttpServer server([](const HttpExchange& exchange)
                            { exchange.Send("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nhalf"); });
    ExpectFailed(GetOnce(server.Url()));
}

TEST(HttpClient, AChunkedAnswerCutShortFails)
{
    const HttpServer server([](const HttpExchange& exchange)
                            { exchange.Send("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n4\r\nhalf\r\n"); });
    ExpectFailed(GetOnce(server.Url()));
}

TEST(HttpClient, TrailersAreNotReported)
{
    const HttpServer server(
        [](const HttpExchange& exchange) {
            exchange.Send(
                "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n4\r\ntext\r\n0\r\nX-Trailer: late\r\n\r\n");
        });
    HttpClient client({});
    Listener listener;
    Get(client, server.Url(), listener);
    EXPECT_EQ(listener.Wait().body, "text");
    EXPECT_EQ(listener.Journal().size(), 4u);
}

TEST(HttpClient, HeaderLinesAndTrailersThatAreTooLargeFail)
{
    std::string reason;
    HttpClient::Options options;
    options.onFailure = [&](const std::string& text) { reason = text; };
    const HttpServer server(
        [](const HttpExchange& exchange)
        {
            exchange.Send("HTTP/1.1 200 OK\r\n");
            if (exchange.Path() == "/trailers")
            {
                exchange.Send("Transfer-Encoding: chunked\r\n\r\n4\r\ntext\r\n0\r\n");
            }
            while (exchange.Send("X-Line: " + std::string(1000, 'a') + "\r\n"))
            {
            }
        });
    for (const char* path : {"/head", "/trailers"})
    {
        reason.clear();
        ExpectFailed(GetOnce(server.Url(path), options));
        EXPECT_EQ(reason, server.Url(path) + ": the header lines of the answer are larger than 65536 bytes");
    }
}

TEST(HttpClient, AnAnswerThatIsNotHttpFails)
{
    const HttpServer server([](const HttpExchange& exchange) { exchange.Send("some nonsense\r\n\r\n"); });
    ExpectFailed(GetOnce(server.Url()));
}

TEST(HttpClient, AnAnswerThatIsTooLargeFails)
{
    HttpClient::Options options;
    options.largestBody = 1000;
    std::string reason;
    options.onFailure = [&](const std::string& text) { reason = text; };
    const HttpServer server(
        [](const HttpExchange& exchange)
        {
            if (exchange.Path() == "/fits")
            {
                exchange.Answer("200 OK", std::string(1000, 'a'));
            }
            else if (exchange.Path() == "/told")
            {
                exchange.Answer("200 OK", std::string(1001, 'a'));
            }
            else
            {
                exchange.Send("HTTP/1.1 200 OK\r\n\r\n");
                while (exchange.Send(std::string(1000, 'a')))
                {
                }
            }
        });
    EXPECT_EQ(GetOnce(server.Url("/fits"), options).body.size(), 1000u);
    for (const char* path : {"/told", "/endless"})
    {
        reason.clear();
        ExpectFailed(GetOnce(server.Url(path), options));
        EXPECT_EQ(reason, server.Url(path) + ": the answer is larger than 1000 bytes");
    }
}

TEST(HttpClient, ASlowAnswerEndsAtTheTimeLimit)
{
    HttpClient::Options options;
    options.timeLimit = std::chrono::milliseconds(50);
    const HttpServer server(
        [](const HttpExchange& exchange)
        {
            exchange.Send("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nslow");
            exchange.Stall();
        });
    ExpectFailed(GetOnce(server.Url(), options));
}

TEST(HttpClient, ARefusedConnectionFailsWithTheReason)
{
    HttpClient::Options options;
    std::string reason;
    options.onFailure = [&](const std::string& text) { reason = text; };
    const std::string url = "http://127.0.0.1:" + std::to_string(UnusedPort()) + "/";
    ExpectFailed(GetOnce(url + "?token=secret", options));
    EXPECT_TRUE(reason.starts_with(url + ": ")) << "without the query: " << reason;
    EXPECT_NE(reason.find("onnect"), std::string::npos) << reason;
}

TEST(HttpClient, RequestsThatCannotBeSentFail)
{
    for (const char* url : {"", "nonsense://", "file:///etc/passwd", "ftp://127.0.0.1/", "http://", "http://[/"})
    {
        ExpectFailed(GetOnce(url));
    }

    HttpClient client({});
    Listener listener;
    const HttpRequest noUrl = MakeRequest(kHttpMethodGet, nullptr, nullptr);
    EXPECT_NE(client.Request(&noUrl, &listener, nullptr), 0u);
    ExpectFailed(listener.Wait(1));
    const HttpRequest unknownMethod = MakeRequest(3, "http://127.0.0.1/");
    EXPECT_NE(client.Request(&unknownMethod, &listener, nullptr), 0u);
    ExpectFailed(listener.Wait(2));
    EXPECT_NE(client.Request(nullptr, &listener, nullptr), 0u);
    ExpectFailed(listener.Wait(3));
    EXPECT_NE(client.Request(&noUrl, nullptr, nullptr), 0u);
}

TEST(HttpClient, NoProxyOfTheEnvironmentIsUsed)
{
    const HttpServer server([](const HttpExchange& exchange) { exchange.Answer("200 OK", "text"); });
    setenv("http_proxy", ("http://127.0.0.1:" + std::to_string(UnusedPort())).c_str(), 1);
    const Completion completion = GetOnce(server.Url());
    unsetenv("http_proxy");
    EXPECT_EQ(completion.body, "text");
}

TEST(HttpClient, EventsComeFromAThreadOfTheClientWhileTheCallerHoldsALock)
{
    // As in the module: it holds its list lock until Request has returned, and the completion takes that lock too.
    class LockingListener : public Listener
    {
    public:
        void OnCompleteRespond(unsigned int id, unsigned int code, char* data, unsigned int len) override
        {
            const std::lock_guard lock(list);
            Listener::OnCompleteRespond(id, code, data, len);
        }
        std::mutex list;
    };

    HttpClient client({});
    LockingListener listener;
    {
        const std::lock_guard lock(listener.list);
        Get(client, "", listener);
    }
    listener.Wait();
    EXPECT_NE(listener.Thread(), std::this_thread::get_id());
}

TEST(HttpClient, ARequestMayBeSentFromInsideACompletion)
{
    class Repeating : public Listener
    {
    public:
        void OnCompleteRespond(unsigned int id, unsigned int code, char* data, unsigned int len) override
        {
            if (Count() < 2)
            {
                Get(*client, url, *this);
            }
            Listener::OnCompleteRespond(id, code, data, len);
        }
        HttpClient* client = nullptr;
        std::string url;
    };

    const HttpServer server([](const HttpExchange& exchange) { exchange.Answer("200 OK", "text"); });
    HttpClient client({});
    Repeating listener;
    listener.client = &client;
    listener.url = server.Url();
    Get(client, listener.url, listener);
    EXPECT_EQ(listener.Wait(3).body, "text");
}

TEST(HttpClient, ManyRequestsAtOnceEachGetTheirAnswer)
{
    const HttpServer server([](const HttpExchange& exchange) { exchange.Answer("200 OK", exchange.Path()); });
    HttpClient client({});
    std::vector<std::unique_ptr<Listener>> listeners;
    std::set<uint32_t> ids;
    for (int i = 0; i < 50; ++i)
    {
        listeners.push_back(std::make_unique<Listener>());
        ids.insert(Get(client, server.Url("/" + std::to_string(i)), *listeners.back()));
    }
    EXPECT_EQ(ids.size(), 50u);
    EXPECT_FALSE(ids.contains(0));
    for (size_t i = 0; i < 50; ++i)
    {
        EXPECT_EQ(listeners[i]->Wait().body, "/" + std::to_string(i));
    }
}

TEST(HttpClient, ClosingEndsRequestsUnderWayAndLaterOnes)
{
    const HttpServer server([](const HttpExchange& exchange) { exchange.Stall(); });
    HttpClient client({});
    Listener listener;
    Get(client, server.Url(), listener);
    Get(client, server.Url(), listener);
    client.Close();
    EXPECT_EQ(listener.Count(), 2u) << "no request is left when Close returns";
    ExpectFailed(listener.Wait(1));
    ExpectFailed(listener.Wait(2));

    Get(client, server.Url(), listener);
    ExpectFailed(listener.Wait(3));
    client.Close();
}

TEST(HttpClient, CancellingEndsRequestsUnderWayAndNoLaterOnes)
{
    const HttpServer server(
        [](const HttpExchange& exchange)
        {
            if (exchange.Path() == "/silent")
            {
                exchange.Stall();
            }
            exchange.Answer("200 OK", exchange.Path());
        });
    HttpClient client({});
    Listener listener;
    client.CancelRequests();
    Get(client, server.Url("/first"), listener);
    EXPECT_EQ(listener.Wait(1).body, "/first");

    Get(client, server.Url("/silent"), listener);
    Get(client, server.Url("/silent"), listener);
    client.CancelRequests();
    Get(client, server.Url("/later"), listener);
    ExpectFailed(listener.Wait(2));
    ExpectFailed(listener.Wait(3));
    EXPECT_EQ(listener.Wait(4).body, "/later");
}

TEST(HttpClient, TheTimeLimitDoesNotWaitForANameResolverThatHangs)
{
    const SilentResolver resolver;
    HttpClient::Options options;
    options.timeLimit = std::chrono::milliseconds(100);
    HttpClient client(options);
    Listener listener;
    Get(client, kSilentUrl, listener);
    SilentResolver::WaitUntilAsked();
    ExpectFailed(listener.Wait());
    EXPECT_TRUE(SilentResolver::IsAsked()) << "the request ended only after the resolver";
}

TEST(HttpClient, ClosingDoesNotWaitForANameResolverThatHangs)
{
    const SilentResolver resolver;
    Listener listener;
    {
        HttpClient client({});
        Get(client, kSilentUrl, listener);
        SilentResolver::WaitUntilAsked();
        client.Close();
    }
    ExpectFailed(listener.Wait());
    EXPECT_TRUE(SilentResolver::IsAsked()) << "the client ended only after the resolver";
}

TEST(HttpClient, ClosingFromInsideAnEventDoesNotWait)
{
    class Closing : public Listener
    {
    public:
        void OnCompleteRespond(unsigned int id, unsigned int code, char* data, unsigned int len) override
        {
            client->Close();
            Listener::OnCompleteRespond(id, code, data, len);
        }
        HttpClient* client = nullptr;
    };

    HttpClient client({});
    Closing listener;
    listener.client = &client;
    Get(client, "", listener);
    ExpectFailed(listener.Wait());
}

TEST(HttpClient, DestructionEndsRequestsUnderWay)
{
    const HttpServer server([](const HttpExchange& exchange) { exchange.Stall(); });
    Listener listener;
    {
        HttpClient client({});
        Get(client, server.Url(), listener);
    }
    ASSERT_EQ(listener.Count(), 1u);
    ExpectFailed(listener.Wait());
}

TEST(HttpClient, ReferencesAreCountedAndDestroyNothing)
{
    HttpClient client({});
    EXPECT_EQ(client.AddRef(), 2u);
    EXPECT_EQ(client.ForeignReferences(), 1u);
    EXPECT_EQ(client.Release(), 1u);
    void* out = nullptr;
    EXPECT_EQ(client.QueryInterface(IID_IUnknown, &out), S_OK);
    EXPECT_EQ(out, static_cast<IHttpClient*>(&client));
    EXPECT_EQ(client.QueryInterface(IID{}, &out), E_NOINTERFACE);
    EXPECT_EQ(out, nullptr);
}

TEST(HttpClient, HttpsIsAnsweredWhenTheCertificateIsTrusted)
{
    const HttpsServer server("127.0.0.1");
    server.SetAnswer("file", "HTTP/1.0 200 OK\r\nContent-Length: 4\r\n\r\ntext");
    HttpClient::Options options;
    options.caFile = server.Certificate();
    const Completion completion = GetOnce(server.Url("file"), options);
    EXPECT_EQ(completion.code, 200u);
    EXPECT_EQ(completion.body, "text");
}

TEST(HttpClient, HttpsFailsWhenTheAuthorityIsUnknown)
{
    const HttpsServer server("127.0.0.1");
    server.SetAnswer("file", "HTTP/1.0 200 OK\r\nContent-Length: 4\r\n\r\ntext");
    HttpClient::Options options;
    std::string reason;
    options.onFailure = [&](const std::string& text) { reason = text; };
    ExpectFailed(GetOnce(server.Url("file"), options));
    EXPECT_NE(reason.find("certificate"), std::string::npos) << reason;
}

TEST(HttpClient, HttpsFailsWhenTheCertificateIsForAnotherName)
{
    const HttpsServer server("other.example");
    server.SetAnswer("file", "HTTP/1.0 200 OK\r\nContent-Length: 4\r\n\r\ntext");
    HttpClient::Options options;
    options.caFile = server.Certificate();
    ExpectFailed(GetOnce(server.Url("file"), options));
}

TEST(HttpClient, HttpsIsNotRedirectedToHttp)
{
    std::atomic<int> served{0};
    const HttpServer plain(
        [&](const HttpExchange& exchange)
        {
            ++served;
            exchange.Answer("200 OK", "text");
        });
    const HttpsServer server("127.0.0.1");
    server.SetAnswer("file", "HTTP/1.0 302 Found\r\nLocation: " + plain.Url() + "\r\nContent-Length: 0\r\n\r\n");
    HttpClient::Options options;
    options.caFile = server.Certificate();
    ExpectFailed(GetOnce(server.Url("file"), options));
    EXPECT_EQ(served, 0);
}
