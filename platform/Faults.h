#pragma once

#include "avcore/ZolTypes.h"

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

namespace platform
{

class Engine;

/// The duration of an ordered outage.
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

    std::optional<std::chrono::milliseconds> time; ///< absent = until `Faults::EndOutages`
};

/// Orders faults of the platform, for tests and demonstrations. `Platform::GetFaults` returns the object, which lives
/// as long as its platform.
///
/// [any] Every operation may be called on any thread, also from inside an event, and returns at once. Its consequences
/// reach the listeners as events.
class Faults
{
public:
    explicit Faults(Engine& engine);
    Faults(const Faults&) = delete;
    Faults& operator=(const Faults&) = delete;

    /// Logins of `userId`, or of all users when it is empty, end with `code` until `AcceptLogins`; gateway logins as
    /// well. A login that this order refuses with 36 names no other device. The order does not concern reconnections:
    /// for these use `RefuseToken`.
    void RefuseLogins(avcore::ZolPortErrCode code, const std::string& userId = {});
    /// Takes back the order for the same `userId`.
    void AcceptLogins(const std::string& userId = {});

    /// Logins with this token end with `ZOL_PORT_TOKEN_REFUSED`. An established login stays, and fails to reconnect
    /// when its connection is lost.
    void RefuseToken(const std::string& token);
    void AcceptToken(const std::string& token);

    /// Cuts the connections of a user as a network failure does: without a logout, the last will is sent, and every
    /// attempt to reconnect fails until the outage ends. The outage concerns the lost logins only: a logout and a new
    /// login of the same user and device succeed while it lasts. An empty `deviceId` means all devices of the user; a
    /// gateway connection has the device id "gateway". Returns the number of connections that it cut.
    size_t DropConnections(const std::string& userId, const std::string& deviceId = {},
                           Outage outage = Outage::For(std::chrono::milliseconds(0)));
    /// Does the same for one client of the backplane, by the id in `SessionInfo::clientId`. False for an unknown id.
    bool DropClient(const std::string& clientId, Outage outage = Outage::For(std::chrono::milliseconds(0)));
    /// Ends all outages.
    void EndOutages();

    /// Makes a connection point unreachable: logins to it end with `ZOL_PORT_UNREACHABLE`, and lost connections to it
    /// fail to reconnect. `connectionPoint` is compared as a whole with the server text of a login, or, for an HTTP(S)
    /// server, with the address in its answer.
    void SetUnreachable(const std::string& connectionPoint, bool unreachable);

    /// Delays every delivery of the backplane by `time`; 0 ends the delay. Deliveries keep their order.
    void DelayDeliveries(std::chrono::milliseconds time);
    /// Sends a last will only `time` after the loss of its connection, which may be after the client has reconnected; 0
    /// ends the delay.
    void DelayWills(std::chrono::milliseconds time);
    /// Delivers every acknowledged message twice, as a broker may after a lost acknowledgement.
    void DuplicateDeliveries(bool duplicate);

    /// Takes back all orders and ends all outages.
    void Clear();

private:
    Engine& m_engine;
};

} // namespace platform
