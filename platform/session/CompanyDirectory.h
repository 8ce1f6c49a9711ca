#pragma once

#include "platform/wire/Records.h"

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace platform
{

/// What one connection knows of the terminals of its company. Changed on the platform thread only, which may therefore read
/// without the lock and keep references until it changes something; other threads may ask `IsKnownOffline`.
class CompanyDirectory
{
public:
    struct Terminal
    {
        std::string deviceId;
        std::string custom;
        std::string ext;
        uint64_t epoch = 0;
        uint32_t round = 0; ///< the snapshot or later in which it was heard of last
        bool online = false;
    };
    using Terminals = std::vector<Terminal>; ///< gone ones too, whose epoch unmasks late messages

    /// A subscription has been asked for; what is known before stays until the snapshot is complete.
    void BeginSnapshot();
    /// The snapshot is complete: terminals that it lacks are gone. Result: those, with their users.
    std::vector<std::pair<std::string, Terminal>> EndSnapshot();
    void Clear();

    bool IsSubscribed() const;
    bool IsComplete() const;

    /// Takes a record over. Null when it is older than what is known, changes nothing, or belongs to the first snapshot.
    const Terminal* Apply(const std::string& userId, const std::string& deviceId, const PresenceRecord& record,
                          bool retained);

    /// Null when the user was never heard of.
    const Terminals* Find(const std::string& userId) const;
    static bool IsOnline(const Terminals& terminals);
    void ForEach(const std::function<void(const std::string&, const Terminals&)>& visit) const;

    /// [any] True only when the directory is complete and no terminal of the user is online.
    bool IsKnownOffline(const std::string& userId) const;

private:
    enum class State
    {
        None,
        First,  ///< the first snapshot is under way
        Repeat, ///< a later one is
        Complete,
    };

    mutable std::mutex m_mutex;
    State m_state = State::None;
    uint32_t m_round = 0;
    bool m_known = false; ///< a snapshot was complete once
    std::map<std::string, Terminals> m_users;
};

} // namespace platform
