#pragma once

#include "avcore/ZolTypes.h"

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

namespace platform
{

class Engine;

/// How long a dropped connection stays away.
struct Outage
{
    static Outage For(std::chrono::milliseconds time)
    {
        return Outage{time};
    }
    /// Until `Faults::EndOutages`.
    static Outage Forever()
    {
        return Outage{std::nullopt};
    }

    std::optional<std::chrono::milliseconds> time; ///< absent = for ever
};

/// Faults to order, for tests and demonstrations. Got from `Platform::GetFaults`. Every operation may be called on any
/// thread, also from inside an event, and returns at once; what comes of it reaches the listeners as events.
class Faults
{
public:
    explicit Faults(Engine& engine);
    Faults(const Faults&) = delete;
    Faults& operator=(const Faults&) = delete;

    /// Logins of `userId` (of everybody when it is empty) end with `code` until `AcceptLogins`. Gateway logins included.
    /// A login refused with 36 this way names no other device.
    void RefuseLogins(avcore::ZolPortErrCode code, const std::string& userId = {});
    /// Ends the order given for the same `userId`.
    void AcceptLogins(const std::string& userId = {});

    /// Logins with this token end with `ZOL_PORT_TOKEN_REFUSED`. A login that stands already stays; it will not come back
    /// from a lost connection.
    void RefuseToken(const std::string& token);
    void AcceptToken(const std::string& token);

    /// Cuts the connections of a user, on one device or (empty) on all of them, as when the network is gone: no logout, the
    /// last will is sent, and no attempt to come back succeeds before the outage is over. Gateway connections of the user
    /// count as device "gateway". Result: how many connections were cut.
    size_t DropConnections(const std::string& userId, const std::string& deviceId = {},
                           Outage outage = Outage::For(std::chrono::milliseconds(0)));
    /// The same for one client of the backplane; `SessionInfo::clientId` tells the ids. False when nobody has that id.
    bool DropClient(const std::string& clientId, Outage outage = Outage::For(std::chrono::milliseconds(0)));
    /// Every outage is over now.
    void EndOutages();

    /// A connection point that cannot be reached: logins end with `ZOL_PORT_UNREACHABLE`, lost connections to it do not come
    /// back. `connectionPoint` is compared as a whole: the server text of a login that is not an HTTP(S) address, or the
    /// address that the HTTP(S) server answered.
    void SetUnreachable(const std::string& connectionPoint, bool unreachable);

    /// Everything that the backplane delivers arrives that much later; 0 ends it. The order stays as it is.
    void DelayDeliveries(std::chrono::milliseconds time);
    /// A last will is sent that much after the loss of its connection, hence possibly after the client is back; 0 ends it.
    void DelayWills(std::chrono::milliseconds time);
    /// Messages with acknowledged delivery arrive twice, as they may after a lost acknowledgement.
    void DuplicateDeliveries(bool duplicate);

    /// Takes every order back, outages included.
    void Clear();

private:
    Engine& m_engine;
};

} // namespace platform
