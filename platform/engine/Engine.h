#pragma once

#include "platform/Platform.h"
#include "platform/backplane/InProcessBackplane.h"
#include "platform/base/EventLoop.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace platform
{

class ServiceClient;
class Session;

/// What the parts of one platform share: the thread, the backplane, options, numbers and ordered faults. Every operation may
/// be called on any thread.
class Engine : public std::enable_shared_from_this<Engine>
{
public:
    explicit Engine(const PlatformOptions& options);
    ~Engine();

    /// Ends all threads; nothing runs any more when it returns. Not on the platform thread.
    void Stop();

    EventLoop& GetLoop()
    {
        return m_loop;
    }
    InProcessBackplane& GetBackplane()
    {
        return m_backplane;
    }

    /// Runs what an operation of a host causes: on the platform thread, not before `PlatformOptions::answerDelay`, in the
    /// order of the operations. False when the platform is gone.
    bool PostOperation(EventLoop::Task task);

    /// Runs `work`, which may block, on a thread of its own. False when the platform is gone.
    bool RunWorker(std::function<void()> work);

    PlatformOptions GetOptions() const;
    void SetOptions(const PlatformOptions& options);

    void Diagnose(const std::string& text) const;
    void SetDiagnostic(Platform::Diagnostic diagnostic);

    uint32_t NextId();
    /// A text that no other session anywhere has.
    std::string NewSessionId();
    std::string NewSerial();
    /// Greater than every one before, in this process and, by the clock, in the ones before it.
    static uint64_t NextEpoch();
    /// Makes the next epoch greater than one that was seen.
    static void RaiseEpoch(uint64_t seen);
    /// Up to a fifth of `delay`, at random.
    std::chrono::milliseconds Jitter(std::chrono::milliseconds delay);

    void Register(const std::shared_ptr<Session>& session);
    std::vector<std::shared_ptr<Session>> GetSessions() const;

    void RefuseLogins(const std::string& userId, std::optional<avcore::ZolPortErrCode> code);
    std::optional<avcore::ZolPortErrCode> FindRefusal(const std::string& userId) const;
    void RefuseToken(const std::string& token, bool refuse);
    void SetUnreachable(const std::string& server, bool unreachable);
    void ForgetRefusals();

    /// The client that sends what comes from no connection.
    ServiceClient& GetSender();

private:
    struct Worker
    {
        std::thread thread;
        std::shared_ptr<std::atomic<bool>> ended;
    };

    std::optional<Refusal> Admit(const BackplaneConnect& connect) const;
    void JoinWorkers(bool all);

    mutable std::mutex m_mutex;
    PlatformOptions m_options;
    Platform::Diagnostic m_diagnostic;
    EventLoop::Clock::time_point m_lastOperation = EventLoop::Clock::time_point::min();
    bool m_stopped = false;
    std::list<Worker> m_workers;
    std::vector<std::weak_ptr<Session>> m_sessions;
    std::mt19937_64 m_random;
    std::shared_ptr<ServiceClient> m_sender;

    mutable std::mutex m_faultMutex;                          ///< apart, because the backplane asks under its own lock
    std::map<std::string, avcore::ZolPortErrCode> m_refusals; ///< by user id; empty = everybody
    std::set<std::string> m_refusedTokens;
    std::set<std::string> m_unreachable;

    std::atomic<uint32_t> m_nextId;
    std::atomic<uint64_t> m_nextSerial{1};
    std::string m_serialBase;

    EventLoop m_loop;
    InProcessBackplane m_backplane;
};

} // namespace platform
