#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

/// The seam under the platform: what a plain MQTT 5 broker offers and nothing more.
///
/// What is above must hold with any broker, hence:
/// - Delivery is in order for one topic, and promises nothing about the order of two.
/// - A client whose subscriptions overlap gets a message once, or once for each.
/// - Acknowledged delivery may bring a message twice.
/// - Retained messages may arrive before or after the acknowledgement of their subscription, and with acknowledged delivery
///   may end after about a thousand; each subscription brings them all again.
/// - A session that another one with its client id took over sees its connection close, no reason given.
/// - A last will may arrive after the next session of the same client has begun. A closed session sends none.
namespace platform
{

struct BackplaneMessage
{
    std::string topic;     ///< levels separated by '/', no wildcards, valid UTF-8
    std::string payload;   ///< bytes; an empty retained payload takes the topic's retained message away
    bool retained = false; ///< to publish: keep it for later subscribers. Received: it comes from what was kept.
    std::chrono::seconds expiry{0}; ///< it is gone that long after its publishing; 0 = never
};

enum class Delivery
{
    AtMostOnce,  ///< unacknowledged: what snapshots need
    AtLeastOnce, ///< acknowledged
};

struct BackplaneConnect
{
    std::string server;   ///< the broker
    std::string clientId; ///< a session with the same id is taken over: its connection closes, its will is sent
    std::string userName;
    std::string password;
    std::optional<BackplaneMessage> will; ///< sent when the connection ends in any way but `Close`
};

enum class Refusal
{
    BadCredentials,
    Unavailable,
    Other,
};

/// Receives what comes to one client. Called on any thread, possibly inside an operation of the client and under locks of
/// the backplane: it may do nothing but put the event in a queue.
class BackplaneListener
{
public:
    virtual ~BackplaneListener() = default;

    /// The session begins; it has no subscriptions.
    virtual void OnOpened() = 0;
    /// The session does not begin.
    virtual void OnRefused(Refusal reason) = 0;
    /// The session has ended, and not by `Close`.
    virtual void OnLost() = 0;
    /// The broker acknowledged the subscription.
    virtual void OnSubscribed(const std::string& filter) = 0;
    virtual void OnMessage(std::shared_ptr<const BackplaneMessage> message) = 0;
};

/// One session of one client. Every operation may be called on any thread, and does nothing in a session that has not begun
/// or has ended.
class BackplaneClient
{
public:
    /// Ends the session like a lost connection (the will is sent) unless it was closed. No event comes any more when this
    /// returns; not allowed from inside one.
    virtual ~BackplaneClient() = default;

    /// `acknowledged` messages reach each subscriber by the kind of delivery that it asked for; the others at most once.
    virtual void Publish(BackplaneMessage message, Delivery delivery) = 0;

    /// '+' stands for one level, '#' as the last level for all that follow and for none. Answered by `OnSubscribed`; brings
    /// what is retained. To a filter subscribed already it is the same again, with the new kind of delivery.
    virtual void Subscribe(const std::string& filter, Delivery delivery) = 0;
    virtual void Unsubscribe(const std::string& filter) = 0;

    /// Ends the session in order: no will, no further event.
    virtual void Close() = 0;
};

class Backplane
{
public:
    virtual ~Backplane() = default;

    /// Begins a session; answered by `OnOpened` or `OnRefused`. The listener is kept until the client is destroyed.
    virtual std::unique_ptr<BackplaneClient> Open(BackplaneConnect connect,
                                                  std::shared_ptr<BackplaneListener> listener) = 0;
};

} // namespace platform
