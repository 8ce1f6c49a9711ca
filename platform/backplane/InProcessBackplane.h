#pragma once

#include "platform/backplane/Backplane.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace platform
{

/// A backplane that keeps everything in the process and is shared by all of its clients. It calls listeners under its
/// lock, mostly from inside the operation that causes the event, as the seam allows; it hands out what is retained
/// before it acknowledges a subscription. `BackplaneConnect::server` leads nowhere else, it is only shown to the
/// admission.
///
/// Publishing costs by the number of levels and of receivers, not of subscriptions; a subscription costs by the number
/// of retained messages that share its levels up to the first wildcard.
class InProcessBackplane : public Backplane
{
public:
    InProcessBackplane();
    /// Clients may outlive it: nothing comes to them any more.
    ~InProcessBackplane() override;

    std::unique_ptr<BackplaneClient> Open(BackplaneConnect connect,
                                          std::shared_ptr<BackplaneListener> listener) override;

    /// Decides whether a session may begin; absent = yes. Called under the backplane's lock, before any takeover.
    using Admission = std::function<std::optional<Refusal>(const BackplaneConnect&)>;
    void SetAdmission(Admission admission);

    /// Cuts a session and refuses (`Unavailable`) its client id for that time; absent = until `EndOutages`. False when
    /// there is no such session.
    bool Drop(const std::string& clientId, std::optional<std::chrono::milliseconds> outage);
    void EndOutages();

    /// Everything reaches the listeners this much later, in the same order; 0 ends it.
    void SetDelay(std::chrono::milliseconds delay);
    /// Wills are published this long after the loss of their session; 0 ends it.
    void SetWillDelay(std::chrono::milliseconds delay);
    /// Acknowledged deliveries come twice.
    void SetDuplicate(bool duplicate);

    size_t CountRetained() const;

private:
    class Store;
    class Client;
    std::shared_ptr<Store> m_store;
};

} // namespace platform
