#include "platform/backplane/InProcessBackplane.h"

#include "platform/base/EventLoop.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <string_view>
#include <utility>
#include <vector>

namespace platform
{

namespace
{

using Clock = EventLoop::Clock;

/// Brokers end the retained messages of an acknowledged subscription at about this number. This backplane keeps the
/// limit, so that the layers above cannot depend on more.
constexpr size_t kMostRetainedAcknowledged = 1000;

std::string_view FirstLevel(std::string_view topic)
{
    return topic.substr(0, topic.find('/'));
}

/// The levels after the first one; nothing after the last level.
std::optional<std::string_view> FurtherLevels(std::string_view topic)
{
    const size_t end = topic.find('/');
    return end == std::string_view::npos ? std::nullopt : std::optional(topic.substr(end + 1));
}

bool Matches(std::string_view filter, std::string_view topic)
{
    std::optional<std::string_view> filterRest = filter;
    std::optional<std::string_view> topicRest = topic;
    while (filterRest)
    {
        const std::string_view level = FirstLevel(*filterRest);
        if (level == "#")
        {
            return true;
        }
        if (!topicRest || (level != "+" && level != FirstLevel(*topicRest)))
        {
            return false;
        }
        filterRest = FurtherLevels(*filterRest);
        topicRest = FurtherLevels(*topicRest);
    }
    return !topicRest;
}

bool IsTopic(std::string_view topic)
{
    return !topic.empty() && topic.find_first_of("+#") == std::string_view::npos;
}

/// The part of a filter in front of its first wildcard; every topic that matches begins with it. "a/#" matches "a" too.
std::string_view LiteralPrefix(std::string_view filter)
{
    const size_t wildcard = filter.find_first_of("+#");
    std::string_view prefix = filter.substr(0, wildcard);
    if (wildcard != std::string_view::npos && filter[wildcard] == '#' && !prefix.empty())
    {
        prefix.remove_suffix(1);
    }
    return prefix;
}

struct Subscriber
{
    uint64_t number = 0; ///< sessions are served in the order of their beginning
    std::string clientId;
    std::shared_ptr<BackplaneListener> listener;
    std::optional<BackplaneMessage> will;
    std::map<std::string, Delivery> filters;
    bool open = false;
    uint64_t lastPublish = 0; ///< the latest publication for this session, which prevents a second delivery
    size_t lastReceiver = 0;  ///< its index among the receivers of that publication
};

struct Receiver
{
    std::shared_ptr<Subscriber> session;
    Delivery delivery;
};

struct FilterNode
{
    std::map<std::string, std::unique_ptr<FilterNode>, std::less<>> levels;
    std::map<uint64_t, std::pair<std::shared_ptr<Subscriber>, Delivery>>
        sessions; ///< whose filter ends here, by number

    bool IsEmpty() const
    {
        return levels.empty() && sessions.empty();
    }
};

struct Retained
{
    std::shared_ptr<const BackplaneMessage> message;
    Clock::time_point end; ///< of its expiry; max() = none
};

} // namespace

/// The state that all clients share. Listeners run under `m_mutex`; they only put the event into a queue.
class InProcessBackplane::Store : public std::enable_shared_from_this<Store>
{
public:
    std::shared_ptr<Subscriber> Open(BackplaneConnect connect, std::shared_ptr<BackplaneListener> listener)
    {
        const std::lock_guard lock(m_mutex);
        auto session = std::make_shared<Subscriber>();
        session->number = ++m_sessionCount;
        session->clientId = connect.clientId;
        session->listener = std::move(listener);
        if (const std::optional<Refusal> refusal = Refuse(connect))
        {
            Deliver(session, [reason = *refusal](BackplaneListener& to) { to.OnRefused(reason); });
            return session;
        }
        if (const auto former = m_sessions.find(connect.clientId); former != m_sessions.end())
        {
            Lose(std::shared_ptr(former->second));
        }
        session->will = std::move(connect.will);
        session->open = true;
        m_sessions[session->clientId] = session;
        Deliver(session, [](BackplaneListener& to) { to.OnOpened(); });
        return session;
    }

    void Publish(const Subscriber& session, BackplaneMessage message, Delivery delivery)
    {
        const std::lock_guard lock(m_mutex);
        if (session.open && !m_closed && IsTopic(message.topic))
        {
            PublishLocked(std::move(message), delivery);
        }
    }

    void Subscribe(const std::shared_ptr<Subscriber>& session, const std::string& filter, Delivery delivery)
    {
        const std::lock_guard lock(m_mutex);
        if (!session->open || m_closed)
        {
            return;
        }
        session->filters[filter] = delivery;
        NodeOf(filter).sessions[session->number] = {session, delivery};
        DeliverRetained(session, filter, delivery);
        Deliver(session, [filter](BackplaneListener& to) { to.OnSubscribed(filter); });
    }

    void Unsubscribe(Subscriber& session, const std::string& filter)
    {
        const std::lock_guard lock(m_mutex);
        if (session.filters.erase(filter) != 0)
        {
            RemoveFilter(m_root, filter, session);
        }
    }

    void Close(const std::shared_ptr<Subscriber>& session)
    {
        const std::lock_guard lock(m_mutex);
        session->listener = nullptr;
        End(*session);
    }

    /// The client of the session is destroyed: no further event comes.
    void Forget(const std::shared_ptr<Subscriber>& session)
    {
        const std::lock_guard lock(m_mutex);
        session->listener = nullptr;
        if (session->open)
        {
            Lose(session);
        }
    }

    void CloseAll()
    {
        {
            const std::lock_guard lock(m_mutex);
            m_closed = true;
        }
        m_loop.Stop();
    }

    bool Drop(const std::string& clientId, std::optional<std::chrono::milliseconds> outage)
    {
        const std::lock_guard lock(m_mutex);
        const auto found = m_sessions.find(clientId);
        if (found == m_sessions.end())
        {
            return false;
        }
        m_outages[clientId] = outage ? Clock::now() + *outage : Clock::time_point::max();
        Lose(std::shared_ptr(found->second));
        return true;
    }

    void EndOutages()
    {
        const std::lock_guard lock(m_mutex);
        m_outages.clear();
    }

    void SetAdmission(Admission admission)
    {
        const std::lock_guard lock(m_mutex);
        m_admission = std::move(admission);
    }

    void SetDelay(std::chrono::milliseconds delay)
    {
        const std::lock_guard lock(m_mutex);
        m_delay = delay;
    }

    void SetWillDelay(std::chrono::milliseconds delay)
    {
        const std::lock_guard lock(m_mutex);
        m_willDelay = delay;
    }

    void SetDuplicate(bool duplicate)
    {
        const std::lock_guard lock(m_mutex);
        m_duplicate = duplicate;
    }

    size_t CountRetained()
    {
        const std::lock_guard lock(m_mutex);
        DropExpired();
        return m_retained.size();
    }

private:
    std::optional<Refusal> Refuse(const BackplaneConnect& connect)
    {
        if (m_closed)
        {
            return Refusal::Unavailable;
        }
        if (const auto outage = m_outages.find(connect.clientId); outage != m_outages.end())
        {
            if (Clock::now() < outage->second)
            {
                return Refusal::Unavailable;
            }
            m_outages.erase(outage);
        }
        return m_admission ? m_admission(connect) : std::nullopt;
    }

    /// Delivers an event to the listener of a session: at once, or behind all earlier ones while deliveries are
    /// delayed.
    template <typename Event>
    void Deliver(const std::shared_ptr<Subscriber>& session, Event event)
    {
        if (m_delay.count() == 0 && m_delayed == 0)
        {
            if (session->listener != nullptr)
            {
                event(*session->listener);
            }
            return;
        }
        m_lastDue = std::max(m_lastDue, Clock::now() + m_delay);
        ++m_delayed;
        m_loop.PostAt(m_lastDue, EventLoop::Kind::Timer,
                      [weak = weak_from_this(), session, event]
                      {
                          if (const auto store = weak.lock())
                          {
                              const std::lock_guard lock(store->m_mutex);
                              --store->m_delayed;
                              if (session->listener != nullptr)
                              {
                                  event(*session->listener);
                              }
                          }
                      });
    }

    void DeliverMessage(const std::shared_ptr<Subscriber>& session,
                        const std::shared_ptr<const BackplaneMessage>& message, Delivery delivery)
    {
        const int times = m_duplicate && delivery == Delivery::AtLeastOnce ? 2 : 1;
        for (int i = 0; i < times; ++i)
        {
            Deliver(session, [message](BackplaneListener& to) { to.OnMessage(message); });
        }
    }

    void PublishLocked(BackplaneMessage message, Delivery delivery)
    {
        m_receivers.clear();
        ++m_publishCount;
        Collect(m_root, message.topic);
        if (!m_receivers.empty())
        {
            auto live = std::make_shared<BackplaneMessage>(message);
            live->retained = false;
            for (const Receiver& receiver : m_receivers)
            {
                DeliverMessage(receiver.session, live, std::min(delivery, receiver.delivery));
            }
        }
        m_receivers.clear();
        if (message.retained)
        {
            Retain(std::move(message));
        }
    }

    void Retain(BackplaneMessage message)
    {
        if (const auto former = m_retained.find(message.topic); former != m_retained.end())
        {
            m_retained.erase(former);
        }
        if (!message.payload.empty())
        {
            const auto end = message.expiry.count() == 0 ? Clock::time_point::max() : Clock::now() + message.expiry;
            auto kept = std::make_shared<const BackplaneMessage>(std::move(message));
            m_retained.emplace(kept->topic, Retained{kept, end});
        }
        // One sweep for as many publications as there are messages keeps the cost of a publication constant.
        if (++m_retainedSinceSweep > std::max<size_t>(1024, m_retained.size()))
        {
            DropExpired();
        }
    }

    void DropExpired()
    {
        m_retainedSinceSweep = 0;
        const auto now = Clock::now();
        std::erase_if(m_retained, [now](const auto& entry) { return entry.second.end <= now; });
    }

    void DeliverRetained(const std::shared_ptr<Subscriber>& session, std::string_view filter, Delivery delivery)
    {
        const std::string_view prefix = LiteralPrefix(filter);
        const auto now = Clock::now();
        size_t left = delivery == Delivery::AtLeastOnce ? kMostRetainedAcknowledged : m_retained.size();
        for (auto it = m_retained.lower_bound(prefix); it != m_retained.end() && left != 0; ++it)
        {
            if (!it->first.starts_with(prefix))
            {
                break;
            }
            if (now < it->second.end && Matches(filter, it->first))
            {
                DeliverMessage(session, it->second.message, delivery);
                --left;
            }
        }
    }

    void Lose(const std::shared_ptr<Subscriber>& session)
    {
        std::optional<BackplaneMessage> will = std::move(session->will);
        End(*session);
        Deliver(session, [](BackplaneListener& to) { to.OnLost(); });
        if (!will || m_closed)
        {
            return;
        }
        if (m_willDelay.count() == 0)
        {
            PublishLocked(std::move(*will), Delivery::AtLeastOnce);
            return;
        }
        m_loop.PostAt(Clock::now() + m_willDelay, EventLoop::Kind::Timer,
                      [weak = weak_from_this(), message = *will]
                      {
                          if (const auto store = weak.lock())
                          {
                              const std::lock_guard lock(store->m_mutex);
                              store->PublishLocked(message, Delivery::AtLeastOnce);
                          }
                      });
    }

    void End(Subscriber& session)
    {
        if (!session.open)
        {
            return;
        }
        session.open = false;
        session.will.reset();
        for (const auto& [filter, delivery] : session.filters)
        {
            RemoveFilter(m_root, filter, session);
        }
        session.filters.clear();
        m_sessions.erase(session.clientId);
    }

    FilterNode& NodeOf(std::string_view filter)
    {
        FilterNode* node = &m_root;
        for (std::optional<std::string_view> rest = filter; rest; rest = FurtherLevels(*rest))
        {
            const std::string_view level = FirstLevel(*rest);
            auto found = node->levels.find(level);
            if (found == node->levels.end())
            {
                found = node->levels.emplace(level, std::make_unique<FilterNode>()).first;
            }
            node = found->second.get();
        }
        return *node;
    }

    void RemoveFilter(FilterNode& node, std::optional<std::string_view> rest, Subscriber& session)
    {
        if (!rest)
        {
            node.sessions.erase(session.number);
            return;
        }
        const auto found = node.levels.find(FirstLevel(*rest));
        if (found != node.levels.end())
        {
            RemoveFilter(*found->second, FurtherLevels(*rest), session);
            if (found->second->IsEmpty())
            {
                node.levels.erase(found);
            }
        }
    }

    /// Adds the receivers of a message with this topic, each session once and with the stronger delivery.
    void Collect(const FilterNode& node, std::optional<std::string_view> rest)
    {
        if (const auto all = node.levels.find("#"); all != node.levels.end())
        {
            CollectSessions(*all->second);
        }
        if (!rest)
        {
            CollectSessions(node);
            return;
        }
        for (const std::string_view level : {FirstLevel(*rest), std::string_view("+")})
        {
            if (const auto found = node.levels.find(level); found != node.levels.end())
            {
                Collect(*found->second, FurtherLevels(*rest));
            }
        }
    }

    void CollectSessions(const FilterNode& node)
    {
        for (const auto& [number, subscription] : node.sessions)
        {
            const auto& [session, delivery] = subscription;
            if (session->lastPublish == m_publishCount)
            {
                Delivery& known = m_receivers[session->lastReceiver].delivery;
                known = std::max(known, delivery);
                continue;
            }
            session->lastPublish = m_publishCount;
            session->lastReceiver = m_receivers.size();
            m_receivers.push_back(Receiver{session, delivery});
        }
    }

    std::mutex m_mutex;
    bool m_closed = false;
    Admission m_admission;
    std::map<std::string, std::shared_ptr<Subscriber>> m_sessions; ///< by client id
    std::map<std::string, Clock::time_point> m_outages;            ///< client id and the end of its outage
    FilterNode m_root;
    std::map<std::string_view, Retained> m_retained; ///< by the topic inside the message
    size_t m_retainedSinceSweep = 0;
    uint64_t m_sessionCount = 0;
    uint64_t m_publishCount = 0;
    std::vector<Receiver> m_receivers; ///< of the publication under way

    std::chrono::milliseconds m_delay{0};
    std::chrono::milliseconds m_willDelay{0};
    bool m_duplicate = false;
    size_t m_delayed = 0; ///< number of waiting deliveries
    Clock::time_point m_lastDue = Clock::time_point::min();
    EventLoop m_loop; ///< runs delayed deliveries
};

class InProcessBackplane::Client : public BackplaneClient
{
public:
    Client(std::shared_ptr<Store> store, std::shared_ptr<Subscriber> session)
        : m_store(std::move(store)),
          m_session(std::move(session))
    {
    }

    ~Client() override
    {
        m_store->Forget(m_session);
    }

    void Publish(BackplaneMessage message, Delivery delivery) override
    {
        m_store->Publish(*m_session, std::move(message), delivery);
    }

    void Subscribe(const std::string& filter, Delivery delivery) override
    {
        m_store->Subscribe(m_session, filter, delivery);
    }

    void Unsubscribe(const std::string& filter) override
    {
        m_store->Unsubscribe(*m_session, filter);
    }

    void Close() override
    {
        m_store->Close(m_session);
    }

private:
    std::shared_ptr<Store> m_store;
    std::shared_ptr<Subscriber> m_session;
};

InProcessBackplane::InProcessBackplane() : m_store(std::make_shared<Store>()) {}

InProcessBackplane::~InProcessBackplane()
{
    m_store->CloseAll();
}

std::unique_ptr<BackplaneClient> InProcessBackplane::Open(BackplaneConnect connect,
                                                          std::shared_ptr<BackplaneListener> listener)
{
    return std::make_unique<Client>(m_store, m_store->Open(std::move(connect), std::move(listener)));
}

void InProcessBackplane::SetAdmission(Admission admission)
{
    m_store->SetAdmission(std::move(admission));
}

bool InProcessBackplane::Drop(const std::string& clientId, std::optional<std::chrono::milliseconds> outage)
{
    return m_store->Drop(clientId, outage);
}

void InProcessBackplane::EndOutages()
{
    m_store->EndOutages();
}

void InProcessBackplane::SetDelay(std::chrono::milliseconds delay)
{
    m_store->SetDelay(delay);
}

void InProcessBackplane::SetWillDelay(std::chrono::milliseconds delay)
{
    m_store->SetWillDelay(delay);
}

void InProcessBackplane::SetDuplicate(bool duplicate)
{
    m_store->SetDuplicate(duplicate);
}

size_t InProcessBackplane::CountRetained() const
{
    return m_store->CountRetained();
}

} // namespace platform
