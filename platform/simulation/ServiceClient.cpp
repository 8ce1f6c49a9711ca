#include "platform/simulation/ServiceClient.h"

#include <utility>

namespace platform
{

namespace
{

constexpr std::chrono::milliseconds kReopenDelay{500};

} // namespace

bool SerialFilter::IsNew(const std::string& serial)
{
    if (serial.empty())
    {
        return true;
    }
    if (!m_known.insert(serial).second)
    {
        return false;
    }
    if (m_order.size() < kRemembered)
    {
        m_order.push_back(serial);
        return true;
    }
    m_known.erase(m_order[m_next]);
    m_order[m_next] = serial;
    m_next = (m_next + 1) % kRemembered;
    return true;
}

class ServiceClient::Sink : public BackplaneListener
{
public:
    Sink(Engine& engine, std::weak_ptr<ServiceClient> owner, uint64_t serial)
        : m_engine(engine),
          m_owner(std::move(owner)),
          m_serial(serial)
    {
    }

    void OnOpened() override
    {
        Post([serial = m_serial](ServiceClient& owner) { owner.Opened(serial); });
    }
    void OnRefused(Refusal) override
    {
        Post([serial = m_serial](ServiceClient& owner) { owner.Lost(serial); });
    }
    void OnLost() override
    {
        Post([serial = m_serial](ServiceClient& owner) { owner.Lost(serial); });
    }
    void OnSubscribed(const std::string&) override {}
    void OnMessage(std::shared_ptr<const BackplaneMessage> message) override
    {
        Post([message = std::move(message)](ServiceClient& owner) { owner.Receive(*message); });
    }

private:
    template <typename Event>
    void Post(Event event)
    {
        m_engine.GetLoop().Post(
            [weak = m_owner, event = std::move(event)]
            {
                if (const auto owner = weak.lock())
                {
                    event(*owner);
                }
            });
    }

    Engine& m_engine;
    std::weak_ptr<ServiceClient> m_owner;
    uint64_t m_serial;
};

ServiceClient::ServiceClient(Engine& engine, std::string name, std::vector<std::string> filters, OnMessage onMessage)
    : m_engine(engine),
      m_clientId("zol-" + name + '-' + engine.NewSessionId()),
      m_filters(std::move(filters)),
      m_onMessage(std::move(onMessage))
{
}

void ServiceClient::Start()
{
    // On the platform thread, so that `m_client` is set before its events are handled.
    m_engine.GetLoop().Post(
        [weak = weak_from_this()]
        {
            if (const auto self = weak.lock())
            {
                self->Open();
            }
        });
}

void ServiceClient::WaitOpen(std::chrono::milliseconds limit)
{
    std::unique_lock lock(m_mutex);
    m_changed.wait_for(lock, limit, [this] { return m_open || m_stopped; });
}

void ServiceClient::Stop()
{
    std::shared_ptr<BackplaneClient> client;
    {
        std::unique_lock lock(m_mutex);
        m_stopped = true;
        m_open = false;
        m_changed.notify_all();
        client.swap(m_client);
        const bool inside = m_running && m_thread == std::this_thread::get_id();
        if (!inside)
        {
            m_changed.wait(lock, [this] { return !m_running; });
        }
    }
    if (client != nullptr)
    {
        client->Close();
    }
}

void ServiceClient::Publish(BackplaneMessage message)
{
    std::shared_ptr<BackplaneClient> client;
    {
        const std::lock_guard lock(m_mutex);
        if (m_stopped)
        {
            return;
        }
        if (!m_open)
        {
            m_waiting.push_back(std::move(message));
            return;
        }
        client = m_client;
    }
    client->Publish(std::move(message), Delivery::AtLeastOnce);
}

void ServiceClient::Open()
{
    uint64_t serial = 0;
    std::shared_ptr<BackplaneClient> former;
    {
        const std::lock_guard lock(m_mutex);
        if (m_stopped)
        {
            return;
        }
        serial = ++m_serial;
        former.swap(m_client);
    }
    former.reset();
    std::shared_ptr<BackplaneClient> client =
        m_engine.GetBackplane().Open(BackplaneConnect{{}, m_clientId, m_clientId, {}, std::nullopt},
                                     std::make_shared<Sink>(m_engine, weak_from_this(), serial));
    const std::lock_guard lock(m_mutex);
    if (!m_stopped)
    {
        m_client = std::move(client);
    }
}

void ServiceClient::Opened(uint64_t serial)
{
    std::shared_ptr<BackplaneClient> client;
    {
        const std::lock_guard lock(m_mutex);
        if (m_stopped || serial != m_serial || m_client == nullptr)
        {
            return;
        }
        client = m_client;
    }
    for (const std::string& filter : m_filters)
    {
        client->Subscribe(filter, Delivery::AtLeastOnce);
    }
    // Waiting publications go out first, to keep the order. So the session counts as open only when none waits.
    for (;;)
    {
        std::vector<BackplaneMessage> waiting;
        {
            const std::lock_guard lock(m_mutex);
            if (m_waiting.empty())
            {
                m_open = !m_stopped && serial == m_serial;
                m_changed.notify_all();
                return;
            }
            waiting.swap(m_waiting);
        }
        for (BackplaneMessage& message : waiting)
        {
            client->Publish(std::move(message), Delivery::AtLeastOnce);
        }
    }
}

void ServiceClient::Lost(uint64_t serial)
{
    {
        const std::lock_guard lock(m_mutex);
        if (m_stopped || serial != m_serial)
        {
            return;
        }
        m_open = false;
    }
    m_engine.GetLoop().PostAt(EventLoop::Clock::now() + kReopenDelay, EventLoop::Kind::Timer,
                              [weak = weak_from_this()]
                              {
                                  if (const auto self = weak.lock())
                                  {
                                      self->Open();
                                  }
                              });
}

void ServiceClient::Receive(const BackplaneMessage& message)
{
    {
        const std::lock_guard lock(m_mutex);
        if (m_stopped || !m_onMessage)
        {
            return;
        }
        m_running = true;
        m_thread = std::this_thread::get_id();
    }
    m_onMessage(message);
    const std::lock_guard lock(m_mutex);
    m_running = false;
    m_changed.notify_all();
}

} // namespace platform
