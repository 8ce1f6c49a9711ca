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

/// The terminals of a company as one connection knows them. Only the platform thread changes the directory, so it may
/// read without the lock and keep references until the next change. Other threads may call `IsKnownOffline`.
class CompanyDirectory
{
public:
    struct Terminal
    {
        std::string deviceId;
        std::string custom;
        std::string ext;
        uint64_t epoch = 0;
        uint32_t round = 0; ///< the round in which its latest record came
        bool online = false;
    };
    using Terminals = std::vector<Terminal>; ///< offline ones too, whose epoch identifies late messages

    /// A subscription is under way. Known terminals stay until the snapshot is complete.
    void BeginSnapshot();
    /// The snapshot is complete. Returns the terminals that it lacks, which are offline now, with their users.
    std::vector<std::pair<std::string, Terminal>> EndSnapshot();
    void Clear();

    bool IsSubscribed() const;
    bool IsComplete() const;

    /// Stores a record. Null when the record is older than the known one, changes nothing, or belongs to the first
    /// snapshot.
    const Terminal* Apply(const std::string& userId, const std::string& deviceId, const PresenceRecord& record,
                          bool retained);

    /// Null for an unknown user.
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
        Repeat, ///< a later snapshot is under way
        Complete,
    };

    mutable std::mutex m_mutex;
    State m_state = State::None;
    uint32_t m_round = 0;
    bool m_known = false; ///< a snapshot has been complete
    std::map<std::string, Terminals> m_users;
};

} // namespace platform
