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

/// The shared parts of one platform: the thread, the backplane, options, ids and ordered faults. [any] Every operation
/// may be called on any thread.
class Engine : public std::enable_shared_from_this<Engine>
{
public:
    explicit Engine(const PlatformOptions& options);
    ~Engine();

    /// Ends all threads. Must not be called on the platform thread.
    void Stop();

    EventLoop& GetLoop()
    {
        return m_loop;
    }
    InProcessBackplane& GetBackplane()
    {
        return m_backplane;
    }

    /// Runs the consequence of a host operation on the platform thread, not before `PlatformOptions::answerDelay`, in
    /// the order of the operations. False when the platform has stopped.
    bool PostOperation(EventLoop::Task task);

    /// Runs `work`, which may block, on a thread of its own. False when the platform has stopped.
    bool RunWorker(std::function<void()> work);

    PlatformOptions GetOptions() const;
    void SetOptions(const PlatformOptions& options);

    void Diagnose(const std::string& text) const;
    void SetDiagnostic(Platform::Diagnostic diagnostic);

    uint32_t NextId();
    /// A text that is unique to one session, across processes.
    std::string NewSessionId();
    std::string NewSerial();
    /// Greater than every earlier epoch of this process and, by the clock, of earlier processes.
    static uint64_t NextEpoch();
    /// Makes the next epoch greater than `seen`.
    static void RaiseEpoch(uint64_t seen);
    /// A random time up to a fifth of `delay`.
    std::chrono::milliseconds Jitter(std::chrono::milliseconds delay);

    void Register(const std::shared_ptr<Session>& session);
    std::vector<std::shared_ptr<Session>> GetSessions() const;

    void RefuseLogins(const std::string& userId, std::optional<avcore::ZolPortErrCode> code);
    std::optional<avcore::ZolPortErrCode> FindRefusal(const std::string& userId) const;
    void RefuseToken(const std::string& token, bool refuse);
    void SetUnreachable(const std::string& server, bool unreachable);
    void ForgetRefusals();

    /// The client that sends messages of the platform itself.
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

    mutable std::mutex m_faultMutex; ///< a lock of its own, because the backplane asks under its lock
    std::map<std::string, avcore::ZolPortErrCode> m_refusals; ///< by user id; the empty id stands for all users
    std::set<std::string> m_refusedTokens;
    std::set<std::string> m_unreachable;

    std::atomic<uint32_t> m_nextId;
    std::atomic<uint64_t> m_nextSerial{1};
    std::string m_serialBase;

    EventLoop m_loop;
    InProcessBackplane m_backplane;
};

} // namespace platform
