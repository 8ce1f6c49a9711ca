#include "bench/Pairs.h"
#include "common/wbaselib/wmsgqueue.h"
#include "common/wbaselib/wsemaphore.h"
#include "onlinemanager/HttpHelper.h"

#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>

namespace bench
{

namespace
{

/// Passes a value to another thread in the plainest way.
template <typename Value>
class Slot
{
public:
    void Put(Value value)
    {
        const std::lock_guard guard(m_mutex);
        m_value = value;
        m_filled.notify_one();
    }

    Value Take()
    {
        std::unique_lock lock(m_mutex);
        m_filled.wait(lock, [this] { return m_value.has_value(); });
        const Value value = *m_value;
        m_value.reset();
        return value;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_filled;
    std::optional<Value> m_value;
};

/// Plays ping-pong with another thread: `put(way, value)` and `take(way)` for the ways 0 (there) and 1 (back). The value 0
/// ends the game.
template <typename Put, typename Take>
void PingPong(benchmark::State& state, Put put, Take take)
{
    std::thread other(
        [&]
        {
            while (const int value = take(0))
            {
                put(1, value);
            }
        });
    for (auto _ : state)
    {
        put(0, 1);
        benchmark::DoNotOptimize(take(1));
    }
    put(0, 0);
    other.join();
}

void ConditionVariable(benchmark::State& state)
{
    Slot<int> slots[2];
    PingPong(
        state, [&](int way, int value) { slots[way].Put(value); }, [&](int way) { return slots[way].Take(); });
}

void Semaphore(benchmark::State& state)
{
    WBASELIB::WSemaphore semaphores[2] = {{0, 1}, {0, 1}};
    int values[2] = {};
    PingPong(
        state,
        [&](int way, int value)
        {
            values[way] = value;
            semaphores[way].ReleaseSemaphore(1);
        },
        [&](int way)
        {
            semaphores[way].WaitSemaphore(INFINITE);
            return values[way];
        });
}

void MessageQueue(benchmark::State& state)
{
    WBASELIB::WMsgQueue<int> queues[2] = {WBASELIB::WMsgQueue<int>(5), WBASELIB::WMsgQueue<int>(5)};
    int values[2] = {};
    PingPong(
        state,
        [&](int way, int value)
        {
            values[way] = value;
            queues[way].Push(&values[way]);
        },
        [&](int way) { return *queues[way].Pop(INFINITE); });
}

/// Answers every request with a short body, from a thread of its own.
class HttpObject final : public IHttpClient
{
public:
    HttpObject() : m_thread([this] { Answer(); }) {}

    ~HttpObject()
    {
        m_requests.Put(0);
        m_thread.join();
    }

    HRESULT QueryInterface(const GUID& /*iid*/, void** /*out*/) override
    {
        return E_NOINTERFACE;
    }
    uint32_t AddRef() override
    {
        return 1;
    }
    uint32_t Release() override
    {
        return 1;
    }
    void Reserved3() override {}
    void Reserved4() override {}
    void Reserved5() override {}
    void Reserved6() override {}
    void Reserved7() override {}
    void Reserved8() override {}

    uint32_t Request(const HttpRequest* /*request*/, IHttpResponseNotify* notify,
                     WBASELIB::TStringBase<char>* /*text*/) override
    {
        m_notify = notify;
        const uint32_t id = m_nextId++;
        m_requests.Put(id);
        return id;
    }

private:
    void Answer()
    {
        char body[] = "{}";
        while (const uint32_t id = m_requests.Take())
        {
            m_notify->OnCompleteRespond(id, 200, body, sizeof(body) - 1);
        }
    }

    IHttpResponseNotify* m_notify = nullptr;
    uint32_t m_nextId = 1;
    Slot<uint32_t> m_requests;
    std::thread m_thread; ///< last, because it uses the members above
};

void HttpGet(benchmark::State& state)
{
    HttpObject http;
    onlinemanager::HttpHelper helper;
    helper.Init(&http);
    for (auto _ : state)
    {
        if (helper.HttpGet("https://cp.example.com/address") != "{}")
        {
            state.SkipWithError("wrong answer");
            break;
        }
    }
    helper.Uninit();
}

} // namespace

void AddHandOffBenchmarks()
{
    AddPair("semaphore", Semaphore, ConditionVariable, {}, Clock::WALL);
    AddPair("message_queue", MessageQueue, ConditionVariable, {}, Clock::WALL);
    AddPair("http_helper", HttpGet, ConditionVariable, {}, Clock::WALL);
}

} // namespace bench
