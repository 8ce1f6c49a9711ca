#pragma once

#include "platform/engine/Engine.h"

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace platform
{

/// Recognises records that arrive twice: remembers the serials of the latest ones.
class SerialFilter
{
public:
    /// Whether the serial is new. A record without a serial always is.
    bool IsNew(const std::string& serial);

private:
    static constexpr size_t kRemembered = 1024;
    std::set<std::string> m_known;
    std::vector<std::string> m_order; ///< a ring
    size_t m_next = 0;
};

/// A permanent client of the backplane for services: subscribes, publishes, and reconnects after a loss. [any] Every
/// operation may be called on any thread.
class ServiceClient : public std::enable_shared_from_this<ServiceClient>
{
public:
    using OnMessage = std::function<void(const BackplaneMessage&)>;

    ServiceClient(Engine& engine, std::string name, std::vector<std::string> filters, OnMessage onMessage);

    /// Opens the session. Publications before it is open wait.
    void Start();
    /// Waits until publications go out at once. Must not be called on the platform thread.
    void WaitOpen(std::chrono::milliseconds limit);

    /// Waits for an `onMessage` under way, unless called from inside it. No `onMessage` runs afterwards.
    void Stop();

    void Publish(BackplaneMessage message);

private:
    class Sink;

    void Open();
    void Opened(uint64_t serial);
    void Lost(uint64_t serial);
    void Receive(const BackplaneMessage& message);

    Engine& m_engine;
    const std::string m_clientId;
    const std::vector<std::string> m_filters;
    const OnMessage m_onMessage;

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::shared_ptr<BackplaneClient> m_client;
    std::vector<BackplaneMessage> m_waiting;
    uint64_t m_serial = 0; ///< of the client; events of earlier clients are ignored
    bool m_open = false;
    bool m_stopped = false;
    bool m_running = false; ///< `m_onMessage` runs
    std::thread::id m_thread;
};

} // namespace platform
