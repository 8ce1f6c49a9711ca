#include "platform/engine/Engine.h"

#include "platform/session/Session.h"
#include "platform/simulation/ServiceClient.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

namespace platform
{

namespace
{

std::atomic<uint64_t> g_lastEpoch{0};

std::mt19937_64 MakeRandom()
{
    std::random_device device;
    std::array<std::uint32_t, 8> seeds{};
    std::generate(seeds.begin(), seeds.end(), std::ref(device));
    std::seed_seq sequence(seeds.begin(), seeds.end());
    return std::mt19937_64(sequence);
}

} // namespace

Engine::Engine(const PlatformOptions& options)
    : m_options(options),
      m_random(MakeRandom()),
      m_nextId(std::max(options.firstId, 1U)),
      m_serialBase(NewSessionId())
{
    m_backplane.SetAdmission([this](const BackplaneConnect& connect) { return Admit(connect); });
}

Engine::~Engine()
{
    Stop();
    m_backplane.SetAdmission(nullptr);
}

void Engine::Stop()
{
    {
        const std::lock_guard lock(m_mutex);
        m_stopped = true;
    }
    for (const auto& session : GetSessions())
    {
        session->Halt();
    }
    JoinWorkers(true);
    m_loop.Stop();
}

bool Engine::PostOperation(EventLoop::Task task)
{
    const std::lock_guard lock(m_mutex);
    // Operations keep their order even when a new option has made the delay shorter.
    m_lastOperation = std::max(m_lastOperation, EventLoop::Clock::now() + m_options.answerDelay);
    return !m_stopped && m_loop.PostAt(m_lastOperation, EventLoop::Kind::Work, std::move(task));
}

bool Engine::RunWorker(std::function<void()> work)
{
    JoinWorkers(false);
    const std::lock_guard lock(m_mutex);
    if (m_stopped)
    {
        return false;
    }
    auto ended = std::make_shared<std::atomic<bool>>(false);
    m_workers.push_back(Worker{std::thread(
                                   [work = std::move(work), ended]() mutable
                                   {
                                       work();
                                       work = nullptr;
                                       ended->store(true);
                                   }),
                               ended});
    return true;
}

void Engine::JoinWorkers(bool all)
{
    std::list<Worker> ended;
    {
        const std::lock_guard lock(m_mutex);
        for (auto it = m_workers.begin(); it != m_workers.end();)
        {
            const auto next = std::next(it);
            if (all || it->ended->load())
            {
                ended.splice(ended.end(), m_workers, it);
            }
            it = next;
        }
    }
    for (Worker& worker : ended)
    {
        worker.thread.join();
    }
}

PlatformOptions Engine::GetOptions() const
{
    const std::lock_guard lock(m_mutex);
    return m_options;
}

void Engine::SetOptions(const PlatformOptions& options)
{
    const std::lock_guard lock(m_mutex);
    m_options = options;
}

void Engine::Diagnose(const std::string& text) const
{
    Platform::Diagnostic diagnostic;
    {
        const std::lock_guard lock(m_mutex);
        diagnostic = m_diagnostic;
    }
    if (diagnostic)
    {
        diagnostic(text);
    }
}

void Engine::SetDiagnostic(Platform::Diagnostic diagnostic)
{
    const std::lock_guard lock(m_mutex);
    m_diagnostic.swap(diagnostic);
}

uint32_t Engine::NextId()
{
    uint32_t id = 0;
    while (id == 0)
    {
        id = m_nextId.fetch_add(1, std::memory_order_relaxed);
    }
    return id;
}

std::string Engine::NewSessionId()
{
    const std::lock_guard lock(m_mutex);
    std::array<char, 17> text{};
    std::snprintf(text.data(), text.size(), "%016llx", static_cast<unsigned long long>(m_random()));
    return text.data();
}

std::string Engine::NewSerial()
{
    return m_serialBase + '-' + std::to_string(m_nextSerial.fetch_add(1, std::memory_order_relaxed));
}

uint64_t Engine::NextEpoch()
{
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    const auto now = static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::microseconds>(sinceEpoch).count());
    uint64_t last = g_lastEpoch.load(std::memory_order_relaxed);
    uint64_t next = std::max(last + 1, now);
    while (!g_lastEpoch.compare_exchange_weak(last, next, std::memory_order_relaxed))
    {
        next = std::max(last + 1, now);
    }
    return next;
}

void Engine::RaiseEpoch(uint64_t seen)
{
    uint64_t last = g_lastEpoch.load(std::memory_order_relaxed);
    while (last < seen && !g_lastEpoch.compare_exchange_weak(last, seen, std::memory_order_relaxed))
    {
    }
}

std::chrono::milliseconds Engine::Jitter(std::chrono::milliseconds delay)
{
    const std::lock_guard lock(m_mutex);
    return std::chrono::milliseconds(std::uniform_int_distribution<int64_t>(0, delay.count() / 5)(m_random));
}

void Engine::Register(const std::shared_ptr<Session>& session)
{
    const std::lock_guard lock(m_mutex);
    std::erase_if(m_sessions, [](const auto& weak) { return weak.expired(); });
    m_sessions.push_back(session);
}

std::vector<std::shared_ptr<Session>> Engine::GetSessions() const
{
    const std::lock_guard lock(m_mutex);
    std::vector<std::shared_ptr<Session>> sessions;
    for (const auto& weak : m_sessions)
    {
        if (auto session = weak.lock())
        {
            sessions.push_back(std::move(session));
        }
    }
    return sessions;
}

void Engine::RefuseLogins(const std::string& userId, std::optional<avcore::ZolPortErrCode> code)
{
    const std::lock_guard lock(m_faultMutex);
    if (code)
    {
        m_refusals[userId] = *code;
    }
    else
    {
        m_refusals.erase(userId);
    }
}

std::optional<avcore::ZolPortErrCode> Engine::FindRefusal(const std::string& userId) const
{
    const std::lock_guard lock(m_faultMutex);
    for (const std::string& key : {userId, std::string()})
    {
        if (const auto found = m_refusals.find(key); found != m_refusals.end())
        {
            return found->second;
        }
    }
    return std::nullopt;
}

void Engine::RefuseToken(const std::string& token, bool refuse)
{
    const std::lock_guard lock(m_faultMutex);
    if (refuse)
    {
        m_refusedTokens.insert(token);
    }
    else
    {
        m_refusedTokens.erase(token);
    }
}

void Engine::SetUnreachable(const std::string& server, bool unreachable)
{
    const std::lock_guard lock(m_faultMutex);
    if (unreachable)
    {
        m_unreachable.insert(server);
    }
    else
    {
        m_unreachable.erase(server);
    }
}

void Engine::ForgetRefusals()
{
    const std::lock_guard lock(m_faultMutex);
    m_refusals.clear();
    m_refusedTokens.clear();
    m_unreachable.clear();
}

std::optional<Refusal> Engine::Admit(const BackplaneConnect& connect) const
{
    const std::lock_guard lock(m_faultMutex);
    if (m_unreachable.contains(connect.server))
    {
        return Refusal::Unavailable;
    }
    return m_refusedTokens.contains(connect.password) ? std::optional(Refusal::BadCredentials) : std::nullopt;
}

ServiceClient& Engine::GetSender()
{
    const std::string name = "sender";
    std::shared_ptr<ServiceClient> made;
    {
        const std::lock_guard lock(m_mutex);
        if (m_sender != nullptr)
        {
            return *m_sender;
        }
    }
    made = std::make_shared<ServiceClient>(*this, name, std::vector<std::string>(), nullptr);
    {
        const std::lock_guard lock(m_mutex);
        if (m_sender != nullptr)
        {
            return *m_sender;
        }
        m_sender = made;
    }
    made->Start();
    return *made;
}

} // namespace platform
