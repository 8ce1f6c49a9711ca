#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace platform
{

/// Options of a `Platform`. `Platform::SetOptions` may change every field at any time unless the field says otherwise;
/// an operation under way keeps the values with which it began. A 0 counts as 1 where the field needs at least 1.
struct PlatformOptions
{
    /// Number of users in one page of a refresh.
    uint32_t refreshPageSize = 500;

    /// The events that an operation causes begin this long after the call of the operation. A caller stores the outcome
    /// of an operation (the id of a request, a pending join) after the operation has returned, so no event may come
    /// earlier.
    std::chrono::milliseconds answerDelay{20};

    /// The first attempt to restore a lost connection begins after this time. Each further delay is twice the previous
    /// one, up to `reconnectLongestDelay`. The platform adds up to a fifth at random, so that many clients do not
    /// return at the same moment.
    std::chrono::milliseconds reconnectFirstDelay{200};
    std::chrono::milliseconds reconnectLongestDelay{30'000};
    /// The platform gives up a connection that is still lost after this time and calls `OnReconnectFail`.
    std::chrono::milliseconds reconnectGiveUp{120'000};

    /// A login without a result after this time fails with `ZOL_PORT_UNREACHABLE`. The time of an HTTP request for the
    /// address of the connection point does not count; see `httpTimeLimit`.
    std::chrono::milliseconds loginTimeLimit{15'000};

    /// Limit in wall time for one request for the address of a connection point. The platform enforces it, because the
    /// HTTP object may measure processor time, and a waiting thread uses none.
    std::chrono::milliseconds httpTimeLimit{10'000};
    /// Longest accepted answer to that request, in bytes. The platform refuses a longer one without reading it.
    size_t httpLongestAnswer = size_t{64} * 1024;

    /// A snapshot of the company is complete when its subscription is acknowledged and no retained record has arrived
    /// for this time. 0 fits a backplane that hands out all retained records before it acknowledges the subscription,
    /// as the in-process backplane does. A broker needs some hundred milliseconds.
    std::chrono::milliseconds snapshotQuietTime{0};

    /// The backplane keeps the record of a terminal that went offline, or of a member that left its group, for this
    /// time. The record identifies late messages of that session, so the time must exceed every delivery delay.
    std::chrono::seconds goneRecordLife{60};

    /// The first id of invitations and messages. Ids count up from here and skip 0. Processes that share a broker must
    /// begin at different ids. The constructor of `Platform` reads this field; `SetOptions` does not.
    uint32_t firstId = 1;
};

} // namespace platform
