#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

/// The seam under the platform: the service of a plain MQTT 5 broker and nothing more.
///
/// The layers above must work with any broker, so they may rely only on this:
/// - Messages of one topic arrive in order. The order of messages of two topics is undefined.
/// - A client with overlapping subscriptions gets a message once, or once for each subscription.
/// - Acknowledged delivery may bring a message twice.
/// - Retained messages may arrive before or after the acknowledgement of their subscription. With acknowledged delivery
///   they may end after about a thousand. Each subscription brings all of them again.
/// - When another session takes over a client id, the connection of the earlier session closes without a reason.
/// - A last will may arrive after the next session of the same client has begun. A session ended by `Close` sends no
///   will.
namespace platform
{

struct BackplaneMessage
{
    std::string topic;              ///< levels separated by '/', no wildcards, valid UTF-8
    std::string payload;            ///< bytes; an empty retained payload deletes the topic's retained message
    bool retained = false;          ///< published: keep it for later subscribers; received: it was kept
    std::chrono::seconds expiry{0}; ///< the message ends this long after its publication; 0 = never
};

enum class Delivery
{
    AtMostOnce,  ///< unacknowledged, as snapshots need it
    AtLeastOnce, ///< acknowledged
};

struct BackplaneConnect
{
    std::string server;   ///< address of the broker
    std::string clientId; ///< takes over a session with the same id: its connection closes, its will is sent
    std::string userName;
    std::string password;
    std::optional<BackplaneMessage> will; ///< sent when the connection ends other than by `Close`
};

enum class Refusal
{
    BadCredentials,
    Unavailable,
    Other,
};

/// Receives the events of one client. The backplane calls it on any thread, possibly inside an operation of the client
/// and under its own locks. The listener must only put the event into a queue.
class BackplaneListener
{
public:
    virtual ~BackplaneListener() = default;

    /// The session has begun, without subscriptions.
    virtual void OnOpened() = 0;
    /// The broker refused the session.
    virtual void OnRefused(Refusal reason) = 0;
    /// The session has ended other than by `Close`.
    virtual void OnLost() = 0;
    /// The broker acknowledged the subscription.
    virtual void OnSubscribed(const std::string& filter) = 0;
    virtual void OnMessage(std::shared_ptr<const BackplaneMessage> message) = 0;
};

/// One session of one client. [any] Every operation may be called on any thread. It does nothing before the session has
/// begun and after it has ended.
class BackplaneClient
{
public:
    /// Ends a session that was not closed as a lost connection does: the will is sent. No event comes after the return.
    /// Must not be called from inside an event.
    virtual ~BackplaneClient() = default;

    /// An acknowledged message reaches each subscriber by the delivery of its subscription, any other message at most
    /// once.
    virtual void Publish(BackplaneMessage message, Delivery delivery) = 0;

    /// In a filter '+' stands for one level; '#' as the last level stands for any number of levels, also none.
    /// `OnSubscribed` answers. The matching retained messages follow, also when the filter is subscribed already; its
    /// delivery changes then.
    virtual void Subscribe(const std::string& filter, Delivery delivery) = 0;
    virtual void Unsubscribe(const std::string& filter) = 0;

    /// Ends the session without a will and without further events.
    virtual void Close() = 0;
};

class Backplane
{
public:
    virtual ~Backplane() = default;

    /// Begins a session; `OnOpened` or `OnRefused` answers. The client keeps the listener until it is destroyed.
    virtual std::unique_ptr<BackplaneClient> Open(BackplaneConnect connect,
                                                  std::shared_ptr<BackplaneListener> listener) = 0;
};

} // namespace platform
