#include "checks/Stage.h"

#include <ctime>
#include <future>
#include <thread>

namespace checks
{

namespace
{

std::string Http(const std::string& text)
{
    return LogLine("HttpHelper", text);
}

/// A request as the host's HTTP object gets it.
std::string Sent(bool post, const std::string& url, const std::string& body, uint32_t id)
{
    return std::string("http.Request(") + (post ? "2" : "1") + ", 2, 1, 0, 0, 5, \"" + url + "\", \"" + body +
           "\", \"\") -> " + std::to_string(id);
}

std::string IsSent(uint32_t id)
{
    return Http("WaitResponse(), request sent, id=" + std::to_string(id) + ".");
}

std::string IsComplete(uint32_t id, int code)
{
    return Http("OnCompleteRespond(), id=" + std::to_string(id) + ", code=" + std::to_string(code));
}

onlinemanager::LoginParam HttpParam()
{
    onlinemanager::LoginParam param = Stage::Param();
    param.server = "https://online.example";
    return param;
}

/// The HTTP helper that the platform got with a login, and requests that each wait on their own thread.
struct Transport
{
    explicit Transport(CheckContext& check) : stage(check)
    {
        stage.Session()->Login(HttpParam(), false);
        stage.journal.Clear();
        helper = stage.Connection().http;
        check.Require(helper != nullptr, "the platform gets the HTTP helper");
    }

    /// Starts a GET and returns when the host's object has got the request.
    std::future<std::string> StartGet(const std::string& url, uint32_t id)
    {
        return Start(id, [this, url] { return helper->HttpGet(url.c_str()); });
    }

    std::future<std::string> StartPost(const std::string& url, const std::string& body, uint32_t id)
    {
        return Start(id, [this, url, body] { return helper->HttpPost(url.c_str(), body.c_str()); });
    }

    Stage stage;
    avcore::IZolHttp* helper = nullptr;

private:
    std::future<std::string> Start(uint32_t id, std::function<std::string()> call)
    {
        std::future<std::string> answer = std::async(std::launch::async,
                                                     [call = std::move(call)]
                                                     {
                                                         NameThread("platform");
                                                         return call();
                                                     });
        stage.check.Require(stage.journal.Await(IsSent(id)), "the request is sent");
        return answer;
    }
};

} // namespace

CONTRACT_CHECK(Http, AGetSendsOneRecordAndWaitsForItsBody,
               "HttpGet logs its address, sends the record for GET, and returns the body of the completion.")
{
    Transport transport(check);
    std::future<std::string> answer = transport.StartGet("http://x/a", 1);
    transport.stage.http.Complete(1, 200, "the body");
    check.ExpectEqual("the body", answer.get(), "HttpGet");
    transport.stage.ExpectJournal({
        Http("HttpGet, http://x/a"),
        Sent(false, "http://x/a", "", 1),
        IsSent(1),
        "[http] " + IsComplete(1, 200),
    });
}

CONTRACT_CHECK(Http, APostWritesNoLineOfItsOwn, "HttpPost sends the record for POST with the body.")
{
    Transport transport(check);
    std::future<std::string> answer = transport.StartPost("https://x/b", "question", 1);
    transport.stage.http.Complete(1, 200, "answer");
    check.ExpectEqual("answer", answer.get(), "HttpPost");
    transport.stage.ExpectJournal({
        Sent(true, "https://x/b", "question", 1),
        IsSent(1),
        IsComplete(1, 200),
    });
}

CONTRACT_CHECK(Http, ABodyWithAnyStatusIsAResponse, "Any status code is accepted and logged.")
{
    Transport transport(check);
    uint32_t id = 0;
    for (const int status : {500, 404, 0})
    {
        std::future<std::string> answer = transport.StartGet("http://x", ++id);
        transport.stage.http.Complete(id, static_cast<unsigned>(status), "sorry");
        check.ExpectEqual("sorry", answer.get(), "HttpGet with status " + std::to_string(status));
        check.ExpectEqual(1, transport.stage.journal.Count(IsComplete(id, status)), "lines with the status");
    }
}

CONTRACT_CHECK(Http, ACompletionWithoutABodyEndsTheWaitEmpty,
               "Length 0 or a null body gives the empty text and the line with message 2.")
{
    Transport transport(check);
    std::future<std::string> empty = transport.StartGet("http://x", 1);
    transport.stage.http.Complete(1, 204, "");
    check.ExpectEqual("", empty.get(), "HttpGet with length 0");
    transport.stage.ExpectJournal({
        Http("HttpGet, http://x"),
        Sent(false, "http://x", "", 1),
        IsSent(1),
        IsComplete(1, 204),
        Http("WaitResponse(), msg_id=2."),
    });
    std::future<std::string> null = transport.StartGet("http://x", 2);
    transport.stage.http.CompleteWithNull(2, 200, 5);
    check.ExpectEqual("", null.get(), "HttpGet with a null body and a length");
    check.ExpectEqual(1, transport.stage.journal.Count(Http("WaitResponse(), msg_id=2.")), "lines with message 2");
}

CONTRACT_CHECK(Http, ABodyEndsAtItsFirstNul,
               "The text before the first NUL is the response, whatever the given length is.")
{
    Transport transport(check);
    std::future<std::string> answer = transport.StartGet("http://x", 1);
    transport.stage.http.Complete(1, 200, std::string("ab\0cd", 5));
    check.ExpectEqual("ab", answer.get(), "HttpGet");
    std::future<std::string> nothing = transport.StartGet("http://x", 2);
    transport.stage.http.Complete(2, 200, std::string("\0cd", 3));
    check.ExpectEqual("", nothing.get(), "HttpGet of a body that begins with a NUL");
    check.ExpectEqual(0, transport.stage.journal.Count("msg_id="), "lines of a message without a body");
}

CONTRACT_CHECK(Http, AnyBytesAndAnySizePassUnchanged, "Large bodies and bodies that are not text arrive unchanged.")
{
    Transport transport(check);
    std::string body(1 << 20, '\xFF');
    body += "\x01end";
    std::future<std::string> answer = transport.StartGet("http://x", 1);
    transport.stage.http.Complete(1, 200, body);
    check.Expect(answer.get() == body, "the body is the same");
}

CONTRACT_CHECK(Http, HeadersAndPiecesAreIgnored,
               "Only the completion ends the wait; the pieces of the body are not used.")
{
    Transport transport(check);
    std::future<std::string> answer = transport.StartGet("http://x", 1);
    transport.stage.http.SendPieces(1);
    transport.stage.http.SendPieces(1);
    transport.stage.http.Complete(1, 200, "whole");
    check.ExpectEqual("whole", answer.get(), "HttpGet");
}

CONTRACT_CHECK(Http, ACompletionForAnUnknownIdIsIgnored,
               "So is a second completion, and a completion of a request that has ended.")
{
    Transport transport(check);
    std::future<std::string> answer = transport.StartGet("http://x", 1);
    transport.stage.http.Complete(99, 200, "unknown");
    transport.stage.http.Complete(1, 200, "mine");
    check.ExpectEqual("mine", answer.get(), "HttpGet");
    transport.stage.http.Complete(1, 200, "late");
    transport.stage.ExpectJournal({
        Http("HttpGet, http://x"),
        Sent(false, "http://x", "", 1),
        IsSent(1),
        IsComplete(99, 200),
        IsComplete(1, 200),
        IsComplete(1, 200),
    });
}

CONTRACT_CHECK(Http, ClosingAnAddressWithoutARequestDoesNothing, "HttpClose logs its address and returns 0.")
{
    Transport transport(check);
    std::future<std::string> answer = transport.StartGet("http://x/a", 1);
    check.ExpectEqual(0, transport.helper->HttpClose("http://x/A"), "HttpClose of another address");
    check.ExpectEqual(0, transport.helper->HttpClose("http://x/"), "HttpClose of a shorter address");
    transport.stage.http.Complete(1, 200, "body");
    check.ExpectEqual("body", answer.get(), "HttpGet");
    check.ExpectEqual(0, transport.helper->HttpClose("http://x/a"), "HttpClose of a request that has ended");
    check.ExpectEqual(1, transport.stage.journal.Count(Http("HttpClose, http://x/A")), "lines of the first close");
    check.ExpectEqual(0, transport.stage.journal.Count("msg_id="), "requests that ended without a body");
}

CONTRACT_CHECK(Http, ClosingAPendingRequestEndsItsWaitEmpty,
               "The line carries message 3, and the completion that comes later is ignored.")
{
    Transport transport(check);
    std::future<std::string> answer = transport.StartGet("http://x/a", 1);
    check.ExpectEqual(0, transport.helper->HttpClose(std::string("http://x/a").c_str()), "HttpClose");
    check.ExpectEqual("", answer.get(), "HttpGet");
    transport.stage.http.Complete(1, 200, "late");
    transport.stage.ExpectJournal({
        Http("HttpGet, http://x/a"),
        Sent(false, "http://x/a", "", 1),
        IsSent(1),
        Http("HttpClose, http://x/a"),
        Http("WaitResponse(), msg_id=3."),
        IsComplete(1, 200),
    });
}

CONTRACT_CHECK(Http, ClosingAnAddressEndsItsFirstRequestOnly, "The second request to the same address still waits.")
{
    Transport transport(check);
    std::future<std::string> first = transport.StartGet("http://x", 1);
    std::future<std::string> second = transport.StartGet("http://x", 2);
    transport.helper->HttpClose("http://x");
    check.ExpectEqual("", first.get(), "the first request");
    transport.stage.http.Complete(2, 200, "second");
    check.ExpectEqual("second", second.get(), "the second request");
}

CONTRACT_CHECK(Http, ManyClosesOfOneRequestAreDropped,
               "A message for which the request's queue has no room is dropped; the wait ends once.")
{
    Transport transport(check);
    std::future<std::string> answer = transport.StartGet("http://x", 1);
    for (int round = 0; round < 100; ++round)
    {
        transport.helper->HttpClose("http://x");
    }
    check.ExpectEqual("", answer.get(), "HttpGet");
    check.ExpectEqual(1, transport.stage.journal.Count(Http("WaitResponse(), msg_id=3.")), "waits that ended");
}

CONTRACT_CHECK(Http, RequestsUnderWayGetTheirOwnAnswers, "Completions may come in any order.")
{
    Transport transport(check);
    std::future<std::string> first = transport.StartGet("http://x/1", 1);
    std::future<std::string> second = transport.StartPost("http://x/2", "body", 2);
    std::future<std::string> third = transport.StartGet("http://x/3", 3);
    transport.stage.http.Complete(3, 200, "three");
    transport.stage.http.Complete(1, 200, "one");
    transport.stage.http.Complete(2, 200, "two");
    check.ExpectEqual("one", first.get(), "the first request");
    check.ExpectEqual("two", second.get(), "the second request");
    check.ExpectEqual("three", third.get(), "the third request");
}

CONTRACT_CHECK(Http, ManyThreadsMaySendRequests,
               "With requests, completions and closes on several threads, every wait ends with its own answer.")
{
    Transport transport(check);
    transport.stage.factory.center.manager.level = Quenda::LOG_LEVEL_ERROR;
    constexpr int kRequests = 200;
    const auto ask = [&](const std::string& url, const std::string& body)
    {
        transport.stage.http.Answer(url, 200, body);
        return std::thread(
            [&, url, body]
            {
                for (int round = 0; round < kRequests; ++round)
                {
                    if (transport.helper->HttpGet(url.c_str()) != body)
                    {
                        check.Fail("a wrong answer for " + url);
                    }
                }
            });
    };
    std::vector<std::thread> threads;
    for (const char* const name : {"a", "b", "c"})
    {
        threads.push_back(ask(std::string("http://x/") + name, name));
    }
    threads.emplace_back(
        [&]
        {
            for (int round = 0; round < kRequests; ++round)
            {
                transport.helper->HttpClose("http://x/unknown");
            }
        });
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    check.ExpectEqual(3 * kRequests, transport.stage.journal.Count("http.Request("), "requests sent");
}

CONTRACT_CHECK(Http, ANullTextRaisesAndNothingIsSent,
               "A null address, or a null body of a POST, throws the exception of a string constructed from null.")
{
    Transport transport(check);
    const auto raises = [&](const char* what, const std::function<void()>& call)
    {
        try
        {
            call();
            check.Fail(std::string(what) + " raises nothing");
        }
        catch (const std::logic_error&)
        {
            // Expected.
        }
    };
    raises("HttpGet(null)", [&] { transport.helper->HttpGet(nullptr); });
    raises("HttpPost(null, body)", [&] { transport.helper->HttpPost(nullptr, "body"); });
    raises("HttpPost(url, null)", [&] { transport.helper->HttpPost("http://x", nullptr); });
    check.ExpectEqual(0, transport.stage.journal.Count("http."), "calls of the host's object");

    std::future<std::string> answer = transport.StartGet("http://x", 1);
    transport.stage.http.Complete(1, 200, "works on");
    check.ExpectEqual("works on", answer.get(), "HttpGet afterwards");
}

CONTRACT_CHECK(Http, AnEmptyAddressIsPassedToTheHost, "An empty address is passed to the host's HTTP object.")
{
    Transport transport(check);
    std::future<std::string> answer = transport.StartGet("", 1);
    transport.stage.http.Complete(1, 400, "no address");
    check.ExpectEqual("no address", answer.get(), "HttpGet");
    check.ExpectEqual(1, transport.stage.journal.Count(Sent(false, "", "", 1)), "requests");
}

CONTRACT_CHECK(Http, TheHelperServesFromInsideThePlatformsLogin,
               "A platform may wait for an HTTP answer inside its own Login.")
{
    Stage stage(check);
    stage.http.Answer("https://x/cp", 200, "address");
    std::string answer;
    stage.Connection().SetHook("Login", [&] { answer = stage.Connection().http.load()->HttpGet("https://x/cp"); });
    check.ExpectEqual(true, stage.Session()->Login(HttpParam(), false), "Login");
    check.ExpectEqual("address", answer, "answer inside the login");
}

CONTRACT_CHECK(
    Http, ASixthMessagePushedIntoAFullQueueIsDropped,
    "A request that is closed more often than its queue has room ends once, and none of its messages remains.")
{
    Transport transport(check);
    int lines = 0;
    transport.stage.factory.center.manager.SetHook("GetLoggerLevel",
                                                   [&]
                                                   {
                                                       constexpr int kRequestSent = 2;
                                                       if (++lines == kRequestSent)
                                                       {
                                                           for (int close = 0; close < 7; ++close)
                                                           {
                                                               transport.helper->HttpClose("http://x");
                                                           }
                                                       }
                                                   });
    check.ExpectEqual("", transport.helper->HttpGet("http://x"), "HttpGet");
    transport.stage.factory.center.manager.SetHook("GetLoggerLevel", nullptr);
    std::vector<std::string> expected{Http("HttpGet, http://x"), Sent(false, "http://x", "", 1)};
    expected.insert(expected.end(), 7, Http("HttpClose, http://x"));
    expected.push_back(IsSent(1));
    expected.push_back(Http("WaitResponse(), msg_id=3."));
    transport.stage.ExpectJournal(expected);

    std::future<std::string> next = transport.StartGet("http://x", 2);
    transport.stage.http.Complete(2, 200, "in time");
    check.ExpectEqual("in time", next.get(), "the next request of that address");
}

CONTRACT_CHECK(Http, AWaitOutlastsTenSecondsInWhichTheProcessorIsIdle,
               "The time limit counts processor time, so it does not pass while the process sleeps.")
{
    Transport transport(check);
    std::future<std::string> answer = transport.StartGet("http://x", 1);
    check.Expect(answer.wait_for(std::chrono::seconds(11)) == std::future_status::timeout, "the request still waits");
    transport.stage.http.Complete(1, 200, "late");
    check.ExpectEqual("late", answer.get(), "HttpGet");
}

CONTRACT_CHECK(Http, AWaitEndsAfterTenSecondsOfProcessorTime,
               "The time limit counts processor time; then the answer is empty and a line says so.")
{
    Transport transport(check);
    const std::clock_t start = std::clock();
    std::future<std::string> answer = transport.StartGet("http://x", 1);
    std::atomic<bool> ends{false};
    const auto burn = [&]
    {
        while (!ends)
        {
        }
    };
    std::thread first(burn);
    std::thread second(burn);
    check.ExpectEqual("", answer.get(), "HttpGet");
    check.Expect(std::clock() - start > 10 * CLOCKS_PER_SEC, "ten seconds of processor time have passed");
    ends = true;
    first.join();
    second.join();
    transport.stage.ExpectJournal({
        Http("HttpGet, http://x"),
        Sent(false, "http://x", "", 1),
        IsSent(1),
        Http("WaitResponse(), msg is timeout."),
    });
    transport.stage.http.Complete(1, 200, "too late");
    std::future<std::string> next = transport.StartGet("http://x", 2);
    transport.stage.http.Complete(2, 200, "in time");
    check.ExpectEqual("in time", next.get(), "the next request");
}

} // namespace checks
