#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace platform
{

/// What can be set on a `Platform`. Every field may be changed while it runs (`Platform::SetOptions`); what has begun goes
/// on with the values it began with. A value of 0 where at least 1 is needed counts as 1.
struct PlatformOptions
{
    /// Users in one page of a refresh.
    uint32_t refreshPageSize = 500;

    /// What an operation causes begins this long after the operation was called. Callers note an operation's outcome (a
    /// request's id, a pending join) when it has returned, so its events must not overtake its return.
    std::chrono::milliseconds answerDelay{20};

    /// A lost connection is tried again after this time, then after twice that time and so on up to
    /// `reconnectLongestDelay`. Up to a fifth is added at random, so that many clients do not come back in one moment.
    std::chrono::milliseconds reconnectFirstDelay{200};
    std::chrono::milliseconds reconnectLongestDelay{30'000};
    /// A connection that has not come back this long after its loss is given up: `OnReconnectFail`.
    std::chrono::milliseconds reconnectGiveUp{120'000};

    /// A login that has not ended after this time fails with `ZOL_PORT_UNREACHABLE`. The HTTP request that may come first
    /// has a limit of its own.
    std::chrono::milliseconds loginTimeLimit{15'000};

    /// Wall time for one request of a connection point's address. The limit is the platform's own, because the HTTP object
    /// may count processor time only, of which a wait takes none.
    std::chrono::milliseconds httpTimeLimit{10'000};
    /// Longest answer to that request, in bytes; a longer one is refused unread.
    size_t httpLongestAnswer = size_t{64} * 1024;

    /// How long no retained record may have arrived before a snapshot of the company counts as complete, counted from the
    /// moment its subscription stands. 0 fits a backplane that hands out everything retained before it acknowledges the
    /// subscription, as the one in the process does; a broker needs some hundred milliseconds.
    std::chrono::milliseconds snapshotQuietTime{0};

    /// How long the record of a terminal that has gone, or of a member that has left, is kept in the backplane. It protects
    /// against messages of that session that arrive late, so it has to be longer than any delay.
    std::chrono::seconds goneRecordLife{60};

    /// The first of the numbers given to invitations and messages; they count up from here and never are 0. Processes that
    /// share a broker have to begin at different ones. Read when the platform is made, not by `SetOptions`.
    uint32_t firstId = 1;
};

} // namespace platform
